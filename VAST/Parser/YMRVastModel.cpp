#include "VAST/Parser/YMRVastModel.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <utility>

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

// Calls `use` with each of the elements and the URL that is its text. Those whose text cannot be asked for are left
// out.
template <class Use>
void forEachURL(const YMRTagRules& rules, const std::vector<const XML::Element*>& elements, const Use& use) {
  for (const auto* element : elements) {
    if (!element->text) continue;
    auto url = rules.urlOf(*element->text);
    if (url && url->isHTTP()) {
      use(*element, *std::move(url));
    } else {
      SKLogger::warning(tag, "Left out a " + element->name + ", whose URL cannot be asked for: " + *element->text);
    }
  }
}

void addURLs(const YMRTagRules& rules, const std::vector<const XML::Element*>& elements,
             std::vector<SKVASTUrlWithId>& urls) {
  forEachURL(rules, elements, [&urls](const XML::Element& element, NSURL url) {
    urls.emplace_back(copyOf(attribute(element, "id")), std::move(url));
  });
}

std::optional<std::string> textOf(const XML::Element* element) {
  return element ? element->text : std::nullopt;
}

constexpr std::array<std::string_view, 3> toLinear{"Creatives", "Creative", "Linear"};
constexpr std::array<std::string_view, 5> toFilms{"Creatives", "Creative", "Linear", "MediaFiles", "MediaFile"};
constexpr std::array<std::string_view, 5> toTracking{"Creatives", "Creative", "Linear", "TrackingEvents", "Tracking"};
constexpr std::array<std::string_view, 4> toCustomTracking{"Extensions", "Extension", "CustomTracking", "Tracking"};

}  // namespace

YMRVastModel::YMRVastModel(YMRTagProfile profile) : rules_(YMRTagRules::of(profile)) {}
YMRVastModel::~YMRVastModel() = default;

void YMRVastModel::setVASTDocumentArray(std::vector<VASTDocument> documents) {
  vastDocument_ = documents.empty() ? std::nullopt : std::optional(documents.back());
  vastDocumentArray_ = std::move(documents);
}

void YMRVastModel::addVASTDocument(const VASTDocument& document) {
  vastDocumentArray_.push_back(document);
  auto split = rules_.split(document);
  if (!split.isSplit) {
    adIDs_.emplace_back();
    adPositions_.push_back(0);
    return;
  }
  if (!allowance_.severalAds) {
    // The first stand-alone ad, which may be played without a pod.
    const bool hasPod = !split.pod.empty() && attribute(*split.pod.front().ad, "sequence");
    auto& first = split.pod.empty() || (hasPod && !split.standalone.empty()) ? split.standalone : split.pod;
    split.pod = {first.begin(), first.begin() + (first.empty() ? 0 : 1)};
    split.standalone.clear();
  }
  for (const auto& each : split.standalone) standaloneAdModels_->push_back(makeChild(each));
  for (const auto& each : split.pod) {
    auto child = makeChild(each);
    child->adSequence_ = copyOf(attribute(*each.ad, "sequence"));
    child->setParent(shared_from_this());
    adModels_.push_back(std::move(child));
  }
}

std::shared_ptr<YMRVastModel> YMRVastModel::makeChild(const YMRTagRules::Child& of) const {
  auto child = std::make_shared<YMRVastModel>(rules_.profile());
  const auto* id = attribute(*of.ad, "id");
  if (id) child->adID_ = *id;
  child->adIDs_ = adIDs_;
  child->adIDs_.push_back(child->adID_);
  child->adPositions_ = adPositions_;
  child->adPositions_.push_back(of.position);
  child->setAllowance(allowance_.wrappers, allowance_.severalAds);
  child->setVASTDocumentArray(vastDocumentArray_);
  return child;
}

