#pragma once

#include <memory>
#include <optional>

#include "VAST/Parser/VASTMacros.h"
#include "VAST/Parser/VASTOffset.h"
#include "ads/core/YMRAdQueue.h"
#include "ads/core/YMRPreparedAd.h"
#include "platform/Export.h"
#include "platform/avfoundation/AVPlayerItem.h"

// Makes the film of the ad that is next ready while another one plays, so that no gap is between the two: it is asked
// for, and decoded up to its first picture, in an engine of its own. One film at most. Nobody hears of it: what becomes
// of the film, a failure too, its item tells when the ad has its turn, as it would without. Main thread.
class YMR_API YMRNextFilm {
 public:
  // Whether it is time for it when `playing` has come to `second`: when less than a quarter is left to play, or three
  // seconds until the ad may be skipped (nil: never); at once when a quarter is less than that, or the length unknown.
  // Not while the film that plays needs the connection for itself.
  static bool isDue(const AVPlayerItem& playing, double second, const std::optional<VASTOffset>& skipOffset);

  // Makes the first film of these ads ready, picked without a word in the log. `values` are those of the playing ad.
  void prepare(const YMRAdQueue& ads, const VASTMacroValues& values);
  // The same for an ad that has a film.
  void prepare(const YMRPreparedAd& ad, VASTMacroValues values);

  // How a film is to be picked at its turn: as its profile does, but by what the connection had shown when the film
  // was made ready, so that it is that one again. nil when none has been.
  YMRPreparedAd::Pick pick(YMRTagProfile profile) const;
  // What an ad that has its turn is to play: the film that was made ready, when it is the ad's, else one that has yet
  // to be asked for. Nothing is ready afterwards.
  std::shared_ptr<AVURLAsset> take(const YMRPreparedAd& ad, const VASTMacroValues& values);
  void letGo() { ready_.reset(); }

 private:
  struct Ready {
    NSURL url;  // as the document gives it
    std::optional<double> kilobits;
    std::shared_ptr<AVURLAsset> film;
  };
  std::optional<Ready> ready_;
};
