#include "VAST/Parser/VMAPParser.h"

#include <chrono>
#include <utility>

#include "VAST/HostCall.h"
#include "VAST/Parser/YMRTagRules.h"
#include "VAST/SKLogger.h"
#include "platform/dispatch/Dispatch.h"
#include "platform/foundation/URLLoader.h"

namespace {

constexpr const char* tag = "VMAP";
constexpr std::chrono::milliseconds fetchLimit{10'000};

// Every break that is left is named.
void log(const VMAPParser::Result& result) {
  if (!result.document) return SKLogger::error(tag, result.problem);
  for (const auto& each : result.document->breaks) {
    if (each.refusal.empty()) continue;
    SKLogger::warning(tag, "Left out break " + std::to_string(each.number + 1) + " '" + each.identifier + "' at '" +
                               each.timeOffset + "': " + each.refusal);
  }
  for (const auto& note : result.document->notes) SKLogger::warning(tag, note);
}

void complete(const VMAPParser::Completion& completion, VMAPParser::Result result) {
  log(result);
  dispatch_async(dispatch_get_main_queue(), [completion, result = std::move(result)]() mutable {
    if (completion) callHost(tag, [&] { completion(std::move(result)); });
  });
}

void read(const std::vector<std::byte>& bytes, const VMAPParser::Completion& completion) {
  VMAPParser::Result result;
  result.document = VMAPDocument::read(bytes, result.problem);
  complete(completion, std::move(result));
}

}  // namespace

void VMAPParser::parseWithUrl(const NSURL& given, Completion completion, YMRTagProfile profile,
                              std::shared_ptr<URLLoader> loader) {
  if (!loader) loader = URLLoader::shared();
  const NSURL url = YMRTagRules::of(profile).withMacros(given, {});
  if (!url.isHTTP()) {
    return complete(completion, {std::nullopt, "Schedules are fetched over http and https only."});
  }
  URLRequest request{url};
  request.silenceLimit = request.timeLimit = fetchLimit;
  loader->load(std::move(request), dispatch_queue_create("vmap fetch"),
               [loader, completion = std::move(completion)](const URLResponse& response) {
                 if (!response.error) loader->noteAnswer();
                 const bool isDocument =
                     !response.error && response.status >= 200 && response.status < 300 && !response.body.empty();
                 if (isDocument) return read(response.body, completion);
                 const std::string reason = response.reason();
                 complete(completion, {std::nullopt, reason.empty() ? "The server has no schedule." : reason});
               });
}

void VMAPParser::parseWithData(std::vector<std::byte> document, Completion completion) {
  dispatch_async(dispatch_get_global_queue(),
                 [document = std::move(document), completion = std::move(completion)] { read(document, completion); });
}
