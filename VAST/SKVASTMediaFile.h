#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "platform/Export.h"
#include "platform/foundation/NSURL.h"

// One encoding of an ad's film: a `MediaFile` element of a VAST document. Never changes; any thread.
class YMR_API SKVASTMediaFile {
 public:
  // Takes every attribute as the document's text; nil when it is missing. Numbers and booleans are read leniently: as
  // much of the text's beginning as makes sense, 0 or false when nothing does.
  SKVASTMediaFile(std::optional<std::string> id, std::optional<std::string> delivery, std::optional<std::string> type,
                  const std::optional<std::string>& bitrate, const std::optional<std::string>& width,
                  const std::optional<std::string>& height, const std::optional<std::string>& scalable,
                  const std::optional<std::string>& maintainAspectRatio, std::optional<std::string> apiFramework,
                  const std::optional<std::string>& url);

  const std::optional<std::string>& id_() const { return identifier_; }
  const std::optional<std::string>& delivery() const { return delivery_; }
  const std::optional<std::string>& type() const { return type_; }  // the MIME type
  std::int32_t bitrate() const { return bitrate_; }                 // kilobits a second; 0 when unknown
  std::int32_t width() const { return width_; }                     // pixels; 0 when unknown
  std::int32_t height() const { return height_; }
  bool scalable() const { return scalable_; }                        // true when missing
  bool maintainAspectRatio() const { return maintainAspectRatio_; }  // false when missing
  const std::optional<std::string>& apiFramework() const { return apiFramework_; }
  const std::optional<NSURL>& url() const { return url_; }  // nil when the text is no URL

 private:
  std::optional<std::string> identifier_;
  std::optional<std::string> delivery_;
  std::optional<std::string> type_;
  std::int32_t bitrate_;
  std::int32_t width_;
  std::int32_t height_;
  bool scalable_;
  bool maintainAspectRatio_;
  std::optional<std::string> apiFramework_;
  std::optional<NSURL> url_;
};