void YMRVastModel::setParent(const std::shared_ptr<YMRVastModel>& parent) {
  parent_ = parent;
  fallBacks_.clear();
  if (!parent) return;
  fallBacks_.push_back(parent->standaloneAdModels_);
  if (!rules_.exhaustsFallBacks()) return;
  fallBacks_.insert(fallBacks_.end(), parent->fallBacks_.begin(), parent->fallBacks_.end());
}

void YMRVastModel::setAllowance(bool wrappers, bool severalAds) {
  allowance_.wrappers = wrappers;
  allowance_.severalAds = severalAds;
}

void YMRVastModel::passWrapper() {
  const auto further = rules_.allowanceOf(rules_.child(lastAd(), "Wrapper"));
  setAllowance(allowance_.wrappers && further.wrappers, allowance_.severalAds && further.severalAds);
  if (further.fallBacks) return;
  allowance_.fallBacks = false;
  fallBacks_.clear();
}

SKVASTError YMRVastModel::getVastError() const {
  if (!vastError_) {
    std::fputs("YMRVastModel: getVastError() before any step has set it\n", stderr);
    std::abort();
  }
  return *vastError_;
}

const XML::Element* YMRVastModel::lastAd() const {
  if (vastDocumentArray_.empty()) return nullptr;
  const bool isSplit = adPositions_.size() < vastDocumentArray_.size();
  return rules_.adIn(vastDocumentArray_.back(), adID_, isSplit ? SIZE_MAX : adPositions_.back());
}

std::vector<const XML::Element*> YMRVastModel::adsOfChain() const {
  std::vector<const XML::Element*> ads;
  ads.reserve(vastDocumentArray_.size());
  for (std::size_t i = 0; i < vastDocumentArray_.size(); ++i) {
    const bool isNamed = !adID_.empty() && i < adIDs_.size();
    const auto id = isNamed ? std::string_view(adIDs_[i]) : std::string_view();
    const auto position = i < adPositions_.size() ? adPositions_[i] : SIZE_MAX;
    const auto* content = rules_.contentOf(rules_.adIn(vastDocumentArray_[i], id, position));
    if (content) ads.push_back(content);
  }
  return ads;
}

std::optional<std::string> YMRVastModel::vastVersion() const {
  const auto* vast = vastDocumentArray_.empty() ? nullptr : rules_.vastOf(vastDocumentArray_.front());
  return vast ? copyOf(attribute(*vast, "version")) : std::nullopt;
}

std::optional<std::string> YMRVastModel::redirectUrl() const {
  if (!adModels_.empty() || !allowance_.wrappers) return std::nullopt;
  return textOf(rules_.child(rules_.child(lastAd(), "Wrapper"), "VASTAdTagURI"));
}

std::vector<std::shared_ptr<SKVASTMediaFile>> YMRVastModel::mediaFiles() const {
  std::vector<std::shared_ptr<SKVASTMediaFile>> files;
  forEachURL(rules_, rules_.at(rules_.child(lastAd(), "InLine"), toFilms),
             [&files](const XML::Element& element, const NSURL& url) {
               const auto text = [&element](std::string_view name) { return copyOf(attribute(element, name)); };
               files.push_back(std::make_shared<SKVASTMediaFile>(
                   text("id"), text("delivery"), text("type"), text("bitrate"), text("width"), text("height"),
                   text("scalable"), text("maintainAspectRatio"), text("apiFramework"), url.absoluteString()));
             });
  return files;
}

std::optional<std::string> YMRVastModel::adTitle() const {
  return textOf(rules_.child(rules_.child(lastAd(), "InLine"), "AdTitle"));
}

std::optional<std::string> YMRVastModel::adDescription() const {
  return textOf(rules_.child(rules_.child(lastAd(), "InLine"), "Description"));
}

std::map<std::string, std::vector<NSURL>> YMRVastModel::trackingEvents() const {
  std::map<std::string, std::vector<NSURL>> events;
  const auto add = [&events](const XML::Element& tracking, NSURL url) {
    if (const auto* event = attribute(tracking, "event")) events[*event].push_back(std::move(url));
  };
  for (const auto* ad : adsOfChain()) {
    forEachURL(rules_, rules_.at(ad, toTracking), add);
    forEachURL(rules_, rules_.at(ad, toCustomTracking), add);
  }
  return events;
}

