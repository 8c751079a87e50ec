#pragma once

#include <map>
#include <memory>
#include <mutex>
#include <string>

#include "platform/foundation/URLLoader.h"

// Asks the library's loader for each address once, and answers from memory after that: two readings of one tag see the
// same, and a server is not asked twice. Any thread.
class FetchOnce final : public URLLoader, public std::enable_shared_from_this<FetchOnce> {
 public:
  void load(URLRequest request, const dispatch_queue_t& queue, Completion completion) override;
  bool send(URLRequest) override { return false; }

 private:
  std::mutex mutex_;
  std::map<std::string, URLResponse> known_;
};
