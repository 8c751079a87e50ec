#pragma once

#include "platform/foundation/CurlTransfers.h"
#include "platform/foundation/URLLoader.h"

// The product's loader: http and https by curl, files by a work queue. Connections are kept from one request to the
// next; nothing else is (no cache, no cookies).
//
// The destructor cancels what is fetched, and waits for what is being sent, for a bounded time: so does the end of a
// process that used the shared one.
class CurlURLLoader final : public URLLoader {
 public:
  CurlURLLoader();
  ~CurlURLLoader() override;
  bool send(URLRequest request) override;
  void load(URLRequest request, const dispatch_queue_t& queue, Completion completion) override;

 private:
  CurlTransfers fetches_;
  CurlTransfers sendings_;
};
