#include "VAST/SKVASTMediaFile.h"

#include <utility>

#include "platform/foundation/NSString.h"

namespace {

std::int32_t number(const std::optional<std::string>& text) {
  return text ? intValue(*text) : 0;
}

}  // namespace

SKVASTMediaFile::SKVASTMediaFile(std::optional<std::string> id, std::optional<std::string> delivery,
                                 std::optional<std::string> type, const std::optional<std::string>& bitrate,
                                 const std::optional<std::string>& width, const std::optional<std::string>& height,
                                 const std::optional<std::string>& scalable,
                                 const std::optional<std::string>& maintainAspectRatio,
                                 std::optional<std::string> apiFramework, const std::optional<std::string>& url)
    : identifier_(std::move(id)),
      delivery_(std::move(delivery)),
      type_(std::move(type)),
      bitrate_(number(bitrate)),
      width_(number(width)),
      height_(number(height)),
      scalable_(!scalable || boolValue(*scalable)),
      maintainAspectRatio_(maintainAspectRatio && boolValue(*maintainAspectRatio)),
      apiFramework_(std::move(apiFramework)),
      url_(url ? NSURL::URLWithString(*url) : std::nullopt) {}
