#pragma once

#include "platform/foundation/CurlTransfers.h"
#include "platform/foundation/URLLoader.h"

// The product's loader: http and https by curl, files by a work queue. Connections are kept from one fetch to the next;
// nothing else is (no cache, no cookies).
class CurlURLLoader final : public URLLoader {
 public:
  CurlURLLoader();
  ~CurlURLLoader() override;
  void load(URLRequest request, const dispatch_queue_t& queue, Completion completion) override;

 private:
  CurlTransfers transfers_;
};
