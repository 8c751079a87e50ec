#include "platform/avkit/AVPlayerViewController.h"

#include <algorithm>
#include <utility>

#include "platform/avkit/PlaybackWatch.h"
#include "platform/avkit/PlayerRemote.h"
#include "platform/avkit/PlayerScreen.h"
#include "platform/dispatch/Weakly.h"
#include "platform/foundation/MainThread.h"
#include "platform/foundation/NSNotificationCenter.h"
#include "platform/uikit/UIApplication.h"
#include "platform/uikit/UIWakefulness.h"

AVPlayerViewControllerDelegate::~AVPlayerViewControllerDelegate() = default;

// What the controller is made of once its view is: the screen, the remote and what tells them of the player.
class AVPlayerViewController::Parts {
 public:
  Parts(PlayerRemote::Chosen chosen, CaptionsMenu::Languages languages);
  ~Parts();

  const std::shared_ptr<PlayerScreen>& screen() const { return screen_; }
  PlayerRemote& remote() { return remote_; }
  ControlsView& controls() const { return *screen_->controls(); }

  void setPlayer(const std::shared_ptr<AVPlayer>& player);
  void setOnScreen(bool onScreen);

 private:
  void changed(PlaybackWatch::Change change);
  void begin();
  void followVisibility();
  void followIdleTimer();
  void enteredBackground();
  void becameActive();

  const std::shared_ptr<PlayerScreen> screen_;
  PlayerRemote remote_;
  std::shared_ptr<PlaybackWatch> watch_;
  bool onScreen_ = false;
  UIWakefulness wakefulness_;
};

AVPlayerViewController::Parts::Parts(PlayerRemote::Chosen chosen, CaptionsMenu::Languages languages)
    : screen_(PlayerScreen::make()), remote_(screen_->controls(), std::move(chosen)) {
  controls().captionsMenu()->setAllowedLanguages(std::move(languages));
  screen_->picture()->setHidden(true);
  screen_->setCoverChanged([this] { followVisibility(); });
  auto& center = NSNotificationCenter::defaultCenter();
  center.addObserver(this, UIApplicationDidEnterBackgroundNotification, nullptr,
                     [this](const NSNotification&) { enteredBackground(); });
  center.addObserver(this, UIApplicationDidBecomeActiveNotification, nullptr,
                     [this](const NSNotification&) { becameActive(); });
}

AVPlayerViewController::Parts::~Parts() {
  NSNotificationCenter::defaultCenter().removeObserver(this);
  screen_->setCoverChanged({});
  setPlayer(nullptr);
  setOnScreen(false);
}

void AVPlayerViewController::Parts::setPlayer(const std::shared_ptr<AVPlayer>& player) {
  watch_ = player ? PlaybackWatch::watch(player, [this](PlaybackWatch::Change change) { changed(change); }) : nullptr;
  screen_->picture()->setHidden(true);
  screen_->picture()->setPlayer(player);
  controls().stage()->setWatch(watch_);
  remote_.setPlayer(player);
  if (controls().stage()->hasBegun()) begin();
  followIdleTimer();
}

void AVPlayerViewController::Parts::changed(PlaybackWatch::Change change) {
  using Change = PlaybackWatch::Change;
  if (controls().stage()->refresh()) begin();
  if (change == Change::item) remote_.giveUpSeeking();
  if (change == Change::item || change == Change::status) remote_.itemChanged();
  if (change == Change::rate || change == Change::status) followIdleTimer();
  if (change != Change::caption && controls().transport()->isShown()) controls().transport()->refresh();
}

void AVPlayerViewController::Parts::begin() {
  screen_->picture()->setHidden(false);
}

void AVPlayerViewController::Parts::setOnScreen(bool onScreen) {
  onScreen_ = onScreen;
  followVisibility();
}

void AVPlayerViewController::Parts::followVisibility() {
  const bool covered = screen_->isCovered();
  if (covered || !onScreen_) remote_.dismissControls();
  screen_->controls()->setHidden(covered);
  controls().stage()->setVisible(onScreen_ && !covered && !UIApplication::sharedApplication().isInBackground());
  followIdleTimer();
}

