#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "VAST/Parser/VASTDocument.h"
#include "ads/YMRAdPlayer.h"
#include "ads/YMRNextFilm.h"
#include "ads/YMRSkipButton.h"
#include "ads/core/SKVASTViewControllerDelegate.h"
#include "ads/core/YMRPreparedAd.h"
#include "platform/Export.h"
#include "platform/foundation/NSTimer.h"
#include "platform/foundation/NSURL.h"
#include "platform/uikit/UIActivityIndicatorView.h"
#include "platform/uikit/UIViewController.h"
#include "platform/uikit/UIWakefulness.h"
#include "vastscreen/SKVASTControls.h"
#include "vastscreen/SKVASTControlsTarget.h"

class SKReachability;
class SKVASTEventProcessor;
enum SKVASTTrackingEvent : std::uint32_t;
class YMRVastModel;

// A full screen that plays one VAST ad by itself, without a programme: load a tag, wait for vastReady, play.
//
// Of a pod it plays the first ad that has a film; stand-alone ads take the place of those that brought nothing, as in a
// break.
//
// play() starts the film and presents the screen, which fades in over the film's first pictures; a small wheel turns
// while those are awaited. The ad begins, with impressions and start, when the screen is fully there; four seconds
// later the controls show for the first time, unless the ad may be skipped by then. After the end the last picture
// stays until the viewer leaves or plays it again. The film has an advertisement's bounds, and from play() on
// vastVideoLoadTimeout() seconds for its first picture. Out of sight it is paused, and resumed when it is seen again,
// unless it is over.
//
// Main thread. Always held by shared_ptr: by the host and, while it is presented, by who presents it. Destroyed before
// that, it is silent. So it is at the end of the QGuiApplication, which it may outlive: load and presentation end
// without a word and untracked, from then on calls do nothing, and it may be destroyed at any time. The host may do
// anything from inside each of its callbacks.
//
// Every load that is not ignored ends in vastReady or in one vastError. Every play ends in one vastError, or is
// presented; then it ends in one vastDidDismissFullScreen, with at most one vastError before or right after it. The
// error URLs of an ad that fails are requested once.
//
// The film of an ad that is loaded while another one plays is made ready as that one's end comes near, and kept for ten
// seconds after its dismissal. One that is never played costs one request.
//
// The viewer's remote: Menu closes, Play/Pause acts at once, and each button but Menu brings the controls up. When an
// ad may be skipped, Enter does that while the controls are hidden, and Up hides them; skipped, it counts as having
// ended, without a completion, and the screen closes. Taps on the picture do nothing: the screen installs no recogniser
// for them, a host may add its own to view() that calls handleTouches().
class YMR_API SKVASTViewController final : public UIViewController,
                                           public SKVASTControlsTarget,
                                           public YMRAdPlayer::Listener {
 public:
  // `viewController` is who presents the screen; it is held weakly, as the delegate is. Either may be nil: without the
  // first nothing can be presented, without the second nobody is told.
  static std::shared_ptr<SKVASTViewController> initWithDelegate(std::weak_ptr<SKVASTViewControllerDelegate> delegate,
                                                                std::weak_ptr<UIViewController> viewController);
  // The same without either: loads are answered to a delegate that is set later, and nothing can be presented.
  static std::shared_ptr<SKVASTViewController> init();
  ~SKVASTViewController() override;

  std::shared_ptr<SKVASTViewControllerDelegate> delegate() const { return delegate_.lock(); }
  // Takes effect at once, also for the ad on screen; nil for none.
  void setDelegate(const std::weak_ptr<SKVASTViewControllerDelegate>& delegate);

  // How the documents of the loads to come are read, and what their trackers are told when. Exact at first.
  YMRTagProfile tagProfile() const { return tagProfile_; }
  void setTagProfile(YMRTagProfile profile) { tagProfile_ = profile; }

  // Loads an ad, which takes the place of one that was loaded before, also when it fails, for want of a network
  // (SKVASTErrorNoInternet) too; an ad on screen plays on. Ignored while a load is in progress. A URL of nil is a tag
  // that can't be fetched.
  void loadVideoWithURL(const std::optional<NSURL>& url);
  // The same for a document that the host has; what its wrappers lead to is fetched.
  void loadVideoWithData(const VASTDocument& document);

  // Presents the screen with the ad loaded last. An ad that was on screen before may be shown again, but its
  // impressions, start and completion are tracked once in its life. Refused with one vastError:
  // SKVASTErrorPlayerNotReady without an ad, SKVASTErrorAdAlreadyPlaying while one is on screen, SKVASTErrorNoInternet
  // without a network, SKVASTErrorPlayback when there is nobody to present it, in a window and with nothing over it.
  void play();
  // Pauses the ad; nothing when none is playing. Before the ad has begun it is not tracked, and undone when the screen
  // is there.
  void pause() override;
  // Plays a paused ad on, and one that is over from its beginning; begins it when the screen is not there yet. Nothing
  // before play() and while it is playing.
  void resume() override;
  // Whether it is to run: true also while it waits for data; false without a presentation.
  bool isPlaying() const override;
  // The viewer wants to know more: requests the ad's click-tracking URLs and, when the ad says where a click leads,
  // tells the delegate.
  void info() override;
  // Ends the presentation; nothing when there is none. A load goes on.
  void close() override;
  // Shows the controls, once the ad has begun.
  void handleTouches();
  std::shared_ptr<UIView> view() override { return UIViewController::view(); }

  // Whether an ad that offers it may be skipped; true at first. Counts from the next second of the ad on.
  bool allowsSkipping() const { return allowsSkipping_; }
  void setAllowsSkipping(bool allows) { allowsSkipping_ = allows; }

  // Of the ad on screen, else of the one loaded last; nil without.
  std::optional<NSURL> clickThrough() const;
  std::shared_ptr<SKVASTEventProcessor> eventProcessor() const;
  // nil while nothing is presented.
  std::shared_ptr<AVPlayer> avplayer() const { return film_ ? film_->player() : nullptr; }
  std::shared_ptr<AVPlayerLayer> avplayerLayer() const { return film_ ? film_->layer() : nullptr; }
  // In the view; nil until that is made.
  const std::shared_ptr<SKVASTControls>& controls() const { return controls_; }
  const std::shared_ptr<YMRSkipButton>& skipButton() const { return skipButton_; }
  // nil: none is installed.
  std::shared_ptr<UIGestureRecognizer> touchGestureRecognizer() const { return nullptr; }
  // The delegate's last vastError in words, with the URL when a server or a redirect is to blame for a
  // document that did not come; empty before the first.
  const std::string& errorMessage() const { return errorMessage_; }
  // Empty, with memory reserved for twenty values. Nothing in the player writes or reads it.
  std::vector<double>& videoHangTest() { return videoHangTest_; }

  // Whether the media-file picker's probe host can be reached, by what is known without waiting: true until it is
  // known. Any thread.
  bool networkCurrentlyReachable() const { return *network_ != Network::unreachable; }
  // Watches that host's route; nil when the picker's host has no name, which counts as no network.
  const std::shared_ptr<SKReachability>& reachability() const { return reachability_; }

  // True only when the host supports both landscape orientations.
  bool shouldAutorotate() const override;
  UIInterfaceOrientation preferredInterfaceOrientationForPresentation() const override;
  bool prefersStatusBarHidden() const override { return true; }

 protected:
  void loadView() override;
  void viewDidLoad() override;
  void viewDidAppear(bool animated) override;
  void viewWillDisappear(bool animated) override;
  bool pressesBegan(const UIPress& press) override;
  void pressesEnded(const UIPress& press) override;

 private:
  enum class Network { unknown, reachable, unreachable };
  enum class Stage { idle, presented, closing, over };
  using Source = std::variant<std::optional<NSURL>, VASTDocument>;
  // An ad that was loaded, and what has been told and tracked of it, however often it is presented.
  struct Ad {
    YMRPreparedAd prepared;
    std::optional<NSURL> clickThrough;
    std::vector<SKVASTUrlWithId> clickTracking;
    std::shared_ptr<SKVASTEventProcessor> events;
    bool hasBegun = false;
    bool hasShown = false;
    bool hasEnded = false;  // by its completion or by being skipped: one of them is tracked
    bool hasFailed = false;
    bool wasMadeReady = false;  // its film, while another ad played
  };

  SKVASTViewController(std::weak_ptr<SKVASTViewControllerDelegate> delegate,
                       std::weak_ptr<UIViewController> viewController);
  std::shared_ptr<SKVASTViewController> own();
  void startReachability();
  void addObservers();
  void removeObservers();
  void applicationDidBecomeActive();
  void applicationDidEnterBackground();
  void applicationWillTerminate();

  void loadVideoUsingSource(const Source& source);
  void vastDidLoad(YMRVastModel& model);

  const Ad* current() const { return (shown_ ? shown_ : ad_).get(); }

  // Whether the presentation of this number is still the one at hand: to be asked after each callback.
  bool isAtHand(unsigned number) const { return stage_ == Stage::presented && number == presentation_; }
  // Whether the presenting controller is in a window and free.
  bool canBePresented() const;
  void presentPlayer();
  void showAndPlayVideo();
  void playFilm();
  // What the trackers hear at this moment of the ad's, by its profile.
  static void adDidReach(YMRTagRules::Moment moment, const Ad& ad);
  void adDidShow();
  // A pause or a resume of the ad on screen, unless it has not begun for its trackers.
  void trackViewer(SKVASTTrackingEvent event);
  // While an ad is not known yet, without one.
  VASTMacroValues macroValues(const Ad* ad = nullptr) const;
  // Makes the film of an ad that waits ready when it is time, at this second of the one that plays.
  void prepareNextFilm(double second);
  void stopTimers();
  void videoLoadDidTimeOut();
  void moviePlayBackDidFinish(const std::optional<NSError>& error);
  // Nothing is reported from here while the ad plays, and no recogniser is made.
  void updatePlayedSeconds() {}
  void setUpTapGestureRecognizer() {}
  void addSkipButton();
  // At each tick of the film on the screen, in seconds; the duration is not a number while it is unknown.
  void offerSkipping(double second, double duration);
  void skip();
  // Whether a press that goes down means the skip button, which acts when the press comes up.
  bool skipTakesPress(UIPressType type);
  // Requests the error URLs of an ad, once in its life.
  static void reportFailure(Ad& ad, const std::string& code);
  void refuseWithoutNetwork();
  void tellError(SKVASTError error, const std::string& reason = "");

  void adPlayerTick(const CMTime& time) override;
  void adPlayerDidChange(const std::string&, const std::shared_ptr<NSObject>&, const NSKeyValueChange&) override {}
  void adPictureDidArrive() override;
  void adDidPLayToEndTime() override { moviePlayBackDidFinish(std::nullopt); }
  void adItemDidFail(const NSError& error) override { moviePlayBackDidFinish(error); }

  std::weak_ptr<SKVASTViewControllerDelegate> delegate_;
  const std::weak_ptr<UIViewController> viewController_;
  std::string errorMessage_;
  std::shared_ptr<SKReachability> reachability_;
  // Shared with the blocks that other threads call.
  const std::shared_ptr<std::atomic<Network>> network_;
  bool isObserving_ = false;
  bool isLoading_ = false;
  YMRTagProfile tagProfile_ = YMRTagProfileExact;
  std::shared_ptr<Ad> ad_;  // ready to be played
  YMRNextFilm nextFilm_;    // of it
  std::shared_ptr<NSTimer> nextFilmTimer_;

  // The parts of the view.
  std::shared_ptr<UIView> picture_;
  std::shared_ptr<UIActivityIndicatorView> indicator_;
  std::shared_ptr<SKVASTControls> controls_;
  std::shared_ptr<YMRSkipButton> skipButton_;

  // The presentation.
  Stage stage_ = Stage::idle;
  unsigned presentation_ = 0;  // counts them
  std::shared_ptr<Ad> shown_;
  std::unique_ptr<YMRAdPlayer> film_;
  bool isShown_ = false;  // the viewer sees the film
  bool hasPicture_ = false;
  bool isOver_ = false;  // the film is at its end
  bool allowsSkipping_ = true;
  bool skipIsDown_ = false;  // its press has begun
  std::shared_ptr<NSTimer> playbackTimer_;
  std::shared_ptr<NSTimer> initialDelayTimer_;
  std::shared_ptr<NSTimer> videoLoadTimeoutTimer_;
  UIWakefulness wakefulness_;
  std::vector<double> videoHangTest_;
};
