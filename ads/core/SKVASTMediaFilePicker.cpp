#include "ads/core/SKVASTMediaFilePicker.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <iterator>
#include <mutex>
#include <string_view>

#include "VAST/SKLogger.h"
#include "net/SKReachability.h"
#include "platform/foundation/NSString.h"
#include "platform/foundation/URLLoader.h"
#include "platform/uikit/values/UIScreen.h"

namespace {

constexpr const char* tag = "VAST - Mediafile Picker";

std::mutex mutex;
std::string host = "example.com";

// As 32 bits, like the platform's: a hostile document's product wraps.
std::int32_t area(const SKVASTMediaFile& file) {
  return static_cast<std::int32_t>(static_cast<std::uint32_t>(file.width()) *
                                   static_cast<std::uint32_t>(file.height()));
}

std::int64_t screenArea() {
  const CGSize size = UIScreen::mainScreen().bounds().size;
  return static_cast<std::int32_t>(std::min(size.width * size.height, 2147483647.0));
}

bool contains(const std::string& text, std::string_view lowerCase) {
  const auto matches = [](char given, char wanted) { return lowercaseASCII(given) == wanted; };
  return std::search(text.begin(), text.end(), lowerCase.begin(), lowerCase.end(), matches) != text.end();
}

}  // namespace

std::shared_ptr<SKVASTMediaFile> SKVASTMediaFilePicker::pick(const Files& files) {
  const SKNetworkType network = networkType();
  SKLogger::debug(tag, "NetworkType: " + std::to_string(network));
  if (network == SKNetworkTypeNone) {
    SKLogger::error(tag, "There is no network: no route leads to " + probeHost() + ", and no server answered lately");
    return nullptr;
  }
  Files playable;
  std::copy_if(files.begin(), files.end(), std::back_inserter(playable),
               [](const auto& file) { return isMIMETypeCompatible(*file); });
  if (playable.empty()) return nullptr;
  std::stable_sort(playable.begin(), playable.end(),
                   [](const auto& left, const auto& right) { return area(*left) < area(*right); });
  const std::int64_t wanted = screenArea();
  auto best = playable.begin();
  for (auto next = best + 1; next != playable.end(); best = next++) {
    if (std::abs(wanted - area(**next)) >= std::abs(wanted - area(**best))) break;
  }
  SKLogger::debug(tag, "Selected Media File: " + ((*best)->url() ? (*best)->url()->absoluteString() : "(null)"));
  return *best;
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
  if (!file.type()) return false;
  constexpr std::string_view kinds[] = {"mp4", "m4v", "quicktime", "3gpp"};
  return std::any_of(std::begin(kinds), std::end(kinds), [&](auto kind) { return contains(*file.type(), kind); });
}

std::string SKVASTMediaFilePicker::probeHost() {
  std::lock_guard lock(mutex);
  return host;
}

void SKVASTMediaFilePicker::setProbeHost(std::string name) {
  std::lock_guard lock(mutex);
  host.swap(name);
}