std::vector<SKVASTUrlWithId> YMRVastModel::urlsOfChain(std::initializer_list<std::string_view> path) const {
  std::vector<SKVASTUrlWithId> urls;
  for (const auto* ad : adsOfChain()) addURLs(rules_, rules_.at(ad, {path.begin(), path.size()}), urls);
  return urls;
}

std::vector<SKVASTUrlWithId> YMRVastModel::impressions() const {
  return urlsOfChain({"Impression"});
}

std::vector<SKVASTUrlWithId> YMRVastModel::errors() const {
  static constexpr std::array<std::string_view, 1> toErrors{"Error"};
  auto urls = urlsOfChain({"Error"});
  if (!vastDocumentArray_.empty())
    addURLs(rules_, rules_.at(rules_.emptyVastOf(vastDocumentArray_.back()), toErrors), urls);
  return urls;
}

std::optional<SKVASTUrlWithId> YMRVastModel::clickThrough() const {
  const auto urls = urlsOfChain({"Creatives", "Creative", "Linear", "VideoClicks", "ClickThrough"});
  return urls.empty() ? std::nullopt : std::optional(urls.front());
}

std::vector<SKVASTUrlWithId> YMRVastModel::clickTracking() const {
  return urlsOfChain({"Creatives", "Creative", "Linear", "VideoClicks", "ClickTracking"});
}

std::vector<YMRVastModel::Progress> YMRVastModel::progress() const {
  std::vector<Progress> list;
  if (!rules_.knowsOffsets()) return list;
  for (const auto* ad : adsOfChain()) {
    for (const auto* tracking : rules_.at(ad, toTracking)) {
      const auto* event = attribute(*tracking, "event");
      const auto* text = attribute(*tracking, "offset");
      const auto offset = event && text && *event == "progress" ? VASTOffset::from(*text) : std::nullopt;
      if (!offset) continue;
      forEachURL(rules_, {tracking}, [&](const XML::Element&, NSURL url) {
        list.push_back({*offset, std::move(url)});
      });
    }
  }
  return list;
}

std::optional<VASTOffset> YMRVastModel::skipOffset() const {
  if (!rules_.knowsOffsets()) return std::nullopt;
  const auto ads = adsOfChain();
  for (auto ad = ads.rbegin(); ad != ads.rend(); ++ad) {
    for (const auto* linear : rules_.at(*ad, toLinear)) {
      const auto* text = attribute(*linear, "skipoffset");
      const auto offset = text ? VASTOffset::from(*text) : std::nullopt;
      if (offset) return offset;
    }
  }
  return std::nullopt;
}

std::vector<VASTNotRun> YMRVastModel::notRun() const {
  return rules_.notRunOf(adsOfChain());
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

std::shared_ptr<YMRVastModel> YMRVastModel::nextStandaloneAd() const {
  const auto list = std::ranges::find_if(fallBacks_, [](const auto& each) { return !each->empty(); });
  return list == fallBacks_.end() ? nullptr : (*list)->front()->sequencedAdModels().front();
}

YMRVastModel::Models YMRVastModel::sequencedAdModelsOfStandaloneAd() {
  const auto list = std::ranges::find_if(fallBacks_, [](const auto& each) { return !each->empty(); });
  if (list == fallBacks_.end()) return {};
  Queue& standalone = **list;
  const bool goesOn = rules_.exhaustsFallBacks() && standalone.front()->allowance_.fallBacks;
  const Models playable = standalone.front()->sequencedAdModels();
  standalone.pop_front();
  standalone.insert(standalone.begin(), playable.begin(), playable.end());
  const auto next = standalone.front();
  standalone.pop_front();
  if (goesOn) next->fallBacks_.insert(next->fallBacks_.end(), fallBacks_.begin(), fallBacks_.end());
  return {next};
}
