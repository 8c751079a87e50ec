#include "platform/avfoundation/AVMediaSelection.h"

#include <algorithm>
#include <utility>

#include "platform/avfoundation/AVMediaFormat.h"

AVMediaSelectionOption::AVMediaSelectionOption(std::string identifier, std::string mediaType,
                                               std::string extendedLanguageTag, std::string title)
    : identifier_(std::move(identifier)),
      mediaType_(std::move(mediaType)),
      extendedLanguageTag_(std::move(extendedLanguageTag)),
      title_(std::move(title)) {}

std::optional<std::string> AVMediaSelectionOption::extendedLanguageTag() const {
  if (extendedLanguageTag_.empty()) return std::nullopt;
  return extendedLanguageTag_;
}

std::string AVMediaSelectionOption::displayName() const {
  if (!title_.empty()) return title_;
  if (!extendedLanguageTag_.empty()) return extendedLanguageTag_;
  return mediaType_ == AVMediaTypeClosedCaption ? "Closed captions" : "Subtitles";
}

AVMediaSelectionGroup::AVMediaSelectionGroup(std::vector<std::shared_ptr<AVMediaSelectionOption>> options)
    : options_(std::move(options)) {}

std::shared_ptr<AVMediaSelectionOption> AVMediaSelectionGroup::optionWithIdentifier(
    const std::string& identifier) const {
  const auto found = std::find_if(options_.begin(), options_.end(),
                                  [&](const auto& option) { return option->identifier() == identifier; });
  return found == options_.end() ? nullptr : *found;
}
