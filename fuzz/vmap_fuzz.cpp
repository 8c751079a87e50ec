// Any document as a schedule: what is read of it keeps its promises, and its inline documents are read by both
// profiles.
#include <cstdint>
#include <cstdlib>

#include "VAST/Parser/VMAPDocument.h"
#include "VAST/Parser/YMRVastModel.h"

namespace {

void require(bool holds) {
  if (!holds) std::abort();
}

void ask(const VASTDocument& document, YMRTagProfile profile) {
  const auto model = std::make_shared<YMRVastModel>(profile);
  model->addVASTDocument(document);
  for (const auto& ad : model->sequencedAdModels()) {
    ad->mediaFiles();
    ad->trackingEvents();
    ad->notRun();
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  std::string problem;
  const auto document = VMAPDocument::read(std::as_bytes(std::span(data, size)), problem);
  require(document.has_value() == problem.empty());
  if (!document) return 0;
  for (const auto& each : document->breaks) {
    if (!each.refusal.empty()) continue;
    require(each.tag.has_value() != each.document.has_value());
    require(!each.tag || each.tag->isHTTP());
    require(!(each.second && each.percent));
    require((each.place == VMAPBreak::Place::inProgramme) == (each.second || each.percent));
    require(!each.percent || (*each.percent > 0 && *each.percent < 100));
    for (const auto& [event, urls] : each.trackingEvents) {
      for (const auto& url : urls) require(url.isHTTP());
    }
    if (!each.document) continue;
    ask(*each.document, YMRTagProfileExact);
    ask(*each.document, YMRTagProfileBroad);
  }
  return 0;
}
