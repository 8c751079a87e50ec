#include "subtitles/ASBPlayerSubtitling.h"

#include <algorithm>
#include <cmath>
#include <mutex>
#include <utility>

#include "platform/dispatch/Weakly.h"
#include "platform/foundation/MainThread.h"
#include "platform/foundation/NSString.h"
#include "platform/uikit/NSHTMLImport.h"
#include "subtitles/core/ASBSubtitleReader.h"
#include "subtitles/core/ASBSubtitleText.h"

// What a tick, once a second, needs to find the text that is due. Any thread.
class ASBPlayerSubtitling::Clock {
 public:
  explicit Clock(std::weak_ptr<ASBPlayerSubtitling> engine) : engine_(std::move(engine)) {}

  ASBPublishedSubtitles& subtitles() { return subtitles_; }

  void setPlayer(const std::shared_ptr<AVPlayer>& player) {
    std::lock_guard lock(mutex_);
    player_ = player;
  }
  std::optional<std::string> currentText() const {
    std::lock_guard lock(mutex_);
    return currentText_;
  }
  void clearText() {
    std::lock_guard lock(mutex_);
    currentText_.reset();
  }

  void tick();

 private:
  const std::weak_ptr<ASBPlayerSubtitling> engine_;
  ASBPublishedSubtitles subtitles_;
  mutable std::mutex mutex_;
  std::weak_ptr<AVPlayer> player_;
  std::optional<std::string> currentText_;
};

void ASBPlayerSubtitling::Clock::tick() {
  std::shared_ptr<AVPlayer> player;
  {
    std::lock_guard lock(mutex_);
    player = player_.lock();
  }
  auto item = player ? player->currentItem() : nullptr;
  bool changed = false;
  if (item) {
    const auto list = subtitles_.current();
    const ASBSubtitle* cue = list ? list->lastSubtitleAtTime(CMTimeGetSeconds(item->currentTime())) : nullptr;
    std::lock_guard lock(mutex_);
    changed = cue ? currentText_ != cue->text : currentText_.has_value();
    if (changed) currentText_ = cue ? std::optional(cue->text) : std::nullopt;
  }
  // Player and item, which everybody else may have let go of meanwhile, go where they may end.
  dispatch_async(dispatch_get_main_queue(), weakly(engine_, [changed, player = std::move(player),
                                                             item = std::move(item)](ASBPlayerSubtitling& self) {
                   if (changed) self.updateLabel();
                 }));
}

std::shared_ptr<ASBPlayerSubtitling> ASBPlayerSubtitling::init() {
  YMR_ASSERT_MAIN_THREAD();
  const std::shared_ptr<ASBPlayerSubtitling> made(new ASBPlayerSubtitling);
  made->setup();
  return made;
}

ASBPlayerSubtitling::ASBPlayerSubtitling() = default;

ASBPlayerSubtitling::~ASBPlayerSubtitling() {
  removeTimeObserver();
}

void ASBPlayerSubtitling::setup() {
  visible_ = true;
  queue_ = dispatch_queue_create("subtitling");
  if (!clock_) clock_ = std::make_shared<Clock>(weak_from_this());
}

double ASBPlayerSubtitling::timeFromString(std::string_view stamp) {
  return ::timeFromString(stamp);
}

double ASBPlayerSubtitling::nominalFrameRateForPlayer(const std::shared_ptr<AVPlayer>&) {
  return 1.0;
}

void ASBPlayerSubtitling::setPlayer(const std::shared_ptr<AVPlayer>& player) {
  YMR_ASSERT_MAIN_THREAD();
  const auto before = player_;
  if (before) before->pause();
  if (player_ != before) return;  // called from inside the pause: the inner call counts
  removeTimeObserver();
  player_ = player;
  clock_->setPlayer(player);
  nbFramesPerSecond_ = nominalFrameRateForPlayer(player);
  frameDuration_ = 1 / nbFramesPerSecond_;
  if (label_) label_->setText("");
  if (containerView_) containerView_->setHidden(true);
  setupTimeObserver();
  computeStyle();
}

