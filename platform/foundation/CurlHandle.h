#pragma once

#include <curl/curl.h>

#include <chrono>
#include <memory>
#include <string>

#include "platform/foundation/NSError.h"
#include "platform/foundation/NSURL.h"

// An easy handle with what holds for every request of the product, whatever becomes of the answer: http and https only,
// redirects too, and few of those; certificates verified; the environment's proxies; cookies for as long as the request
// lives; a bounded head. The thread that drives the handle.
class CurlHandle {
 public:
  CurlHandle(const NSURL& url, std::chrono::milliseconds connectingLimit);
  CurlHandle(const CurlHandle&) = delete;
  CurlHandle& operator=(const CurlHandle&) = delete;

  // Null when there was no memory for it.
  CURL* get() const { return easy_.get(); }
  // Where the last redirect led; empty without one.
  std::string redirectedTo() const;
  // What the end of a transfer means.
  NSError failure(CURLcode code) const;

 private:
  static std::size_t onHeader(char* data, std::size_t, std::size_t count, void* self);

  std::size_t headBytes_ = 0;  // of all heads: redirects have some too
  char message_[CURL_ERROR_SIZE] = "";
  std::unique_ptr<CURL, decltype(&curl_easy_cleanup)> easy_;
};