void AVPlayerViewController::Parts::followIdleTimer() {
  const bool plays = watch_ && watch_->player()->rate() != 0;
  wakefulness_.setAwake(onScreen_ && (plays || screen_->isCovered()));
}

void AVPlayerViewController::Parts::enteredBackground() {
  followVisibility();
  remote_.dismissControls();
  if (watch_) watch_->player()->pause();
}

void AVPlayerViewController::Parts::becameActive() {
  followVisibility();
  if (onScreen_ && !screen_->isCovered()) remote_.showBar();
}

AVPlayerViewController::AVPlayerViewController() = default;

AVPlayerViewController::~AVPlayerViewController() = default;

void AVPlayerViewController::loadView() {
  parts_ = std::make_unique<Parts>(
      [this](const CaptionsMenu::Choice& choice) {
        const auto self = std::static_pointer_cast<AVPlayerViewController>(shared_from_this());
        if (const auto delegate = delegate_.lock()) delegate->playerViewController(self, choice.option, choice.group);
      },
      languages_);
  const auto own = std::static_pointer_cast<UIViewController>(weak_from_this().lock());
  const auto menu = std::make_shared<UITapGestureRecognizer>(
      weakly(std::weak_ptr(own), [](UIViewController& self, const UIGestureRecognizer& recognizer) {
        if (recognizer.state() == UIGestureRecognizerStateEnded) self.dismissViewControllerAnimated(true);
      }));
  menu->setAllowedPressTypes({UIPressTypeMenu});
  parts_->screen()->addGestureRecognizer(menu);
  setView(parts_->screen());
  parts_->setPlayer(player_);
}

void AVPlayerViewController::setPlayer(std::shared_ptr<AVPlayer> player) {
  YMR_ASSERT_MAIN_THREAD();
  if (player == player_) return;
  player_ = std::move(player);
  if (parts_) parts_->setPlayer(player_);
}

const std::shared_ptr<UIView>& AVPlayerViewController::contentOverlayView() {
  view();
  return parts_->screen()->overlay();
}

CGRect AVPlayerViewController::unobscuredContentFrame() {
  CGRect frame = view()->bounds();
  frame.size.height = std::max(0.0, frame.size.height - parts_->controls().obscuredHeight());
  return frame;
}

void AVPlayerViewController::setUnobscuredContentFrameDidChange(std::function<void()> didChange) {
  view();
  parts_->controls().setObscuredHeightChanged(std::move(didChange));
}

void AVPlayerViewController::setAllowedSubtitleOptionLanguages(std::optional<std::vector<std::string>> languages) {
  YMR_ASSERT_MAIN_THREAD();
  languages_ = std::move(languages);
  if (parts_) parts_->controls().captionsMenu()->setAllowedLanguages(languages_);
}

bool AVPlayerViewController::showsPlaybackControls() const {
  return parts_ && (parts_->controls().transport()->isShown() || parts_->controls().panel()->isOpen());
}

void AVPlayerViewController::viewWillAppear(bool animated) {
  UIViewController::viewWillAppear(animated);
  parts_->setOnScreen(true);
}

void AVPlayerViewController::viewDidDisappear(bool animated) {
  UIViewController::viewDidDisappear(animated);
  parts_->setOnScreen(false);
}

bool AVPlayerViewController::pressesBegan(const UIPress& press) {
  if (UIViewController::pressesBegan(press)) return true;
  if (!parts_->screen()->isCovered()) return parts_->remote().began(press);
  // A repetition is of a press that the cover has not taken.
  return press.isRepeat || parts_->screen()->offerToCover(press) || press.type != UIPressTypeMenu;
}

void AVPlayerViewController::pressesEnded(const UIPress& press) {
  parts_->remote().ended(press);
}

void AVPlayerViewController::pressesCancelled(const UIPress& press) {
  parts_->remote().ended(press);
}
