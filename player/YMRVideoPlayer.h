#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "ads/YMRAdSchedule.h"
#include "platform/Export.h"
#include "platform/avfoundation/AVURLAsset.h"
#include "platform/uikit/UIViewController.h"
#include "player/YMRMediaItem.h"
#include "player/YMRVideoPlayerDelegate.h"
#include "subtitles/YMRSubtitleConfig.h"

class YMRVideoPlayerImpl;

// The player as a host sees it: one object for one programme, full screen, told from start to end through a delegate.
//
//   UIWindow window;
//   window.setRootViewController(std::make_shared<UIViewController>());
//   window.makeKeyAndVisible();
//   auto delegate = std::make_shared<YMRVideoPlayerDelegate>();   // keep it: the player does not
//   delegate->playerDidDismiss = [] { QGuiApplication::quit(); };
//   YMRVideoPlayer player;
//   player.setDelegate(delegate);
//   player.presentWithController(window.rootViewController());
//   player.playWithMediaItem(YMRMediaItem::itemWithUrl(NSURL::URLWithString("https://example.com/film.mp4")), 0);
//
// Main thread. Everything here may be called from inside a callback, and so may the player be destroyed, which ends the
// presentation at once and without a word. A second programme needs a second player once this one has been dismissed.
//
// It may outlive the QGuiApplication, as a static player does. The end of that is the end of the presentation, and just
// as silent: media, timers and views go, what is being fetched reaches nobody, and playerDidDismiss is not told, since
// what a host's callbacks refer to has often gone by then. Who wants to hear of it dismisses before, for instance when
// QCoreApplication::aboutToQuit is emitted. From then on calls do nothing, and the player may be destroyed at any time.
// Windows, and views that a host holds, are Qt's and have to go before the application.
class YMR_API YMRVideoPlayer {
 public:
  YMRVideoPlayer();
  YMRVideoPlayer(const YMRVideoPlayer&) = delete;
  YMRVideoPlayer& operator=(const YMRVideoPlayer&) = delete;
  ~YMRVideoPlayer();

  // Held weakly; nil for none.
  std::shared_ptr<YMRVideoPlayerDelegate> delegate() const;
  void setDelegate(std::weak_ptr<YMRVideoPlayerDelegate> delegate);
  // The ad breaks to play; nil for none, and at first. The player takes a copy, which adSchedule() gives: it shares its
  // lists with the host's, loses each break when it starts, and has none marked as played. Set it before the programme
  // is asked for; a schedule that comes later counts from the next choice of a break on, and a mid-roll that was chosen
  // before is due at the later one's offset.
  const std::shared_ptr<YMRAdSchedule>& adSchedule() const;
  void setAdSchedule(const std::shared_ptr<YMRAdSchedule>& schedule);
  // The external subtitle tracks and their look; nil for none, and at first. Looks count at once, tracks with the next
  // start or switch, so set it before the programme is asked for. nil leaves the track that is shown and its look, and
  // no other can be switched to. The configuration is held and not copied; several players may have the same one.
  //
  // No file is looked at here. When a track is chosen, one that can't be read or is not UTF-8 leaves the track before
  // it (setLoadDidFail() of the configuration tells); text of another form than SRT is taken for SRT, and shows what
  // that happens to give.
  const std::shared_ptr<YMRSubtitleConfig>& subtitle() const;
  void setSubtitle(const std::shared_ptr<YMRSubtitleConfig>& subtitle);
  // A view of the host's over the picture and under all that the player draws, filling the screen. Taken up when a
  // programme begins; nil for none.
  const std::shared_ptr<UIView>& overlayView() const;
  void setOverlayView(std::shared_ptr<UIView> view);

  // Shows the player over the window of `controller`, fading in. Without it the programme plays unseen. Nothing after
  // dismissal.
  void presentWithController(const std::shared_ptr<UIViewController>& controller);

  // Loads the programme and starts it when it is ready, with the picture at `startPosition`; in seconds, beyond the
  // media's ends the nearest end. What can't be played is reported through videoOnError. Called again, the new
  // programme takes the old one's place when it is ready. The item is not to be changed until then.
  void playWithMediaItem(const std::shared_ptr<YMRMediaItem>& mediaItem, std::int64_t startPosition);
  // The same with an asset of the host's; the item's address is not used.
  void playWithMediaItem(const std::shared_ptr<YMRMediaItem>& mediaItem, const std::shared_ptr<AVURLAsset>& asset,
                         std::int64_t startPosition);
  // Starts the presentation from its beginning, after its end too: all is told once more, and the breaks that are left
  // play. Playing calls it by itself; it is here for hosts that drive the player themselves. Nothing while the
  // programme runs, or an ad break does.
  void start();
  // Stops everything and takes the player off the screen. playerWillDismiss comes first, playerDidDismiss last. Called
  // once more it tells nobody, and takes the screen off again when the host has shown it after the dismissal.
  void dismiss();

  // Seconds of the programme, from its start position on; NaN before it is loaded and after dismissal.
  double currentPosition() const;
  // Seconds; 0 before the programme is loaded and after dismissal, NaN when unknown or endless.
  double videoDuration() const;

  // Shows the track with this index of the present configuration in place of the one before, with the next second of
  // the programme at the latest. Nothing when there is none of that index; a track that can't be read leaves the one
  // before. Waits for the file, unless the configuration loads in the background. Nothing after dismissal.
  void switchSubtitle(std::int32_t index);
  // Shows or hides the external subtitles; shown at first. Whatever track is chosen stays so.
  void toggleSubtitle(bool visible);

  // Language tags (BCP 47) of the subtitle and caption renditions in the media, in their order. Empty without any.
  std::vector<std::string> getClosedCaptionLanguageList() const;
  // Shows the first rendition with exactly this tag; false, and nothing changes, when there is none.
  bool setClosedCaption(const std::string& languageTag);
  // The tag of the rendition that is shown; empty when none is, or it has no tag.
  std::string currentClosedCaption() const;
  // Limits the captions menu to the languages of getClosedCaptionLanguageList() at this moment.
  void disableAutoClosedCaptionOptions();

  // The machinery behind, which this class only forwards to. Never nil.
  const std::shared_ptr<YMRVideoPlayerImpl>& ymrPlayer() const { return ymrPlayer_; }

 private:
  const std::shared_ptr<YMRVideoPlayerImpl> ymrPlayer_;
};
