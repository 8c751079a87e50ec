#pragma once

#include <chrono>
#include <cstddef>
#include <mutex>
#include <optional>

#include "platform/Export.h"

// What the machine's connection has shown that it can carry: the best of what came without a pause, of the process's
// transfers of media. Any thread.
class YMR_API ConnectionRate {
 public:
  static ConnectionRate& shared();

  // So many bytes came one after another in that time. Too few to tell anything count for nothing.
  void note(std::size_t bytes, std::chrono::nanoseconds elapsed);
  // In kilobits a second; nil while nothing has been shown.
  std::optional<double> kilobits() const;
  void forget();

 private:
  mutable std::mutex mutex_;
  std::optional<double> best_;
};
