#include "ads/core/SKVASTMediaFilePicker.h"

#include <algorithm>
#include <iterator>
#include <mutex>
#include <utility>

#include "VAST/Parser/YMRTagRules.h"
#include "VAST/SKLogger.h"
#include "net/SKReachability.h"
#include "platform/foundation/ConnectionRate.h"
#include "platform/foundation/URLLoader.h"
#include "platform/uikit/values/UIScreen.h"

namespace {

constexpr const char* tag = "VAST - Mediafile Picker";

std::mutex mutex;
std::string host = "example.com";

std::int64_t screenArea() {
  const CGSize size = UIScreen::mainScreen().bounds().size;
  return static_cast<std::int32_t>(std::min(size.width * size.height, 2147483647.0));
}

}  // namespace

std::shared_ptr<SKVASTMediaFile> SKVASTMediaFilePicker::pick(const Files& files) {
  return pick(files, YMRTagProfileExact);
}

std::shared_ptr<SKVASTMediaFile> SKVASTMediaFilePicker::pick(const Files& files, YMRTagProfile profile) {
  return pick(files, profile, ConnectionRate::shared().kilobits());
}

std::shared_ptr<SKVASTMediaFile> SKVASTMediaFilePicker::pick(const Files& files, YMRTagProfile profile,
                                                             const std::optional<double>& kilobits) {
  const SKNetworkType network = networkType();
  SKLogger::debug(tag, "NetworkType: " + std::to_string(network));
  if (network == SKNetworkTypeNone) {
    SKLogger::error(tag, "There is no network: no route leads to " + probeHost() + ", and no server answered lately");
    return nullptr;
  }
  const auto& rules = YMRTagRules::of(profile);
  Files playable;
  std::copy_if(files.begin(), files.end(), std::back_inserter(playable),
               [&rules](const auto& file) { return rules.takes(*file); });
  if (playable.empty()) return nullptr;
  const auto best = rules.choose(std::move(playable), screenArea(), kilobits);
  SKLogger::debug(tag, "Selected Media File: " + (best->url() ? best->url()->absoluteString() : "(null)"));
  return best;
}

SKVASTError SKVASTMediaFilePicker::errorOfNone() {
  return networkType() == SKNetworkTypeNone ? SKVASTErrorNoInternet : SKVASTErrorMediaFileNotCompatible;
}

SKNetworkType SKVASTMediaFilePicker::networkType() {
  const auto reachability = SKReachability::reachabilityWithHostname(probeHost());
  if (!reachability) return SKNetworkTypeNone;
  // One reading for all questions: they must not be answered about different moments.
  const auto flags = reachability->reachabilityFlags();
  if (reachability->isReachableWithFlags(flags)) {
    return flags & kSCNetworkReachabilityFlagsIsWWAN ? SKNetworkTypeCellular : SKNetworkTypeWiFi;
  }
  return URLLoader::shared()->wasAnsweredLately() ? SKNetworkTypeWiFi : SKNetworkTypeNone;
}

bool SKVASTMediaFilePicker::isMIMETypeCompatible(const SKVASTMediaFile& file) {
  return YMRTagRules::of(YMRTagProfileExact).takes(file);
}

std::string SKVASTMediaFilePicker::probeHost() {
  std::lock_guard lock(mutex);
  return host;
}

void SKVASTMediaFilePicker::setProbeHost(std::string name) {
  std::lock_guard lock(mutex);
  host.swap(name);
}
