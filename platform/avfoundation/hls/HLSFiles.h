#pragma once

#include <set>

#include "platform/foundation/HTTPStream.h"

// Files as if a server had them: what a playlist on the disk names. Reading waits for nothing but the disk.
//
// One thread, which calls turn() again and again and holds every stream.
class HLSFiles final : public HTTPStreams {
 public:
  std::unique_ptr<HTTPStream> start(HTTPStreamRequest request, HTTPStreamClient& client) override;
  // Moves every stream on a little; false when there was nothing to do.
  bool turn();

 private:
  class Stream;
  std::set<Stream*> streams_;
};
