#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "platform/Export.h"
#include "platform/foundation/NSError.h"
#include "platform/foundation/NSURL.h"

// A GET whose answer is handed on as it comes, for bodies that nobody holds whole. There is no bound on its time or its
// size; whoever reads it keeps one, and ends it by letting go of it.
struct HTTPStreamRequest {
  NSURL url;
  std::vector<std::string> headers;                   // "Name: value", besides the client's own
  std::chrono::milliseconds connectingLimit{10'000};  // without a connection: NSURLErrorTimedOut
};

// The head of what the last server in a chain of redirects answered.
struct HTTPAnswer {
  long status = 0;
  std::string url;                                 // where it came from
  std::map<std::string, std::string> headers;      // names in lower case; the first of several
  std::optional<std::uint64_t> length;             // of the body as it is sent; nil when it is not told
  std::optional<std::chrono::seconds> retryAfter;  // what the server asks for, in seconds from now

  // Empty when there is none.
  const std::string& header(const std::string& name) const {
    static const std::string none;
    const auto found = headers.find(name);
    return found == headers.end() ? none : found->second;
  }
};

// Who reads a stream; on the thread that drives it. The first two are told from inside the transfer: they must neither
// begin nor end a stream.
class YMR_API HTTPStreamClient {
 public:
  enum class Taken {
    all,
    none,  // the stream pauses, and the same bytes come again after resume()
  };

  virtual ~HTTPStreamClient();
  // Once, before the first bytes, or before the end when there are none. False stops the stream.
  virtual bool streamDidAnswer(const HTTPAnswer& answer) = 0;
  // Some bytes of the body, unpacked when the server packed it (Content-Encoding).
  virtual Taken streamDidReceive(std::span<const std::byte> bytes) = 0;
  // The last call. nil: the body has ended as it should, or was stopped by the client. The client may let go of the
  // stream now, and begin another one.
  virtual void streamDidEnd(std::optional<NSError> error) = 0;
};

// A stream under way. Letting go of it cancels it; nothing is told then.
class YMR_API HTTPStream {
 public:
  virtual ~HTTPStream();
  // Goes on after a pause, in a later turn. Nothing when it does not pause.
  virtual void resume() = 0;
};

// What begins streams: curl in the product, a script in tests.
class YMR_API HTTPStreams {
 public:
  virtual ~HTTPStreams();
  // An http or https URL. Tells `client`, which outlives the stream, in later turns only.
  virtual std::unique_ptr<HTTPStream> start(HTTPStreamRequest request, HTTPStreamClient& client) = 0;
};
