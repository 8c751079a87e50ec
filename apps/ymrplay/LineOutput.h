#pragma once

#include <functional>
#include <memory>
#include <string>

// Lines on standard output, written by a thread of its own: a reader that stops reading holds nobody up. What waits is
// bounded; beyond that lines are left out, which is said once on standard error. Main thread.
class LineOutput {
 public:
  // `broken` is called on the main queue, once, when nothing can be written any more, with why.
  explicit LineOutput(std::function<void(const std::string& why)> broken);
  // Gives a reader who is behind a moment to catch up.
  ~LineOutput();
  LineOutput(const LineOutput&) = delete;
  LineOutput& operator=(const LineOutput&) = delete;

  void print(const std::string& line);
  // Waits for what was printed as long as the reader reads, and then a second. Whether all of it has gone out.
  bool finish();

 private:
  struct Shared;
  const std::shared_ptr<Shared> shared_;
};
