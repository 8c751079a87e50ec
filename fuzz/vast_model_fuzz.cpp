// A chain of up to five documents, separated by a zero byte, into both models, read by both profiles, and every
// question that they answer.
#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <string_view>

#include "VAST/Parser/SKVASTModel.h"
#include "VAST/Parser/YMRVastModel.h"

namespace {

void ask(YMRVastModel& model) {
  model.vastVersion();
  model.redirectUrl();
  model.adTitle();
  model.adDescription();
  model.mediaFiles();
  model.trackingEvents();
  model.impressions();
  model.errors();
  model.progress();
  model.skipOffset();
  model.notRun();
  const auto& rules = model.rules();
  for (std::uint32_t error = 0; error <= SKVASTErrorAdAlreadyPlaying; ++error) {
    const auto code = rules.codeOf(model, static_cast<SKVASTError>(error));
    if (code && (*code < 100 || *code > 999)) std::abort();
  }
  rules.whyNoFilm(model);
  YMRTagRules::Files files;
  for (const auto& file : model.mediaFiles()) {
    if (rules.takes(*file)) files.push_back(file);
  }
  if (!files.empty() && !rules.choose(files, 1920 * 1080, std::nullopt)) std::abort();
}

void ask(SKVASTModel& model) {
  model.vastVersion();
  model.errors();
  model.impressions();
  model.trackingEvents();
  model.clickThrough();
  model.clickTracking();
  model.mediaFiles();
  model.adTitle();
  model.adDescription();
}

}  // namespace

static void read(YMRTagProfile profile, const std::uint8_t* data, std::size_t size) {
  const auto model = std::make_shared<YMRVastModel>(profile);
  SKVASTModel queries;
  const auto* const end = data + size;
  const auto* start = data;
  for (int depth = 0; depth < 5 && start <= end; ++depth) {
    const auto* const stop = std::find(start, end, 0);
    const auto bytes = std::as_bytes(std::span(start, stop));
    // As wrappers are resolved: a document goes to the model that the ad before it belongs to.
    const auto ads = model->sequencedAdModels();
    ads.front()->passWrapper();
    ads.front()->addVASTDocument(VASTDocument(std::vector<std::byte>(bytes.begin(), bytes.end())));
    queries.addVASTDocument({bytes.begin(), bytes.end()});
    start = stop + 1;
  }
  ask(*model);
  for (const auto& ad : model->sequencedAdModels()) {
    ask(*ad);
    while (!ad->sequencedAdModelsOfStandaloneAd().empty()) {
    }
  }
  for (const auto& ad : model->standaloneAdModels()) ask(*ad);
  ask(queries);
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  read(YMRTagProfileExact, data, size);
  read(YMRTagProfileBroad, data, size);
  return 0;
}
