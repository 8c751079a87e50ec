#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <mutex>

// The one thread that waits for descriptors of all media processes. It begins with the first and lasts as long as the
// host.
class ProcessWatch {
 public:
  static ProcessWatch& shared();

  // `ready` is called on the thread whenever the descriptor can be read or has come to its end, until it says false.
  // It must read what there is. The descriptor stays open until then. Any thread.
  void add(int descriptor, std::function<bool()> ready);

 private:
  ProcessWatch();
  void run();

  const int epoll_;
  std::mutex mutex_;
  std::uint64_t last_ = 0;
  struct Watched {
    int descriptor;
    std::function<bool()> ready;
  };
  std::map<std::uint64_t, std::shared_ptr<Watched>> watched_;
};
