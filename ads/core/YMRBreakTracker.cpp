#include "ads/core/YMRBreakTracker.h"

#include <utility>

#include "ads/core/SKVASTEventProcessor.h"
#include "ads/core/YMRPlayerErrorHandler.h"
#include "platform/foundation/NSString.h"

namespace {

// The numbers that schedule documents have for what fails.
const char* codeOf(SKVASTError failure) {
  switch (failure) {
    case SKVASTErrorXMLParse:
    case SKVASTErrorSchemaValidation:
      return "1006";
    case SKVASTErrorTimeout:
      return "1007";
    case SKVASTErrorNoInternet:
      return "1008";
    default:
      return "1004";
  }
}

NSURL filled(const NSURL& url, SKVASTError failure) {
  std::string text = url.absoluteString();
  const std::pair<const char*, std::string> values[] = {
      {"ERROR_CODE", codeOf(failure)},
      {"ERROR_MESSAGE", stringByAddingPercentEncoding(YMRPlayerErrorHandler::VASTErrorToString(failure))}};
  for (const auto& [name, value] : values) {
    text = stringByReplacingOccurrencesOfString(text, "[" + std::string(name) + "]", value);
    text = stringByReplacingOccurrencesOfString(text, "%5B" + std::string(name) + "%5D", value);
    text = stringByReplacingOccurrencesOfString(text, "%5b" + std::string(name) + "%5d", value);
  }
  return NSURL::URLWithString(text).value_or(url);
}

}  // namespace

YMRBreakTracker::YMRBreakTracker(const TrackingEvents& events, const YMRTagRules& rules,
                                 std::function<VASTMacroValues()> values)
    : events_(events),
      processor_(std::make_shared<SKVASTEventProcessor>(SKVASTEventProcessor::TrackingEvents(),
                                                        std::weak_ptr<SKVASTViewControllerDelegate>())) {
  processor_->setRules(rules, std::move(values));
}

YMRBreakTracker::~YMRBreakTracker() = default;

void YMRBreakTracker::send(const std::string& event) {
  const auto found = events_.extract(event);
  if (!found) return;
  for (const NSURL& url : found.mapped()) processor_->sendTrackingRequest(url);
}

void YMRBreakTracker::breakDidStart() {
  hasStarted_ = true;
  send("breakStart");
}

void YMRBreakTracker::breakDidEnd(std::optional<SKVASTError> failure) {
  if (failure) {
    for (NSURL& url : events_["error"]) url = filled(url, *failure);
    send("error");
  }
  if (hasStarted_) send("breakEnd");
}
