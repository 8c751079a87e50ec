#include <algorithm>
#include <array>
#include <cstdlib>

#include "VAST/Parser/VASTXMLUtil.h"
#include "VAST/Parser/YMRProfiles.h"
#include "VAST/Parser/YMRVastModel.h"
#include "VAST/SKLogger.h"
#include "platform/foundation/NSString.h"

namespace {

// As 32 bits, like the platform's: a hostile document's product wraps.
std::int32_t area(const SKVASTMediaFile& file) {
  return static_cast<std::int32_t>(static_cast<std::uint32_t>(file.width()) *
                                   static_cast<std::uint32_t>(file.height()));
}

bool contains(const std::string& text, std::string_view lowerCase) {
  const auto matches = [](char given, char wanted) { return lowercaseASCII(given) == wanted; };
  return std::search(text.begin(), text.end(), lowerCase.begin(), lowerCase.end(), matches) != text.end();
}

const std::string* attribute(const XML::Element& element, std::string_view name) {
  const auto found = element.attributes.find(name);
  return found == element.attributes.end() ? nullptr : &found->second;
}

}  // namespace

YMRTagRules::Answer YMRExactRules::answerOf(const URLResponse& response) const {
  constexpr long statusOfDocument = 200;
  return !response.error && response.status == statusOfDocument ? Answer::document : Answer::nothing;
}

std::optional<NSURL> YMRExactRules::urlOf(std::string_view text) const {
  return urlWithCleanString(text);
}

YMRTagRules::Split YMRExactRules::split(const VASTDocument& document) const {
  Split split;
  const auto ads = document.ads().elements();
  if (ads.size() < 2) return split;
  split.isSplit = true;
  if (const auto count = lostAdCount(document); count > 0) {
    SKLogger::warning("VAST - Model", "Left out " + std::to_string(count) + " Ad without an id among several");
  }
  for (std::size_t i = 0; i < ads.size(); ++i) {
    if (!attribute(*ads[i], "id")) continue;
    (attribute(*ads[i], "sequence") ? split.pod : split.standalone).push_back({ads[i].get(), i});
  }
  std::stable_sort(split.pod.begin(), split.pod.end(), [](const Child& left, const Child& right) {
    return *attribute(*left.ad, "sequence") < *attribute(*right.ad, "sequence");
  });
  return split;
}

const XML::Element* YMRExactRules::adIn(const VASTDocument& document, std::string_view id, std::size_t) const {
  return document.ad(id).element().get();
}

const XML::Element* YMRExactRules::vastOf(const VASTDocument& document) const {
  return document.vast().element().get();
}

bool YMRExactRules::isNamed(const Element& element, std::string_view name) const {
  return element.name == name;
}

const XML::Element* YMRExactRules::child(const Element* parent, std::string_view name) const {
  if (!parent) return nullptr;
  const Element* only = nullptr;
  for (const auto& child : parent->childElements) {
    if (child->name != name) continue;
    if (only) return nullptr;
    only = child.get();
  }
  return only;
}

const XML::Element* YMRExactRules::contentOf(const Element* ad) const {
  if (!ad) return nullptr;
  const bool isInLine = std::ranges::any_of(ad->childElements, [](const auto& each) { return each->name == "InLine"; });
  return child(ad, isInLine ? "InLine" : "Wrapper");
}

// What an accessor would find step by step, without its copies: a document can have a hundred thousand such elements.
std::vector<const XML::Element*> YMRExactRules::at(const Element* content, Path path) const {
  std::vector<const Element*> found;
  for (const auto name : path.first(path.size() - 1)) content = child(content, name);
  if (!content) return found;
  for (const auto& element : content->childElements) {
    if (element->name == path.back()) found.push_back(element.get());
  }
  return found;
}

bool YMRExactRules::takes(const SKVASTMediaFile& file) const {
  constexpr std::array<std::string_view, 4> kinds{"mp4", "m4v", "quicktime", "3gpp"};
  return file.type() && std::ranges::any_of(kinds, [&](auto kind) { return contains(*file.type(), kind); });
}

std::shared_ptr<SKVASTMediaFile> YMRExactRules::choose(Files files, std::int64_t wanted, std::optional<double>) const {
  std::stable_sort(files.begin(), files.end(),
                   [](const auto& left, const auto& right) { return area(*left) < area(*right); });
  auto best = files.begin();
  for (auto next = best + 1; next != files.end(); best = next++) {
    if (std::abs(wanted - area(**next)) >= std::abs(wanted - area(**best))) break;
  }
  return *best;
}

bool YMRExactRules::isReplacedAfter(SKVASTError failure) const {
  return failure == SKVASTErrorNoAd || failure == SKVASTErrorNoAdAfterWrappers;
}

// At which step the way to the media files ended.
std::string YMRExactRules::whyNoFilm(const YMRVastModel& model) const {
  if (model.vastDocumentArray().empty()) return "";
  const VASTDocument& last = model.vastDocumentArray().back();
  if (last.vast().error()) return "no media file: the document is no VAST";
  if (last.ads().error()) return "no media file: the document has no ad";
  const auto error =
      last.ad(model.adID())[{"InLine", "Creatives", "Creative", "Linear", "MediaFiles", "MediaFile"}].error();
  return "no media file: " + (error ? error->description() : "none has a URL that can be asked for");
}
