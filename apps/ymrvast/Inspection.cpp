#include "apps/ymrvast/Inspection.h"

#include <map>
#include <utility>

#include "VAST/Parser/VASTSchema.h"
#include "VAST/Parser/VASTXMLUtil.h"
#include "ads/core/YMRAdQueue.h"
#include "apps/ymrvast/Log.h"
#include "platform/dispatch/PlainRunLoop.h"

namespace {

using Models = YMRVastModel::Models;

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
    SKVASTMediaFilePicker::Files files;
    return describe(model, YMRPreparedAd::from(*model, pickInto(files)), files);
  }

  Inspection::Ad takeNext(YMRAdQueue& queue) const {
    const auto model = queue.next();
    SKVASTMediaFilePicker::Files files;
    return describe(model, queue.takeNext(pickInto(files)), files);
  }

 private:
  YMRPreparedAd::Pick pickInto(SKVASTMediaFilePicker::Files& seen) const {
    return [this, &seen](const SKVASTMediaFilePicker::Files& files) {
      seen = files;
      return hasNetwork_ ? SKVASTMediaFilePicker::pick(files) : nullptr;
    };
  }

  Inspection::Ad describe(const std::shared_ptr<YMRVastModel>& model, YMRPreparedAd prepared,
                          const SKVASTMediaFilePicker::Files& files) const {
    Inspection::Ad ad;
    ad.model = model;
    ad.prepared = std::move(prepared);
    for (const auto& file : files) {
      ad.files.push_back({file, file == ad.prepared.mediaFile ? "" : verdictOn(*file)});
    }
    if (ad.failure() && ad.prepared.foundNothing()) ad.reason = reasonForNoFiles(*model);
    return ad;
  }

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

void addStandalone(const YMRVastModel& model, Models& standalone) {
  for (const auto& child : model.standaloneAdModels()) standalone.push_back(child);
  for (const auto& child : model.adModels()) addStandalone(*child, standalone);
}

// Lists the ads, and goes through the break as the player does, which uses the stand-alone ads up.
void inspectAds(Inspection& inspection, const AdInspector& inspector) {
  const Models ads = inspection.model->sequencedAdModels();
  Models standalone;
  addStandalone(*inspection.model, standalone);
  // A fall-back that was split is played as its children, which are listed nowhere.
  std::map<const YMRVastModel*, Inspection::Ad> played;
  for (YMRAdQueue queue(*inspection.model); !queue.isEmpty();) {
    auto ad = inspector.takeNext(queue);
    ad.isShown = !ad.prepared.failure;
    if (ad.isShown) ++inspection.shownCount;
    const auto* model = ad.model.get();
    played.emplace(model, std::move(ad));
  }
  const auto list = [&](const Models& models, std::vector<Inspection::Ad>& into) {
    for (const auto& model : models) {
      auto found = played.extract(model.get());
      into.push_back(found ? std::move(found.mapped()) : inspector.inspect(model));
    }
  };
  list(ads, inspection.ads);
  list(standalone, inspection.standalone);
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
  inspectAds(inspection, inspector);
  if (document) inspection.fault = faultOf(*document);
  if (options.validate) inspection.validation = validate(documents, options);
  return inspection;
}
