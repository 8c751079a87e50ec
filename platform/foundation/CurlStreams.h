#pragma once

#include <span>

#include "platform/foundation/HTTPStream.h"

// Streams by curl, side by side. The limits on protocols, redirects, certificates and heads are those of every other
// fetch; a body is asked for as it is and unpacked if it comes packed all the same. HTTP/1.1: a paused stream then
// holds its server up, and not up to 32 MiB of memory.
//
// One thread, which calls turn() again and again and holds every stream; wakeUp() any thread.
class YMR_API CurlStreams final : public HTTPStreams {
 public:
  CurlStreams();
  ~CurlStreams() override;

  std::unique_ptr<HTTPStream> start(HTTPStreamRequest request, HTTPStreamClient& client) override;
  // Waits for something to do, for one of `descriptors` to be readable, for wakeUp(), and for at most `patience`; then
  // moves all streams on and tells their clients. Returns those of `descriptors` that were readable.
  std::vector<int> turn(std::span<const int> descriptors, std::chrono::milliseconds patience);
  void wakeUp();

 private:
  class Stream;
  class Driver;
  const std::unique_ptr<Driver> driver_;
};
