#pragma once

#include <functional>

#include "platform/foundation/CurlHandle.h"
#include "platform/foundation/URLLoader.h"

// One GET on an easy handle of its own: the options that bound it, and what came back. The thread that drives the
// handle.
class CurlTransfer {
 public:
  using Done = std::function<void(URLResponse)>;

  CurlTransfer(URLRequest request, Done done);
  CurlTransfer(const CurlTransfer&) = delete;
  CurlTransfer& operator=(const CurlTransfer&) = delete;

  CURL* handle() const { return handle_.get(); }
  const NSURL& url() const { return request_.url; }
  // Reports the outcome; once.
  void finish(CURLcode code);
  void cancel();

 private:
  static std::size_t onBody(char* data, std::size_t, std::size_t count, void* self);
  static int onProgress(void* self, curl_off_t, curl_off_t received, curl_off_t, curl_off_t sent);
  void setOptions();
  NSError failure(CURLcode code) const;

  const URLRequest request_;
  Done done_;
  URLResponse response_;
  bool isTooLong_ = false;
  bool isSilent_ = false;
  curl_off_t bytes_ = -1;     // received and sent when last looked at
  curl_off_t changedAt_ = 0;  // microseconds into the transfer
  CurlHandle handle_;
};
