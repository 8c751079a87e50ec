#include "apps/ymrvast/Inspection.h"

#include <deque>
#include <map>

#include "VAST/Parser/VASTSchema.h"
#include "VAST/Parser/VASTXMLUtil.h"
#include "ads/core/SKVASTMediaFilePicker.h"
#include "apps/ymrvast/Log.h"
#include "platform/dispatch/PlainRunLoop.h"

namespace {

using Ads = std::vector<Inspection::Ad>;
using Queue = std::deque<std::shared_ptr<YMRVastModel>>;

Queue queueOf(const YMRVastModel::Models& models) {
  return {models.begin(), models.end()};
}

bool foundNothing(const std::optional<SKVASTError>& error) {
  return error == SKVASTErrorNoAd || error == SKVASTErrorNoAdAfterWrappers;
}

// How far a document can be read that is not well-formed, or what of another one is never played; else empty.
std::string faultOf(const VASTDocument& document) {
  if (document.isWellFormed()) {
    const auto nameless = document.namelessAdCount();
    return nameless == 0 ? "" : "never played: " + std::to_string(nameless) + " of several ads, without an id";
  }
  auto element = document.vast().element();
  if (!element) return "this is no XML, or breaks off before there is a VAST element";
  while (!element->childElements.empty()) element = element->childElements.back();
  std::string path = element->path();
  path.erase(0, path.find("VAST"));
  return "the XML is broken in or after " + path;
}

// At which step the way to the media files ended.
std::string reasonForNoFiles(const YMRVastModel& model) {
  if (model.vastDocumentArray().empty()) return "";
  const VASTDocument& last = model.vastDocumentArray().back();
  if (last.vast().error()) return "no media file: the document is no VAST";
  if (last.ads().error()) return "no media file: the document has no ad";
  const auto error =
      last.ad(model.adID())[{"InLine", "Creatives", "Creative", "Linear", "MediaFiles", "MediaFile"}].error();
  return "no media file: " + (error ? error->description() : "none has a URL that can be asked for");
}

// What an ad would come to; all that follows from the network and the screen is the same for all of them.
class AdInspector {
 public:
  explicit AdInspector(const Options& options) : options_(options) {}

  Inspection::Ad inspect(const std::shared_ptr<YMRVastModel>& model) const {
    Inspection::Ad ad;
    ad.model = model;
    const auto files = model->mediaFiles();
    const auto picked = hasNetwork_ ? SKVASTMediaFilePicker::pick(files) : nullptr;
    for (const auto& file : files) ad.files.push_back({file, file == picked ? "" : verdictOn(*file)});
    if (picked) ad.picked = picked->url();
    if (files.empty()) {
      ad.failure = model->vastError();
      if (foundNothing(ad.failure)) ad.reason = reasonForNoFiles(*model);
    } else if (!ad.picked) {
      ad.failure = SKVASTErrorMediaFileNotCompatible;
    }
    return ad;
  }

 private:
  std::string verdictOn(const SKVASTMediaFile& file) const {
    if (!hasNetwork_) return "there is no network";
    if (!file.type()) return "it has no type";
    if (!SKVASTMediaFilePicker::isMIMETypeCompatible(file)) return "the player takes no " + *file.type();
    return "another one's area is nearer to the screen's " + std::to_string(options_.screenWidth) + "x" +
           std::to_string(options_.screenHeight) + ", or as near";
  }

  const Options& options_;
  const bool hasNetwork_ = SKVASTMediaFilePicker::networkType() != SKNetworkTypeNone;
};

void addStandalone(const YMRVastModel& model, const AdInspector& inspector, Ads& ads) {
  for (const auto& child : model.standaloneAdModels()) ads.push_back(inspector.inspect(child));
  for (const auto& child : model.adModels()) addStandalone(*child, inspector, ads);
}

// Goes through the break as the player does, on copies of the lists that it would consume.
void markShown(Inspection& inspection, const AdInspector& inspector) {
  std::map<const YMRVastModel*, Inspection::Ad*> known;
  for (auto* list : {&inspection.ads, &inspection.standalone}) {
    for (auto& ad : *list) known.emplace(ad.model.get(), &ad);
  }
  std::map<const YMRVastModel*, Queue> fallBacks;  // by the pod's parent
  Queue queue = queueOf(inspection.model->sequencedAdModels());
  while (!queue.empty()) {
    const auto model = queue.front();
    queue.pop_front();
    const auto found = known.find(model.get());
    // A fall-back that was split is played as its children, which are listed nowhere.
    Inspection::Ad unlisted = found == known.end() ? inspector.inspect(model) : Inspection::Ad{};
    Inspection::Ad& ad = found == known.end() ? unlisted : *found->second;
    ad.isShown = ad.picked.has_value();
    if (ad.isShown) ++inspection.shownCount;
    const auto parent = model->parent();
    if (!foundNothing(ad.failure) || !parent) continue;
    Queue& left = fallBacks.try_emplace(parent.get(), queueOf(parent->standaloneAdModels())).first->second;
    if (left.empty()) continue;
    const Queue playable = queueOf(left.front()->sequencedAdModels());
    left.pop_front();
    left.insert(left.begin(), playable.begin(), playable.end());
    queue.push_front(left.front());
    left.pop_front();
  }
}

Inspection::Validation validate(const std::vector<std::pair<std::string, VASTDocument>>& documents,
                                const Options& options) {
  Inspection::Validation result;
  result.isValid = !documents.empty();
  if (documents.empty()) result.messages.push_back("no document was fetched");
  const auto schema = std::as_bytes(std::span(kVASTSchema, kVASTSchemaLength));
  for (const auto& [url, document] : documents) {
    bool isValid = false;
    const auto messages =
        messagesLoggedBy([&, &document = document] { isValid = validateXMLDocAgainstSchema(document.bytes(), schema); },
                         options.logLevel);
    if (isValid) continue;
    result.isValid = false;
    for (const auto& message : messages) result.messages.push_back(url + ": " + message);
  }
  return result;
}

Inspection::Hop hopOf(const VASTHop& hop) {
  return {hop.url, hop.depth, hop.status, hop.body.size(), hop.elapsed, hop.error, hop.reason};
}

}  // namespace

Inspection inspect(const Options& options, const std::optional<VASTDocument>& document, PlainRunLoop& loop) {
  Inspection inspection;
  inspection.source = options.source;
  std::vector<std::pair<std::string, VASTDocument>> documents;
  if (document) documents.emplace_back(options.source, *document);

  SKVAST2ParserOptions parserOptions;
  parserOptions.hopObserver = [&](const VASTHop& hop) {
    inspection.hops.push_back(hopOf(hop));
    if (hop.error) return;
    const VASTDocument fetched(std::vector(hop.body.begin(), hop.body.end()));
    inspection.hops.back().reason = faultOf(fetched);
    if (options.validate) documents.emplace_back(hop.url, fetched);
  };
  SKVAST2Parser parser(std::move(parserOptions));
  const auto completed = [&](std::shared_ptr<YMRVastModel> model) {
    inspection.model = std::move(model);
    loop.stop();
  };
  if (document) {
    parser.parseWithData(*document, completed);
  } else {
    parser.parseWithUrl(options.url, completed);
  }
  loop.run();

  const AdInspector inspector(options);
  for (const auto& model : inspection.model->sequencedAdModels()) inspection.ads.push_back(inspector.inspect(model));
  if (document) inspection.fault = faultOf(*document);
  addStandalone(*inspection.model, inspector, inspection.standalone);
  markShown(inspection, inspector);
  if (options.validate) inspection.validation = validate(documents, options);
  return inspection;
}
