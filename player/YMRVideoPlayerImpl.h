#pragma once

#include <atomic>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "VAST/Parser/VASTDocument.h"
#include "VAST/YMRVastError.h"
#include "ads/YMRAdContainerView.h"
#include "ads/YMRAdPlayer.h"
#include "ads/YMRAdSchedule.h"
#include "ads/YMRNextFilm.h"
#include "ads/core/YMRAdQueue.h"
#include "platform/Export.h"
#include "platform/avfoundation/AVPlayer.h"
#include "platform/avkit/AVPlayerViewController.h"
#include "platform/foundation/NSNotificationCenter.h"
#include "platform/foundation/NSObject.h"
#include "platform/foundation/NSTimer.h"
#include "platform/uikit/UIGestureRecognizer.h"
#include "player/YMRMediaItem.h"
#include "player/states/YMRAbstractPlayerState.h"
#include "player/states/YMRPlayerStateHub.h"

class ASBPlayerScrubbing;
class ASBPlayerSubtitling;
class SKVASTEventProcessor;
class YMRItemPreparation;
class YMRBreakTracker;
class YMRSubtitleConfig;
class YMRSubtitleStage;
class YMRVastModel;

// Where the presentation stands with its ads.
enum YMRAdState : std::int32_t {
  YMRAdStateNone = 0,
  YMRAdStatePreRoll = 1,   // before the programme
  YMRAdStateMidRoll = 2,   // in the programme, with mid-rolls to come
  YMRAdStatePostRoll = 3,  // after it, or in it with no mid-rolls scheduled
};

