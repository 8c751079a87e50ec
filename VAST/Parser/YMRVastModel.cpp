#include "VAST/Parser/YMRVastModel.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <utility>

#include "VAST/Parser/VASTXMLUtil.h"
#include "VAST/SKLogger.h"

namespace {

constexpr std::string_view tag = "VAST - Model";

const std::string* attribute(const XML::Element& element, std::string_view name) {
  const auto found = element.attributes.find(name);
  return found == element.attributes.end() ? nullptr : &found->second;
}

std::optional<std::string> copyOf(const std::string* text) {
  return text ? std::optional(*text) : std::nullopt;
}

// The only child of that name; null when there is none, or more than one. Takes null too.
const XML::Element* onlyChild(const XML::Element* parent, std::string_view name) {
  if (!parent) return nullptr;
  const XML::Element* only = nullptr;
  for (const auto& child : parent->childElements) {
    if (child->name != name) continue;
    if (only) return nullptr;
    only = child.get();
  }
  return only;
}

// Calls `use` with each element at the end of a path of names, and the URL that is its text. What an accessor would
// find step by step, without its copies: a document can have a hundred thousand such elements. Elements whose text
// cannot be asked for are left out.
template <class Use>
void forEachURL(const XML::Element* from, std::initializer_list<std::string_view> path, const Use& use) {
  const auto* const last = path.end() - 1;
  for (const auto* name = path.begin(); name != last; ++name) from = onlyChild(from, *name);
  if (!from) return;
  for (const auto& element : from->childElements) {
    if (element->name != *last || !element->text) continue;
    auto url = urlWithCleanString(*element->text);
    if (url && url->isHTTP()) {
      use(*element, *std::move(url));
    } else {
      SKLogger::warning(tag, "Left out a " + element->name + ", whose URL cannot be asked for: " + *element->text);
    }
  }
}

}  // namespace

YMRVastModel::YMRVastModel() = default;
YMRVastModel::~YMRVastModel() = default;

void YMRVastModel::setVASTDocumentArray(std::vector<VASTDocument> documents) {
  vastDocument_ = documents.empty() ? std::nullopt : std::optional(documents.back());
  vastDocumentArray_ = std::move(documents);
}

void YMRVastModel::addVASTDocument(const VASTDocument& document) {
  vastDocumentArray_.push_back(document);
  const XML::Accessor& ads = document.ads();
  if (ads.count() < 2) {
    adIDs_.emplace_back();
    return;
  }
  if (const auto count = document.namelessAdCount(); count > 0) {
    SKLogger::warning(tag, "Left out " + std::to_string(count) + " Ad without an id among several");
  }
  for (const auto& ad : ads.elements()) {
    const auto* const id = attribute(*ad, "id");
    if (!id) continue;
    auto child = makeChild(*id);
    if (const auto* const sequence = attribute(*ad, "sequence")) {
      child->adSequence_ = *sequence;
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

std::vector<const XML::Element*> YMRVastModel::adsOfChain() const {
  std::vector<const XML::Element*> ads;
  ads.reserve(vastDocumentArray_.size());
  for (std::size_t i = 0; i < vastDocumentArray_.size(); ++i) {
    const bool isNamed = !adID_.empty() && i < adIDs_.size();
    const XML::Accessor& ad = vastDocumentArray_[i].ad(isNamed ? std::string_view(adIDs_[i]) : std::string_view());
    const auto inLine = ad["InLine"];
    const auto content = (inLine.error() ? ad["Wrapper"] : inLine).element();
    if (content) ads.push_back(content.get());
  }
  return ads;
}

std::optional<std::string> YMRVastModel::vastVersion() const {
  const auto vast = vastDocumentArray_.empty() ? nullptr : vastDocumentArray_.front().vast().element();
  return vast ? copyOf(attribute(*vast, "version")) : std::nullopt;
}

std::optional<std::string> YMRVastModel::redirectUrl() const {
  return adModels_.empty() ? lastAd()[{"Wrapper", "VASTAdTagURI"}].text() : std::nullopt;
}

std::vector<std::shared_ptr<SKVASTMediaFile>> YMRVastModel::mediaFiles() const {
  std::vector<std::shared_ptr<SKVASTMediaFile>> files;
  forEachURL(lastAd().element().get(), {"InLine", "Creatives", "Creative", "Linear", "MediaFiles", "MediaFile"},
             [&files](const XML::Element& element, const NSURL& url) {
               const auto text = [&element](std::string_view name) { return copyOf(attribute(element, name)); };
               files.push_back(std::make_shared<SKVASTMediaFile>(
                   text("id"), text("delivery"), text("type"), text("bitrate"), text("width"), text("height"),
                   text("scalable"), text("maintainAspectRatio"), text("apiFramework"), url.absoluteString()));
             });
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
  const auto add = [&events](const XML::Element& tracking, NSURL url) {
    if (const auto* event = attribute(tracking, "event")) events[*event].push_back(std::move(url));
  };
  for (const auto* ad : adsOfChain()) {
    forEachURL(ad, {"Creatives", "Creative", "Linear", "TrackingEvents", "Tracking"}, add);
    forEachURL(ad, {"Extensions", "Extension", "CustomTracking", "Tracking"}, add);
  }
  return events;
}

std::vector<SKVASTUrlWithId> YMRVastModel::urlsOfChain(std::initializer_list<std::string_view> path) const {
  std::vector<SKVASTUrlWithId> urls;
  for (const auto* ad : adsOfChain()) {
    forEachURL(ad, path, [&urls](const XML::Element& element, NSURL url) {
      urls.emplace_back(copyOf(attribute(element, "id")), std::move(url));
    });
  }
  return urls;
}

std::vector<SKVASTUrlWithId> YMRVastModel::impressions() const {
  return urlsOfChain({"Impression"});
}

std::vector<SKVASTUrlWithId> YMRVastModel::errors() const {
  return urlsOfChain({"Error"});
}

std::optional<SKVASTUrlWithId> YMRVastModel::clickThrough() const {
  const auto urls = urlsOfChain({"Creatives", "Creative", "Linear", "VideoClicks", "ClickThrough"});
  return urls.empty() ? std::nullopt : std::optional(urls.front());
}

std::vector<SKVASTUrlWithId> YMRVastModel::clickTracking() const {
  return urlsOfChain({"Creatives", "Creative", "Linear", "VideoClicks", "ClickTracking"});
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
