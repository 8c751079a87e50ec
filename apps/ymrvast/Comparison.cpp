#include "apps/ymrvast/Comparison.h"

#include <algorithm>
#include <map>
#include <string>

#include "ads/core/YMRPlayerErrorHandler.h"

namespace {

using Ad = Inspection::Ad;
using Positions = std::vector<std::size_t>;

bool beginsWith(const Positions& whole, const Positions& part) {
  return part.size() <= whole.size() && std::equal(part.begin(), part.end(), whole.begin());
}

// The other profile's ads by the `Ad` elements that they stand for: a document may have thousands.
class Others {
 public:
  explicit Others(const std::vector<const Ad*>& ads) {
    std::size_t shown = 0;
    for (std::size_t number = 0; number < ads.size(); ++number) {
      byPlace_[ads[number]->model->adPositions()].push_back({ads[number], number, shown});
      if (ads[number]->isShown) ++shown;
    }
  }

  struct Entry {
    const Ad* ad = nullptr;
    std::size_t number = 0;       // in their order
    std::size_t shownBefore = 0;  // how many of those before it are shown
  };

  // What stands for the same elements; else for what they are in, or what is in them, best one that is shown. Without
  // an ad when nothing does.
  const Entry& counterpart(const Positions& place) {
    const auto [found, isNew] = found_.try_emplace(place);
    if (isNew) found->second = find(place);
    return found->second;
  }

 private:
  Entry find(const Positions& place) const {
    if (const auto same = byPlace_.find(place); same != byPlace_.end()) return same->second.front();
    Entry best;
    const auto consider = [&](const std::vector<Entry>& entries) {
      for (const auto& each : entries) {
        const bool isBetter =
            !best.ad || (each.ad->isShown == best.ad->isShown ? each.number < best.number : each.ad->isShown);
        if (isBetter) best = each;
      }
    };
    for (Positions outer = place; !outer.empty();) {
      outer.pop_back();
      if (const auto found = byPlace_.find(outer); found != byPlace_.end()) consider(found->second);
    }
    for (auto inner = byPlace_.upper_bound(place); inner != byPlace_.end() && beginsWith(inner->first, place);
         ++inner) {
      consider(inner->second);
    }
    return best;
  }

  std::map<Positions, std::vector<Entry>> byPlace_;
  std::map<Positions, Entry> found_;
};

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

}  // namespace

void compare(std::vector<Ad>& ads, YMRTagProfile otherProfile, const std::vector<const Ad*>& others) {
  Others known(others);
  std::size_t shown = 0;
  for (auto& ad : ads) {
    const auto& [other, place, shownBefore] = known.counterpart(ad.model->adPositions());
    const auto here = shownFilm(ad), there = other ? shownFilm(*other) : std::nullopt;
    ad.other = {otherProfile, there, ""};
    if (here) ++shown;
    if (here == there) {
      const bool bothFail = ad.failure() && other && other->failure();
      if (bothFail && other->prepared.errorCode() != ad.prepared.errorCode()) {
        ad.other.why = nameOf(otherProfile) + " shows nothing either, and tells it as " + other->prepared.errorCode();
      }
      if (!here || !ad.model->adSequence()) continue;
      const auto number = shownBefore + 1;
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