// The hub of a presentation: it owns the player view controller, the players and the current state, hears every
// observation and tick, hands each to the state first and draws its own conclusions after. Hosts use it through
// YMRVideoPlayer, whose members of the same names say what each one does.
//
// Main thread. Every call into the host's code may come back with any other call, so whoever makes one checks
// afterwards that the presentation, the player and the state are still those it began with. What arrives after
// dismissal (a loaded asset, a tick, a poll) finds nobody.
class YMR_API YMRVideoPlayerImpl final : public std::enable_shared_from_this<YMRVideoPlayerImpl>,
                                         public NSKeyValueObserver,
                                         public AVPlayerViewControllerDelegate,
                                         public YMRPlayerStateHub,
                                         public YMRAdPlayer::Listener {
 public:
  // The presentation ends, in silence, as soon as nobody outside holds what this returns, even from inside a callback,
  // and with the application object.
  static std::shared_ptr<YMRVideoPlayerImpl> init();
  ~YMRVideoPlayerImpl() override;

  // ---- What a host calls.

  std::shared_ptr<YMRVideoPlayerDelegate> delegate() const override { return delegate_.lock(); }
  void setDelegate(std::weak_ptr<YMRVideoPlayerDelegate> delegate) { delegate_ = std::move(delegate); }
  const std::shared_ptr<YMRAdSchedule>& adSchedule() const { return adSchedule_; }
  void setAdSchedule(const std::shared_ptr<YMRAdSchedule>& schedule);
  const std::shared_ptr<UIView>& overlayView() const { return overlayView_; }
  void setOverlayView(std::shared_ptr<UIView> view) { overlayView_ = std::move(view); }

  void presentWithController(const std::shared_ptr<UIViewController>& controller);
  void playWithMediaItem(const std::shared_ptr<YMRMediaItem>& mediaItem, std::int64_t startPosition);
  void playWithMediaItem(const std::shared_ptr<YMRMediaItem>& mediaItem, const std::shared_ptr<AVURLAsset>& asset,
                         std::int64_t startPosition);
  void start();
  void dismiss();
  double currentPosition() const;
  double videoDuration() const;

  const std::shared_ptr<YMRSubtitleConfig>& subtitle() const;
  void setSubtitle(const std::shared_ptr<YMRSubtitleConfig>& subtitle);
  void switchSubtitle(std::int32_t index);
  void toggleSubtitle(bool visible);
  std::vector<std::string> getClosedCaptionLanguageList() const;
  bool setClosedCaption(const std::string& languageTag);
  std::string currentClosedCaption() const;
  void disableAutoClosedCaptionOptions();

  // The player on the screen. nil only after the end of the application object, as all that has views.
  const std::shared_ptr<AVPlayerViewController>& avPlayerVC() const { return avPlayerVC_; }
  // The programme's player; nil before a programme is ready and after dismissal.
  const std::shared_ptr<AVPlayer>& vodPlayer() const { return vodPlayer_; }
  // The ad's player, a new one for every ad; nil while none is on screen.
  std::shared_ptr<AVPlayer> adPlayer() const { return adPlayer_ ? adPlayer_->player() : nullptr; }
  // What lies over the screen during an ad. nil only after the end of the application object.
  const std::shared_ptr<YMRAdContainerView>& adContainerView() const { return adContainerView_; }
  // The engine of the external subtitles, and what counts the time for labels; both follow the programme's player and
  // keep it after dismissal, without an item. Never nil.
  const std::shared_ptr<ASBPlayerSubtitling>& subtitling() const;
  const std::shared_ptr<ASBPlayerScrubbing>& scrubbing() const { return scrubbing_; }
  const std::shared_ptr<YMRAbstractPlayerState>& playerState() const { return playerState_; }
  YMRAdState adState() const { return adState_; }
  // True from an ad's start on the screen to its end. Any thread.
  bool isPlayingAd() const { return isPlayingAd_; }

  // ---- What the states use.

  bool isCurrent(const YMRAbstractPlayerState& state) const override;
  void setPlayerState(std::shared_ptr<YMRAbstractPlayerState> state) override { playerState_ = std::move(state); }
  bool isVodPlayer(const NSObject* object) const override;
  float vodPlayerRate() const override;
  double programmeTime() const override { return currentPosition(); }
  double programmeDuration() const override;
  void seekVodPlayer(const CMTime& time) override;
  bool isAdPlayer(const NSObject* object) const override;
  float adPlayerRate() const override;
  double adTime() const override;
  double adDuration() const override;
  std::shared_ptr<YMRAd> currentAdBreak() const override { return currentAdBreak_; }
  void trackEvent(std::uint32_t event) override;
  bool isPlaybackBufferEmpty(const NSObject* item) const override;
  double itemTime(const NSObject* item) const override;
  double itemDuration(const NSObject* item) const override;
  float currentVodPlayerRate() const override { return currentVodPlayerRate_; }
  void setCurrentVodPlayerRate(float rate) override { currentVodPlayerRate_ = rate; }
  std::int64_t videoStartPosition() const override { return videoStartPosition_; }
  void setVideoStartPosition(std::int64_t seconds) override { videoStartPosition_ = seconds; }
  int currentQuartile() const override { return currentQuartile_; }
  void setCurrentQuartile(int quartile) override { currentQuartile_ = quartile; }

 private:
  enum class Presentation { alive, leaving, gone };
  // How far the break has come that is under way.
  enum class BreakStage {
    none,
    fetching,  // its tag is
    fetched,   // its ads are at hand; a mid-roll's wait here for a programme that somebody has paused
    begun,     // its ads are taken, one by one
    onScreen,  // the programme has been stopped for them
  };

  // ---- Core.
  YMRVideoPlayerImpl();
  void setUp();
  void replaceMenuHandling();
  void addAdRemote();
  void followApplication();
  void handleBack(const UIGestureRecognizer& recognizer);
  void hostLetGo();
  void applicationWillTerminate();
  bool hostAnswers(std::function<void()> YMRVideoPlayerDelegate::*callback) const;
  void takeScreenAway(bool animated);
  void letGoOfPlayers();
  void _playWithMediaItem(const std::shared_ptr<YMRMediaItem>& mediaItem, const std::shared_ptr<AVURLAsset>& asset,
                          std::int64_t startPosition);
  void playWithAVMediaItem(const std::shared_ptr<AVPlayerItem>& item);
  // Observes the programme, of which nothing has been played.
  void followFromBeginning(const std::shared_ptr<AVPlayerItem>& item);
  void removeObserver();
  void observeValueForKeyPath(const std::string& keyPath, const std::shared_ptr<NSObject>& object,
                              const NSKeyValueChange& change, void* context) override;
  void programmeItemDidChange(const std::string& keyPath);
  void vodPlayerTick(const CMTime& time);
  void videoDidSeek(const NSNotification& notification);
  void videoPlayDidEnd();
  void handleStalled();
  // Media time up to which the programme is buffered, in seconds; 0 when nothing is.
  double availableDuration() const;
  void end();
  bool isProgrammeRunning() const;

  // ---- Ad breaks: which is next, and the programme around it.
  void startPreRoll();
  // Chooses the next mid-roll, which starts when it is due.
  void startMidRoll();
  // Files the breaks at shares of the programme's length, when there are any and it is known; whether it did.
  bool placeShares();
  void startPostRoll();
  // Starts the chosen mid-roll when it is due at `time`; returns whether it was.
  bool playMidRollDueAt(const CMTime& time);
  // At each tick of the programme: starts a mid-roll that is due.
  void followMidRolls(const CMTime& time);
  // Chooses anew when the programme has jumped and not all missed breaks are played.
  void programmeDidJump();
  void chooseMidRollAfterJump();
  // Tells the programme's item which breaks are to come, for the transport bar.
  void markBreaks();
  // Takes the first break out of a list; nil when it has none.
  static std::shared_ptr<YMRAd> takeFirst(YMRAdSchedule::Breaks& breaks);
  void playVastUrl(const std::optional<NSURL>& url);
  bool isBreakUnderWay() const { return breakStage_ != BreakStage::none; }
  // Whether a mid-roll is under way and somebody has paused the programme, which neither it nor its failure may start.
  bool isProgrammePausedBeforeBreak() const;
  // Leads on to what comes after the break.
  void breakDidEnd(bool seek);
  void goOnWithProgramme(bool seek);
  void goOnAtEnd();
  // Does nothing while the overlay is on the screen. With `waits` the viewer sees the programme's last picture until
  // there is more to see.
  void putOverlayOnScreen(bool waits);
  void takeOverlayOffScreen();
  void leaveBreak();
  // Stops the programme for an ad; whether that is the first one of the break on the screen.
  bool pauseVideoPlayer();
  // Starts the programme, or hands it back after a break: where it stands or, with `seek`, at lastPlayTime_.
  void resumeVideoPlayer(bool seek);
  void playVideo();
  void appDidEnterBackground();
  void appDidBecomeActive();

  // ---- The ads of a break.
  using AdSource = std::variant<std::optional<NSURL>, VASTDocument>;
  void loadVideoUsingSource(const AdSource& source);
  void vastDidLoad(YMRVastModel& model);
  // Begins with the ads of a break that has been fetched, unless they wait.
  void goOnWithBreak();
  // Takes the ads of the break one by one until one plays. When none is left it leads out of the break with `seek`, or
  // with what the last ad that failed here makes of it.
  void prepareToPlayVastAdModel(bool seek);
  // Whether the ad plays now. When it does not, its failure has been reported, but it has not been ended.
  bool prepareNextAd();
  // What the trackers hear at this moment of the ad's, by its profile.
  void adDidReach(YMRTagRules::Moment moment);
  void adDidShow();
  // Of the ad at hand, or of the break while its tag is fetched.
  VASTMacroValues macroValues() const;
  bool vastReady();
  bool playAd();
  void startAd();
  // Makes the next ad's film ready when it is time, at this second of the one that plays.
  void prepareNextFilm(double second);
  void adPlayerTick(const CMTime& time) override;
  void adPlayerDidChange(const std::string& keyPath, const std::shared_ptr<NSObject>& object,
                         const NSKeyValueChange& change) override;
  void adPictureDidArrive() override;
  void adDidPLayToEndTime() override;
  void adItemDidFail(const NSError& error) override;
  // These tell the host; whoever calls them ends the ad.
  void onVastError(SKVASTError error, const std::string& message);
  void onYMRVastError(YMRVastError error);
  // Ends the ad and leads on to the next one, or out of the break. With `shouldPassTracking` it was not completed.
  void adPlayDidEnd(bool seek, bool shouldPassTracking);
  // The first half of that; false when the host meanwhile ended the break or the presentation.
  bool endAd(bool seek, bool shouldPassTracking);
  // After the last ad of a pod; false likewise.
  bool endPod();
  void takeAdOffScreen();
  void removeObserverOfAdPlayer();
  // Whether the fetch or the ad of this number is still the one at hand: to be asked after each callback.
  bool isAtHand(unsigned number) const { return presentation_ == Presentation::alive && number == adNumber_; }

  // ---- Skipping an ad.
  void addSkipping();
  // At each tick of the ad, of this second.
  void offerSkipping(double second);
  // The viewer's press.
  void skipAd();
  // Takes the button away; for a moment its press means neither the next ad nor the programme.
  void endSkipping();

  // ---- Subtitles and captions.
  void initSubtitle();
  void loadSubtitle();
  std::shared_ptr<AVMediaSelectionGroup> legibleGroup() const;
  void playerViewController(const std::shared_ptr<AVPlayerViewController>& playerViewController,
                            const std::shared_ptr<AVMediaSelectionOption>& didSelectMediaSelectionOption,
                            const std::shared_ptr<AVMediaSelectionGroup>& inMediaSelectionGroup) override;

  // Shared by all of the parts below.
  std::weak_ptr<YMRVideoPlayerDelegate> delegate_;
  std::shared_ptr<AVPlayerViewController> avPlayerVC_;
  std::shared_ptr<AVPlayer> vodPlayer_;
  std::unique_ptr<YMRAdPlayer> adPlayer_;  // while an ad is on screen
  std::shared_ptr<YMRAbstractPlayerState> playerState_;
  Presentation presentation_ = Presentation::alive;

  // For the programme.
  std::shared_ptr<UIView> overlayView_;
  std::shared_ptr<ASBPlayerScrubbing> scrubbing_;
  std::shared_ptr<YMRSubtitleStage> subtitleStage_;
  std::shared_ptr<YMRItemPreparation> preparation_;  // while a programme is being made ready
  AVPlayerTimeObserverToken vodTimeObserver_;
  std::int64_t videoStartPosition_ = 0;
  float currentVodPlayerRate_ = 0;
  bool hasBegun_ = false;  // the programme: live streams and some containers are past 0 before they do

  // For the breaks.
  std::shared_ptr<YMRAdSchedule> adSchedule_;  // a copy that shares its lists with the host's
  YMRAdState adState_ = YMRAdStateNone;
  std::shared_ptr<YMRAd> currentAdBreak_;  // being fetched or played, or the mid-roll that is next
  std::uint64_t currentMidRollOffsetIndex_ = 0;
  CMTime lastPlayTime_ = kCMTimeZero;
  struct Jump {
    double from;
    double to;
    bool isReckonedWith;  // a mid-roll has been chosen after it
  };
  std::optional<Jump> jump_;  // the programme's last one, until a mid-roll was chosen after it and it has ticked again
  double tickedAt_ = -1;  // where the programme last ticked or was stopped for a break, in seconds; at first before all
  BreakStage breakStage_ = BreakStage::none;
  bool programmeHasEnded_ = false;  // while a break was under way, before the first of its ads
  bool playsWhenActive_ = false;    // the programme was to play while the application was out of sight

  std::shared_ptr<YMRBreakTracker> breakTracker_;  // of a break that a schedule document lists; nil for others
  bool breakHasShown_ = false;                     // an ad of it

  // For the ads of a break.
  YMRAdQueue ads_;         // still to be played
  YMRPreparedAd ad_;       // taken last
  YMRNextFilm nextFilm_;   // of them
  unsigned adNumber_ = 0;  // of the fetch or the ad at hand; counts up in the player's life
  std::shared_ptr<SKVASTEventProcessor> eventProcessor_;
  std::shared_ptr<YMRAdContainerView> adContainerView_;
  unsigned lookedAheadFrom_ = 0;  // the number of the ad during which the next film was made ready
  int currentQuartile_ = 0;
  bool adHasShown_ = false;
  std::shared_ptr<UITapGestureRecognizer> enterGuard_;  // of the player view controller's view; takes no press at first
  std::shared_ptr<NSTimer> enterGuardTime_;
  std::atomic<bool> isPlayingAd_ = false;
};