void ASBPlayerSubtitling::setupTimeObserver() {
  if (timeObserver_ || !(nbFramesPerSecond_ > 0) || !player_) return;
  constexpr double shortestInterval = 0.25;
  const double interval = std::max(1 / nbFramesPerSecond_, shortestInterval);
  timeObserver_ = player_->addPeriodicTimeObserver(CMTimeMakeWithSeconds(interval, 1'000'000'000), queue_,
                                                   weakly(std::weak_ptr(clock_), &Clock::tick));
}

void ASBPlayerSubtitling::removeTimeObserver() {
  if (const auto token = std::exchange(timeObserver_, nullptr); token && player_) player_->removeTimeObserver(token);
}

void ASBPlayerSubtitling::playerTimeChanged() {
  clock_->tick();
}

void ASBPlayerSubtitling::setVisible(bool visible) {
  YMR_ASSERT_MAIN_THREAD();
  visible_ = visible;
  if (label_) label_->setHidden(!visible);
  if (containerView_) containerView_->setHidden(!visible);
}

void ASBPlayerSubtitling::loadSubtitlesAtURL(const NSURL& url, std::optional<NSError>* error) {
  YMR_ASSERT_MAIN_THREAD();
  const ASBSubtitleText text = readSubtitleText(url);
  if (!text.error) return loadSRTContent(text.content, error);
  if (error) *error = text.error;
}

void ASBPlayerSubtitling::loadSRTContent(std::string_view content, std::optional<NSError>* error) {
  setSubtitles(std::make_shared<ASBSubtitleList>(subtitlesFromSRT(content)));
  if (error) error->reset();
}

std::shared_ptr<const ASBSubtitleList> ASBPlayerSubtitling::subtitles() const {
  return clock_->subtitles().current();
}

void ASBPlayerSubtitling::setSubtitles(std::shared_ptr<const ASBSubtitleList> subtitles) {
  YMR_ASSERT_MAIN_THREAD();
  clock_->subtitles().publish(std::move(subtitles));
  setupTimeObserver();
}

void ASBPlayerSubtitling::removeSubtitles() {
  YMR_ASSERT_MAIN_THREAD();
  clock_->subtitles().publish(nullptr);
  clock_->clearText();
  updateLabel();
}

std::optional<ASBSubtitle> ASBPlayerSubtitling::lastSubtitleAtTime(double seconds) const {
  const auto list = subtitles();
  const ASBSubtitle* cue = list ? list->lastSubtitleAtTime(seconds) : nullptr;
  return cue ? std::optional(*cue) : std::nullopt;
}

std::optional<std::string> ASBPlayerSubtitling::currentText() const {
  return clock_->currentText();
}

void ASBPlayerSubtitling::updateLabel() {
  YMR_ASSERT_MAIN_THREAD();
  if (!label_) return;
  const auto text = currentText();
  if (!text) {
    label_->setAttributedText(std::nullopt);
    label_->setText(std::nullopt);
  } else if (isHTML(*text)) {
    label_->setAttributedText(attribuedStringFromHTMLText(*text));
  } else {
    label_->setText(*text);
  }
  const bool hidden = !text || text->empty() || !visible_;
  label_->setHidden(hidden);
  if (containerView_) containerView_->setHidden(hidden);
}

bool ASBPlayerSubtitling::isHTML(std::string_view text) {
  return text.find('<') != text.npos;
}

// "</br>", which the importer takes for the end of a line, is written for every line end.
std::optional<NSAttributedString> ASBPlayerSubtitling::attribuedStringFromHTMLText(const std::string& text) const {
  std::string html = "<body style=\"" + cssStyle_ + "\">";
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (text[i] == '\r' && i + 1 < text.size() && text[i + 1] == '\n') continue;
    if (text[i] == '\n') {
      html += "</br>";
    } else {
      html += text[i];
    }
  }
  return NSAttributedStringFromHTML(html + "</body>");
}
