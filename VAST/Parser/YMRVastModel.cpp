#include "VAST/Parser/YMRVastModel.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <utility>

#include "VAST/Parser/VASTXMLUtil.h"
#include "VAST/SKLogger.h"

namespace {

std::optional<std::string> attribute(const XML::Element& element, std::string_view name) {
  const auto found = element.attributes.find(name);
  return found == element.attributes.end() ? std::nullopt : std::optional(found->second);
}

// The element's text as a URL that may be asked for.
std::optional<NSURL> fetchableURL(const XML::Element& element) {
  if (!element.text) return std::nullopt;
  auto url = urlWithCleanString(*element.text);
  if (url && url->isHTTP()) return url;
  SKLogger::warning("VAST - Model", "Left out a " + element.name + ", whose URL cannot be asked for: " + *element.text);
  return std::nullopt;
}

}  // namespace

YMRVastModel::YMRVastModel() = default;
YMRVastModel::~YMRVastModel() = default;

void YMRVastModel::setVASTDocumentArray(std::vector<VASTDocument> documents) {
  vastDocument_ = documents.empty() ? std::nullopt : std::optional(documents.back());
  vastDocumentArray_ = std::move(documents);
}

void YMRVastModel::addVASTDocument(VASTDocument document) {
  vastDocumentArray_.push_back(document);
  const XML::Accessor& ads = document.ads();
  if (ads.count() < 2) {
    adIDs_.emplace_back();
    return;
  }
  for (const auto& ad : ads.elements()) {
    const auto id = attribute(*ad, "id");
    if (!id) continue;
    auto child = makeChild(*id);
    if (auto sequence = attribute(*ad, "sequence")) {
      child->adSequence_ = std::move(sequence);
      child->setParent(shared_from_this());
      adModels_.push_back(std::move(child));
    } else {
      standaloneAdModels_->push_back(std::move(child));
    }
  }
  std::stable_sort(adModels_.begin(), adModels_.end(),
                   [](const auto& left, const auto& right) { return *left->adSequence_ < *right->adSequence_; });
}

std::shared_ptr<YMRVastModel> YMRVastModel::makeChild(const std::string& id) const {
  auto child = std::make_shared<YMRVastModel>();
  child->adID_ = id;
  child->adIDs_ = adIDs_;
  child->adIDs_.push_back(id);
  child->setVASTDocumentArray(vastDocumentArray_);
  return child;
}

void YMRVastModel::setParent(const std::shared_ptr<YMRVastModel>& parent) {
  parent_ = parent;
  parentsStandalone_ = parent ? parent->standaloneAdModels_ : nullptr;
}

SKVASTError YMRVastModel::getVastError() const {
  if (!vastError_) {
    std::fputs("YMRVastModel: getVastError() before any step has set it\n", stderr);
    std::abort();
  }
  return *vastError_;
}

const XML::Accessor& YMRVastModel::lastAd() const {
  static const XML::Accessor nothing(XMLError::accessError("vast xml not found"));
  return vastDocumentArray_.empty() ? nothing : vastDocumentArray_.back().ad(adID_);
}

std::vector<XML::Accessor> YMRVastModel::adsOfChain() const {
  std::vector<XML::Accessor> ads;
  ads.reserve(vastDocumentArray_.size());
  for (std::size_t i = 0; i < vastDocumentArray_.size(); ++i) {
    const bool isNamed = !adID_.empty() && i < adIDs_.size();
    const XML::Accessor& ad = vastDocumentArray_[i].ad(isNamed ? std::string_view(adIDs_[i]) : std::string_view());
    auto inLine = ad["InLine"];
    ads.push_back(inLine.error() ? ad["Wrapper"] : std::move(inLine));
  }
  return ads;
}

std::optional<std::string> YMRVastModel::vastVersion() const {
  const auto vast = vastDocumentArray_.empty() ? nullptr : vastDocumentArray_.front().vast().element();
  return vast ? attribute(*vast, "version") : std::nullopt;
}

std::optional<std::string> YMRVastModel::redirectUrl() const {
  return adModels_.empty() ? lastAd()[{"Wrapper", "VASTAdTagURI"}].text() : std::nullopt;
}

std::vector<std::shared_ptr<SKVASTMediaFile>> YMRVastModel::mediaFiles() const {
  std::vector<std::shared_ptr<SKVASTMediaFile>> files;
  const XML::Accessor found = lastAd()[{"InLine", "Creatives", "Creative", "Linear", "MediaFiles", "MediaFile"}];
  for (const auto& element : found.elements()) {
    const auto url = fetchableURL(*element);
    if (!url) continue;
    const auto text = [&element](std::string_view name) { return attribute(*element, name); };
    files.push_back(std::make_shared<SKVASTMediaFile>(
        text("id"), text("delivery"), text("type"), text("bitrate"), text("width"), text("height"), text("scalable"),
        text("maintainAspectRatio"), text("apiFramework"), url->absoluteString()));
  }
  return files;
}

std::optional<std::string> YMRVastModel::adTitle() const {
  return lastAd()[{"InLine", "AdTitle"}].text();
}

std::optional<std::string> YMRVastModel::adDescription() const {
  return lastAd()[{"InLine", "Description"}].text();
}

std::map<std::string, std::vector<NSURL>> YMRVastModel::trackingEvents() const {
  std::map<std::string, std::vector<NSURL>> events;
  const auto add = [&events](const XML::Accessor& found) {
    for (const auto& element : found.elements()) {
      const auto event = attribute(*element, "event");
      auto url = fetchableURL(*element);
      if (event && url) events[*event].push_back(*std::move(url));
    }
  };
  for (const XML::Accessor& ad : adsOfChain()) {
    add(ad[{"Creatives", "Creative", "Linear", "TrackingEvents", "Tracking"}]);
    add(ad[{"Extensions", "Extension", "CustomTracking", "Tracking"}]);
  }
  return events;
}

std::vector<SKVASTUrlWithId> YMRVastModel::urlsOfChain(std::string_view name) const {
  std::vector<SKVASTUrlWithId> urls;
  for (const XML::Accessor& ad : adsOfChain()) {
    const XML::Accessor found = ad[name];
    for (const auto& element : found.elements()) {
      if (auto url = fetchableURL(*element)) urls.emplace_back(attribute(*element, "id"), std::move(url));
    }
  }
  return urls;
}

std::vector<SKVASTUrlWithId> YMRVastModel::impressions() const {
  return urlsOfChain("Impression");
}

std::vector<SKVASTUrlWithId> YMRVastModel::errors() const {
  return urlsOfChain("Error");
}

YMRVastModel::Models YMRVastModel::sequencedAdModels() {
  if (adModels_.empty()) return {shared_from_this()};
  Models ads;
  for (const auto& child : adModels_) {
    const Models ofChild = child->sequencedAdModels();
    ads.insert(ads.end(), ofChild.begin(), ofChild.end());
  }
  return ads;
}

YMRVastModel::Models YMRVastModel::sequencedAdModelsOfStandaloneAd() {
  if (!parentsStandalone_ || parentsStandalone_->empty()) return {};
  Queue& standalone = *parentsStandalone_;
  const Models playable = standalone.front()->sequencedAdModels();
  standalone.pop_front();
  standalone.insert(standalone.begin(), playable.begin(), playable.end());
  const auto next = standalone.front();
  standalone.pop_front();
  return {next};
}
