#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/Export.h"

// One of several renditions of which a viewer sees or hears one. Immutable; main thread.
class YMR_API AVMediaSelectionOption {
 public:
  AVMediaSelectionOption(std::string identifier, std::string mediaType, std::string extendedLanguageTag,
                         std::string title);

  // AVMediaTypeSubtitle or AVMediaTypeClosedCaption.
  const std::string& mediaType() const { return mediaType_; }
  // BCP 47; nil when the media don't say.
  std::optional<std::string> extendedLanguageTag() const;
  // For a menu: the track's title, or its language tag, or a word for its media type. Never empty.
  std::string displayName() const;
  // Tells the options of one asset apart; the same in every group that the asset hands out.
  const std::string& identifier() const { return identifier_; }

  friend bool operator==(const AVMediaSelectionOption&, const AVMediaSelectionOption&) = default;

 private:
  std::string identifier_;
  std::string mediaType_;
  std::string extendedLanguageTag_;
  std::string title_;
};

// The options of one characteristic, in the media's order; at most one of them is selected. Immutable; main thread.
//
// Kept from the platform: options, language tag, display name, media type. Left out: default options, filtering.
class YMR_API AVMediaSelectionGroup {
 public:
  explicit AVMediaSelectionGroup(std::vector<std::shared_ptr<AVMediaSelectionOption>> options);
  const std::vector<std::shared_ptr<AVMediaSelectionOption>>& options() const { return options_; }
  // The option with the identifier; nil when there is none.
  std::shared_ptr<AVMediaSelectionOption> optionWithIdentifier(const std::string& identifier) const;

 private:
  std::vector<std::shared_ptr<AVMediaSelectionOption>> options_;
};
