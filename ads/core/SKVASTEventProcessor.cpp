#include "ads/core/SKVASTEventProcessor.h"

#include <atomic>
#include <iterator>
#include <string_view>
#include <utility>

#include "VAST/HostCall.h"
#include "VAST/SKLogger.h"
#include "platform/foundation/MainThread.h"
#include "platform/foundation/NSString.h"
#include "platform/foundation/URLLoader.h"

namespace {

constexpr const char* tag = "VAST - Event Processor";
constexpr std::chrono::milliseconds requestTimeLimit{1'000};
constexpr std::size_t answerBytesLimit = 64 * 1024;  // a pixel; nobody reads it

std::atomic<std::uint64_t> dropped{0};

struct Event {
  const char* key;
  const char* message;  // before the URL
};

// By SKVASTTrackingEvent.
constexpr Event events[] = {
    {"start", "Sent track start to url: "},
    {"creativeView", "Sent track creativeView to url: "},
    {"firstQuartile", "Sent firstQuartile to url: "},
    {"midpoint", "Sent midpoint to url: "},
    {"thirdQuartile", "Sent thirdQuartile to url: "},
    {"complete", "Sent complete to url: "},
    {"close", "Sent close to url: "},
    {"pause", "Sent pause start to url: "},
    {"resume", "Sent resume start to url: "},
};

void log(std::string_view before, const NSURL& url) {
  if (!SKLogger::reachesSink(SKLogLevelDebug)) return;
  SKLogger::debug(tag, std::string(before) + url.absoluteString());
}

std::optional<NSURL> withErrorCode(const std::optional<NSURL>& url, const std::string& errorCode) {
  if (!url) return std::nullopt;
  const std::string text = stringByReplacingOccurrencesOfString(url->absoluteString(), "[ERRORCODE]", errorCode);
  return NSURL::URLWithString(stringByReplacingOccurrencesOfString(text, "%5BERRORCODE%5D", errorCode));
}

}  // namespace

SKVASTEventProcessor::SKVASTEventProcessor(TrackingEvents trackingEvents,
                                           std::weak_ptr<SKVASTViewControllerDelegate> delegate)
    : trackingEvents_(std::move(trackingEvents)), delegate_(std::move(delegate)) {}

SKVASTEventProcessor::~SKVASTEventProcessor() = default;

void SKVASTEventProcessor::trackEvent(SKVASTTrackingEvent event) {
  YMR_ASSERT_MAIN_THREAD();
  const auto alive = weak_from_this().lock();  // the delegate may let go of the processor
  if (event >= std::size(events)) {
    tellDelegate("Unknown");
    return;
  }
  const Event& known = events[event];
  tellDelegate(known.key);
  const auto found = trackingEvents_.find(known.key);
  if (found == trackingEvents_.end()) return;
  for (const auto urls = found->second; const NSURL& url : urls) {  // a log sink may change the table
    sendTrackingRequest(url);
    log(known.message, url);
  }
}

void SKVASTEventProcessor::sendVASTUrlsWithId(const std::vector<SKVASTUrlWithId>& urls) {
  for (const SKVASTUrlWithId& entry : urls) {
    if (!entry.url()) continue;
    sendTrackingRequest(*entry.url());
    log("Sent http request " + (entry.id_() ? *entry.id_() + " " : "") + "to url: ", *entry.url());
  }
}

void SKVASTEventProcessor::sendVASTError(const std::vector<SKVASTUrlWithId>& urls, const std::string& errorCode) {
  auto copy = urls;
  for (SKVASTUrlWithId& entry : copy) entry = SKVASTUrlWithId(entry.id_(), withErrorCode(entry.url(), errorCode));
  sendVASTUrlsWithId(copy);
}

void SKVASTEventProcessor::sendTrackingRequest(const NSURL& url) {
  YMR_ASSERT_MAIN_THREAD();
  if (!url.isHTTP()) {
    log("Event processor refuses to send request to url: ", url);
    return;
  }
  log("Event processor sending request to url: ", url);
  URLRequest request{url};
  request.silenceLimit = requestTimeLimit;
  request.timeLimit = requestTimeLimit;
  request.bytesLimit = answerBytesLimit;
  if (URLLoader::shared()->send(std::move(request))) return;
  ++dropped;
  log("Event processor drops request to url: ", url);
}

std::uint64_t SKVASTEventProcessor::droppedRequests() {
  return dropped;
}

void SKVASTEventProcessor::tellDelegate(const std::string& event) {
  callDelegate(tag, delegate_, &SKVASTViewControllerDelegate::vastTrackingEvent, event);
}
