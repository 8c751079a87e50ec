#pragma once

#include <functional>
#include <memory>
#include <string>

#include "ads/YMRAd.h"
#include "platform/foundation/NSError.h"

// What a host wants to hear from its player. Fill in the members you want; an empty one is never called. The player
// holds the struct weakly: keep it in a shared_ptr of your own for as long as it shall be told.
//
// All calls come on the main thread. Times and durations are seconds; NaN where they are not known, as the duration of
// a live stream. `ad` is the break at hand. A callback may do anything with the player: call it, dismiss it, give it
// another delegate or destroy it. What a callback throws is caught and logged.
struct YMRVideoPlayerDelegate {
  using Ad = std::shared_ptr<YMRAd>;

  // The programme. Where there are two for one event, the shorter one comes first.
  // It starts to play, also again after a pause or an ad break.
  std::function<void()> videoOnPlay;
  std::function<void(double time, double duration)> videoOnPlayDuration;
  // It halts: by the viewer, for an ad break, for want of data, at its end.
  std::function<void(double time)> videoOnPause;
  std::function<void(double time, double duration)> videoOnPauseDuration;
  // Every second of it, while it plays.
  std::function<void(double time)> videoOnTime;
  std::function<void(double time, double duration)> videoOnTimeDuration;
  // Its buffer has run empty while it plays; both say the same.
  std::function<void()> videoDidBuffer;
  std::function<void()> videoOnBuffer;
  // It has jumped, and now stands at `time`.
  std::function<void(double time)> videoDidSeekTo;
  // It can't be played, or no further. The player stays on screen; to dismiss it is the host's.
  std::function<void(NSError)> videoOnError;

  // The presentation.
  // All has been shown. When set, to dismiss the player is the host's; when empty, the player does it.
  std::function<void()> videoDidPlayFinished;
  // First and last step of a dismissal. When the last is set, the player then lets go of its delegate.
  std::function<void()> playerWillDismiss;
  std::function<void()> playerDidDismiss;

  // The viewer chose a subtitle rendition in the captions menu: its language tag (BCP 47), empty when it has none.
  std::function<void(std::string language)> videoClosedCaptionDidChange;

  // An ad break: its document is about to be fetched, has been resolved, and the first of its several ads is next.
  std::function<void(Ad ad)> videoAdOnRequest;
  std::function<void(Ad ad)> videoAdOnResponse;
  std::function<void(Ad ad)> videoAdOnPodStart;
  // One ad: it starts; every second of it; it has passed its first quartile (0), its middle (1), its third quartile
  // (2); its buffer has run empty; it halts; it goes on.
  std::function<void(Ad ad)> videoAdOnStart;
  std::function<void(Ad ad, double duration, double second)> videoAdOnTime;
  std::function<void(Ad ad, int quartile, double duration)> videoAdOnPlayQuartile;
  std::function<void(Ad ad, double duration, double second)> videoAdOnBuffer;
  std::function<void(Ad ad, double duration, double second)> videoAdOnPause;
  std::function<void(Ad ad, double duration, double second)> videoAdOnPlay;
  // An ad, and the last of several ads, has been shown. The last one may have been skipped.
  std::function<void(Ad ad)> videoAdOnComplete;
  std::function<void(Ad ad)> videoAdOnPodComplete;
  // The viewer has skipped an ad, of which there is then no completion. What comes next follows by itself: a host that
  // leaves this empty, as it starts, misses nothing.
  std::function<void(Ad ad)> videoAdOnSkip;
  // Fetching or playing failed: in words, which name the URL when a server or a redirect is to blame for a document
  // that did not come; then with a code (YMRVastError).
  std::function<void(Ad ad, std::string message)> videoAdOnError;
  std::function<void(Ad ad, int code, std::string message)> videoAdOnErrorDesc;
};
