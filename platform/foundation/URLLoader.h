#pragma once

#include <atomic>
#include <chrono>
#include <cstddef>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/Export.h"
#include "platform/dispatch/Dispatch.h"
#include "platform/foundation/NSError.h"
#include "platform/foundation/NSURL.h"

// What is asked of a URL, and within which bounds. A file URL is read; http and https are fetched with GET.
struct URLRequest {
  NSURL url;
  std::chrono::milliseconds silenceLimit{10'000};     // without a byte: NSURLErrorTimedOut
  std::chrono::milliseconds timeLimit{20'000};        // from the start of the transfer: NSURLErrorTimedOut
  std::size_t bytesLimit = 16 * 1024 * 1024;          // of the body, decoded: NSURLErrorDataLengthExceedsMaximum
  bool allowsFiles = false;                           // whether a file URL may be read at all
  std::chrono::milliseconds connectingLimit{10'000};  // without a connection: NSURLErrorTimedOut
};

// What came back. `error` is set when there is no response, a transfer that broke off included; a status other than 200
// is a response like any other. `status` is 200 for a file that was read. An error's message need not name the URL, and
// does not name a file: who shows it knows what was asked for.
struct YMR_API URLResponse {
  long status = 0;
  std::vector<std::byte> body;
  std::optional<NSError> error;
  std::chrono::milliseconds elapsed{0};

  // Why this is not what was asked for, for people: the error or the status; empty with status 200.
  std::string reason() const;
};

// The one way to the network for all but media: curl in the product, scripted in tests. Any thread.
class YMR_API URLLoader {
 public:
  using Completion = std::function<void(URLResponse)>;

  virtual ~URLLoader();
  // Calls `completion` exactly once, on `queue`, never before load() has returned.
  virtual void load(URLRequest request, const dispatch_queue_t& queue, Completion completion) = 0;

  // Queues a request whose answer nobody waits for. Requests are handed over in order and kept as few at once as is
  // kind to a server; the bounds of each count from its own start. False, and nothing is sent, for a URL that is
  // neither http nor https and when ten thousand wait already. Never waits.
  virtual bool send(URLRequest request) = 0;

  // Whether a server has answered over the network within the last minute: proof that there is one, also where no route
  // leads further than to that server.
  bool wasAnsweredLately() const;
  // One has answered just now, for whoever reads answers: the outcome of an ad's request, say.
  void noteAnswer();

  // The loader of all code that is not given one of its own; curl's until a test sets another. Never null.
  static std::shared_ptr<URLLoader> shared();
  // nil puts curl's back.
  static void setShared(std::shared_ptr<URLLoader> loader);

 private:
  static constexpr std::chrono::nanoseconds never = std::chrono::nanoseconds::min();
  std::atomic<std::chrono::nanoseconds> answeredAt_{never};  // on the run loop's clock
};
