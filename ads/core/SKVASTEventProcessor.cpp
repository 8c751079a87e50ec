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
    : trackingEvents_(std::move(trackingEvents)),
      delegate_(std::move(delegate)),
      rules_(&YMRTagRules::of(YMRTagProfileExact)) {}

SKVASTEventProcessor::~SKVASTEventProcessor() = default;

void SKVASTEventProcessor::trackEvent(SKVASTTrackingEvent event) {
  YMR_ASSERT_MAIN_THREAD();
  const auto alive = weak_from_this().lock();  // the delegate may let go of the processor
  if (event >= std::size(events)) {
    tellDelegate("Unknown");
    return;
  }
  sendEvent(events[event].key, events[event].message);
}

void SKVASTEventProcessor::trackSkip() {
  YMR_ASSERT_MAIN_THREAD();
  const auto alive = weak_from_this().lock();
  sendEvent("skip", "Sent skip to url: ");
}

void SKVASTEventProcessor::sendEvent(const std::string& event, const char* message) {
  tellDelegate(event);
  const auto found = trackingEvents_.find(event);
  if (found == trackingEvents_.end()) return;
  for (const auto urls = found->second; const NSURL& url : urls) {  // a log sink may change the table
    sendTrackingRequest(url);
    log(message, url);
  }
}

void SKVASTEventProcessor::trackProgress(double second, double duration) {
  std::vector<NSURL> due;
  std::erase_if(progress_, [&](const YMRVastModel::Progress& each) {
    const auto moment = each.offset.secondsOf(duration);
    const bool isDue = moment && *moment <= second;
    if (isDue) due.push_back(each.url);
    return isDue;
  });
  for (const NSURL& url : due) {
    sendTrackingRequest(url);
    log("Sent progress to url: ", url);
  }
}

void SKVASTEventProcessor::sendNotRun(const std::vector<VASTNotRun>& notRun) {
  constexpr int notSupported = 2;
  ofRequest_.reason = notSupported;
  for (const auto& each : notRun) {
    for (const NSURL& url : each.tellAt) sendTrackingRequest(url);
  }
  ofRequest_.reason.reset();
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
  ofRequest_.errorCode = errorCode;
  sendVASTUrlsWithId(copy);
  ofRequest_.errorCode.reset();
}

void SKVASTEventProcessor::setRules(const YMRTagRules& rules, std::function<VASTMacroValues()> values) {
  rules_ = &rules;
  values_ = std::move(values);
}

NSURL SKVASTEventProcessor::address(const NSURL& url) const {
  auto values = values_ ? values_() : VASTMacroValues();
  values.errorCode = ofRequest_.errorCode;
  values.reason = ofRequest_.reason;
  return rules_->withMacros(url, values);
}

void SKVASTEventProcessor::sendTrackingRequest(const NSURL& given) {
  YMR_ASSERT_MAIN_THREAD();
  const NSURL url = address(given);
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
