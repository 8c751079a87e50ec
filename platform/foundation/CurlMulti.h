#pragma once

#include <curl/curl.h>

#include <memory>
#include <span>
#include <utility>
#include <vector>

// The transfers that one thread drives, and the connections that it keeps between them. What is added belongs to who
// added it, and is removed before it goes. That thread; wakeUp() any.
class CurlMulti {
 public:
  CurlMulti();
  CurlMulti(const CurlMulti&) = delete;
  CurlMulti& operator=(const CurlMulti&) = delete;

  // False when it can't be driven.
  bool add(CURL* easy) { return easy && curl_multi_add_handle(multi_.get(), easy) == CURLM_OK; }
  // Not from inside a callback of a transfer.
  void remove(CURL* easy) { curl_multi_remove_handle(multi_.get(), easy); }
  // Moves everything on and returns what ended, which is removed.
  std::vector<std::pair<CURL*, CURLcode>> perform();
  // Waits for something to do, for one of `descriptors`, for wakeUp(), for at most so long.
  void wait(std::span<curl_waitfd> descriptors, int milliseconds);
  void wakeUp() { curl_multi_wakeup(multi_.get()); }

 private:
  std::unique_ptr<CURLM, decltype(&curl_multi_cleanup)> multi_;
};
