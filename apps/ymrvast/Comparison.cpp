#include "apps/ymrvast/Comparison.h"

#include <algorithm>
#include <string>

#include "ads/core/YMRPlayerErrorHandler.h"

namespace {

using Ad = Inspection::Ad;
using Positions = std::vector<std::size_t>;

bool beginsWith(const Positions& whole, const Positions& part) {
  return part.size() <= whole.size() && std::equal(part.begin(), part.end(), whole.begin());
}

// What stands for the same `Ad` elements; else for what they are in, or what is in them, best one that is shown.
const Ad* counterpart(const Ad& ad, const std::vector<const Ad*>& others) {
  const auto& place = ad.model->adPositions();
  const Ad* best = nullptr;
  for (const auto* other : others) {
    const auto& there = other->model->adPositions();
    if (there == place) return other;
    if (!beginsWith(place, there) && !beginsWith(there, place)) continue;
    if (!best || (!best->isShown && other->isShown)) best = other;
  }
  return best;
}

std::optional<NSURL> shownFilm(const Ad& ad) {
  return ad.isShown ? ad.picked() : std::nullopt;
}

std::string nameOf(YMRTagProfile profile) {
  return std::string(YMRTagProfileNames[profile]);
}

// Why the profile shows nothing of an ad.
std::string reasonFor(const Ad& ad) {
  const auto failure = ad.failure();
  const auto& split = *ad.model;
  if (!split.vastDocumentArray().empty() && split.adPositions().size() < split.vastDocumentArray().size()) {
    const auto lost = split.rules().lostAdCount(split.vastDocumentArray().back());
    return lost == 0 ? "its document has stand-alone ads only"
                     : "its document has several ads, " + std::to_string(lost) + " of them without an id";
  }
  if (!split.vastError()) return "it is a stand-alone ad without a pod";
  if (!failure) return "it is a fall-back that is not needed";
  if (!ad.reason.empty()) return ad.reason;
  return YMRPlayerErrorHandler::messageOf(*failure, ad.prepared.reason) + " (VAST code " + ad.prepared.errorCode() +
         ")";
}

std::string whyNothing(YMRTagProfile profile, const Ad* ad) {
  const std::string name = nameOf(profile) + " shows nothing: ";
  if (ad) return name + reasonFor(*ad);
  return name + (profile == YMRTagProfileExact ? "an ad without an id, among several, is left out"
                                               : "a wrapper lets only one ad, or no other wrapper, come");
}

std::size_t shownBefore(const Ad& ad, const std::vector<const Ad*>& all) {
  const auto place = std::ranges::find(all, &ad);
  return static_cast<std::size_t>(std::count_if(all.begin(), place, [](const Ad* each) { return each->isShown; }));
}

}  // namespace

void compare(std::vector<Ad>& ads, YMRTagProfile otherProfile, const std::vector<const Ad*>& others) {
  std::size_t shown = 0;
  for (auto& ad : ads) {
    const Ad* other = counterpart(ad, others);
    const auto here = shownFilm(ad), there = other ? shownFilm(*other) : std::nullopt;
    ad.other = {otherProfile, there, ""};
    if (here) ++shown;
    if (here == there) {
      const bool bothFail = ad.failure() && other && other->failure();
      if (bothFail && other->prepared.errorCode() != ad.prepared.errorCode()) {
        ad.other.why = nameOf(otherProfile) + " shows nothing either, and tells it as " + other->prepared.errorCode();
      }
      if (!here || !ad.model->adSequence()) continue;
      const auto number = shownBefore(*other, others) + 1;
      if (number == shown) continue;
      ad.other.why = nameOf(otherProfile) + " plays it as number " + std::to_string(number) +
                     ", since exact takes the numbers of a pod for text";
      continue;
    }
    if (here && there) {
      ad.other.why =
          "exact takes an MP4 kind nearest to the screen's size, broad any kind of film, and of one size the "
          "highest bitrate that the connection carries";
    } else {
      ad.other.why = here ? whyNothing(otherProfile, other) : whyNothing(ad.model->rules().profile(), &ad);
    }
  }
}
