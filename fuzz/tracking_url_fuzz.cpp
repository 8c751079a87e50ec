// Text of an ad server becomes a URL, takes an error code and is handed to the network: what passes is http or https,
// parses again to itself, has no macro left and no control characters. Broadly read, no value adds a parameter.
#include <algorithm>
#include <cstdlib>

#include "ads/core/SKVASTEventProcessor.h"
#include "platform/dispatch/VirtualRunLoop.h"
#include "platform/foundation/URLLoader.h"

namespace {

void require(bool holds) {
  if (!holds) std::abort();
}

struct Checking final : URLLoader {
  bool send(URLRequest request) override {
    const NSURL& url = request.url;
    const std::string& text = url.absoluteString();
    require(url.isHTTP() && !url.host().empty());
    require(NSURL::URLWithString(text) == url);
    for (const unsigned char c : text) require(c > 0x20 && c != 0x7f);
    if (parameters) require(std::ranges::count(text, '&') == *parameters && url.host() == host);
    if (substituted) require(text.find("[ERRORCODE]") == text.npos && text.find("%5BERRORCODE%5D") == text.npos);
    return true;
  }
  void load(URLRequest, const dispatch_queue_t&, Completion) override {}
  bool substituted = false;
  std::optional<std::ptrdiff_t> parameters;
  std::string host;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static VirtualRunLoop loop;
  static const auto loader = std::make_shared<Checking>();
  static const auto processor = std::make_shared<SKVASTEventProcessor>(SKVASTEventProcessor::TrackingEvents(),
                                                                       std::weak_ptr<SKVASTViewControllerDelegate>());
  URLLoader::setShared(loader);
  const auto url = NSURL::URLWithString({reinterpret_cast<const char*>(data), size});
  if (!url) return 0;
  url->path();
  loader->substituted = false;
  processor->sendTrackingRequest(*url);
  loader->substituted = true;
  processor->sendVASTError({{std::nullopt, url}}, "401");
  VASTMacroValues hostile;
  hostile.assetURI = hostile.podSequence = "&a=b#[ASSETURI]/?\n";
  processor->setRules(YMRTagRules::of(YMRTagProfileBroad), [&] { return hostile; });
  loader->substituted = false;  // no macro counts before the path
  loader->parameters = std::ranges::count(url->absoluteString(), '&');
  loader->host = url->host();
  processor->sendTrackingRequest(*url);
  processor->sendVASTError({{std::nullopt, url}}, "401");
  loader->parameters.reset();
  processor->setRules(YMRTagRules::of(YMRTagProfileExact), nullptr);
  return 0;
}
