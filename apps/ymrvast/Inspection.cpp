#include "apps/ymrvast/Inspection.h"

#include <algorithm>
#include <map>
#include <utility>
#include <variant>

#include "VAST/Parser/VASTSchema.h"
#include "VAST/Parser/VASTXMLUtil.h"
#include "ads/core/YMRAdQueue.h"
#include "apps/ymrvast/Comparison.h"
#include "apps/ymrvast/FetchOnce.h"
#include "apps/ymrvast/Log.h"
#include "platform/dispatch/PlainRunLoop.h"

namespace {

using Models = YMRVastModel::Models;

constexpr std::chrono::minutes breaksTimeLimit{5};

// As the profile begins to read it.
VASTDocument documentOf(std::span<const std::byte> bytes, YMRTagProfile profile) {
  const auto rest = bytes.subspan(YMRTagRules::of(profile).blanksBefore(bytes));
  return VASTDocument(std::vector(rest.begin(), rest.end()));
}

// How far a document can be read that is not well-formed, or what of another one is never played; else empty.
std::string faultOf(const VASTDocument& document, YMRTagProfile profile) {
  if (document.isWellFormed()) {
    const auto nameless = YMRTagRules::of(profile).lostAdCount(document);
    return nameless == 0 ? "" : "never played: " + std::to_string(nameless) + " of several ads, without an id";
  }
  auto element = document.vast().element();
  if (!element) return "this is no XML, or breaks off before there is a VAST element";
  while (!element->childElements.empty()) element = element->childElements.back();
  std::string path = element->path();
  path.erase(0, path.find("VAST"));
  return "the XML is broken in or after " + path;
}

// What an ad would come to; all that follows from the network and the screen is the same for all of them.
class AdInspector {
 public:
  explicit AdInspector(const Options& options) : options_(options) {}

  Inspection::Ad inspect(const std::shared_ptr<YMRVastModel>& model) const {
    SKVASTMediaFilePicker::Files files;
    return describe(model, YMRPreparedAd::from(*model, pickInto(model->rules().profile(), files)), files);
  }

  Inspection::Ad takeNext(YMRAdQueue& queue) const {
    const auto model = queue.next();
    SKVASTMediaFilePicker::Files files;
    return describe(model, queue.takeNext(pickInto(model->rules().profile(), files)), files);
  }

 private:
  YMRPreparedAd::Pick pickInto(YMRTagProfile profile, SKVASTMediaFilePicker::Files& seen) const {
    return [this, profile, &seen](const SKVASTMediaFilePicker::Files& files) {
      seen = files;
      return hasNetwork_ ? SKVASTMediaFilePicker::pick(files, profile) : nullptr;
    };
  }

  Inspection::Ad describe(const std::shared_ptr<YMRVastModel>& model, YMRPreparedAd prepared,
                          const SKVASTMediaFilePicker::Files& files) const {
    Inspection::Ad ad;
    ad.model = model;
    ad.prepared = std::move(prepared);
    for (const auto& file : files) {
      ad.files.push_back({file, file == ad.prepared.mediaFile ? "" : verdictOn(*file, model->rules())});
    }
    if (ad.failure() && ad.prepared.foundNothing()) ad.reason = model->rules().whyNoFilm(*model);
    return ad;
  }

  std::string verdictOn(const SKVASTMediaFile& file, const YMRTagRules& rules) const {
    if (!hasNetwork_) return "there is no network";
    if (!rules.takes(file)) return file.type() ? "the player takes no " + *file.type() : "it has no type";
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

// Of a document of stand-alone ads alone the one that is shown counts as its ad.
void putShownFirst(std::vector<Inspection::Ad>& ads, std::vector<Inspection::Ad>& standalone) {
  if (ads.size() != 1 || ads[0].isShown || ads[0].model->adSequence()) return;
  const auto shown = std::ranges::find_if(standalone, &Inspection::Ad::isShown);
  if (shown == standalone.end()) return;
  std::swap(ads[0], *shown);
  std::rotate(standalone.begin(), shown, shown + 1);
}

struct Ads {
  std::vector<Inspection::Ad> ads;
  std::vector<Inspection::Ad> standalone;
  std::size_t shownCount = 0;

  std::vector<const Inspection::Ad*> all() const {
    std::vector<const Inspection::Ad*> list;
    for (const auto* each : {&ads, &standalone}) {
      for (const auto& ad : *each) list.push_back(&ad);
    }
    return list;
  }
};

// Lists the ads, and goes through the break as the player does, which uses the stand-alone ads up.
Ads inspectAds(YMRVastModel& root, const AdInspector& inspector) {
  Ads inspected;
  const Models ads = root.sequencedAdModels();
  Models standalone;
  addStandalone(root, standalone);
  // A fall-back that was split is played as its children, which are listed nowhere.
  std::map<const YMRVastModel*, Inspection::Ad> played;
  for (YMRAdQueue queue(root); !queue.isEmpty();) {
    auto ad = inspector.takeNext(queue);
    ad.isShown = !ad.prepared.failure;
    if (ad.isShown) ++inspected.shownCount;
    const auto* model = ad.model.get();
    played.emplace(model, std::move(ad));
  }
  const auto list = [&](const Models& models, std::vector<Inspection::Ad>& into) {
    for (const auto& model : models) {
      auto found = played.extract(model.get());
      into.push_back(found ? std::move(found.mapped()) : inspector.inspect(model));
    }
  };
  list(ads, inspected.ads);
  list(standalone, inspected.standalone);
  putShownFirst(inspected.ads, inspected.standalone);
  return inspected;
}

using Source = std::variant<std::optional<NSURL>, VASTDocument>;

// Resolves a tag or a document; runs the loop until that is done.
std::shared_ptr<YMRVastModel> resolve(SKVAST2ParserOptions options, const Source& source, PlainRunLoop& loop) {
  std::shared_ptr<YMRVastModel> result;
  SKVAST2Parser parser(std::move(options));
  const auto completed = [&](std::shared_ptr<YMRVastModel> model) {
    result = std::move(model);
    loop.stop();
  };
  if (const auto* document = std::get_if<VASTDocument>(&source)) {
    parser.parseWithData(*document, completed);
  } else {
    parser.parseWithUrl(std::get<std::optional<NSURL>>(source), completed);
  }
  loop.run();
  return result;
}

YMRTagProfile otherThan(YMRTagProfile profile) {
  return profile == YMRTagProfileExact ? YMRTagProfileBroad : YMRTagProfileExact;
}

// What both profiles make of it; `options` are those of the one that is asked for.
Ads inspectBoth(const Options& all, SKVAST2ParserOptions options, const Source& source,
                std::shared_ptr<YMRVastModel>& model, PlainRunLoop& loop) {
  const AdInspector inspector(all);
  model = resolve(options, source, loop);
  Ads inspected = inspectAds(*model, inspector);
  options.hopObserver = nullptr;
  options.profile = otherThan(options.profile);
  const auto otherModel = quietly(all.logLevel, [&] { return resolve(options, source, loop); });
  const Ads other = quietly(all.logLevel, [&] { return inspectAds(*otherModel, inspector); });
  for (auto* list : {&inspected.ads, &inspected.standalone}) compare(*list, options.profile, other.all());
  return inspected;
}

void inspectBreaks(Inspection& inspection, const Options& options, const SKVAST2ParserOptions& parserOptions,
                   PlainRunLoop& loop) {
  // A document can list thousands of tags that never answer.
  const auto deadline = RunLoop::main().now() + breaksTimeLimit;
  for (const auto& listed : inspection.schedule->breaks) {
    Inspection::Break one{listed, {}};
    if (one.listed.refusal.empty() && RunLoop::main().now() > deadline) {
      one.listed.refusal = "not looked at, since those before it took five minutes";
    }
    if (one.listed.refusal.empty()) {
      SKVAST2ParserOptions own = parserOptions;
      own.followsWrappers = listed.followsRedirects;
      own.allowsMultipleAds = listed.allowsMultipleAds;
      std::shared_ptr<YMRVastModel> model;
      const Source source = listed.document ? Source(*listed.document) : Source(listed.tag);
      auto inspected = inspectBoth(options, own, source, model, loop);
      inspection.shownCount += inspected.shownCount;
      one.ads = std::move(inspected.ads);
    }
    inspection.breaks.push_back(std::move(one));
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
  std::optional<VASTDocument> first;
  if (document) first = documentOf(document->bytes(), options.profile);
  if (document) documents.emplace_back(options.source, *document);

  SKVAST2ParserOptions parserOptions;
  parserOptions.profile = options.profile;
  parserOptions.loader = std::make_shared<FetchOnce>();
  const SKVAST2ParserOptions ofBreaks = parserOptions;
  parserOptions.hopObserver = [&](const VASTHop& hop) {
    inspection.hops.push_back(hopOf(hop));
    if (hop.error || hop.body.empty()) return;
    const VASTDocument fetched = documentOf(hop.body, options.profile);
    inspection.hops.back().reason = faultOf(fetched, options.profile);
    if (!first) first = fetched;
    if (options.validate) documents.emplace_back(hop.url, fetched);
  };
  const Source source = document ? Source(*document) : Source(options.url);
  auto inspected = inspectBoth(options, parserOptions, source, inspection.model, loop);
  if (first && VMAPDocument::isVMAP(*first)) {
    inspection.schedule = VMAPDocument::read(first->bytes(), inspection.scheduleProblem);
    if (inspection.schedule) inspectBreaks(inspection, options, ofBreaks, loop);
    return inspection;
  }
  inspection.ads = std::move(inspected.ads);
  inspection.standalone = std::move(inspected.standalone);
  inspection.shownCount = inspected.shownCount;
  if (document) inspection.fault = faultOf(*first, options.profile);
  if (options.validate) inspection.validation = validate(documents, options);
  return inspection;
}
