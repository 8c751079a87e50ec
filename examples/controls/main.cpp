// A player with controls of its own: the framework's player, picture, time labels and slider, without the platform's
// bar. Up and Down go between the button and the slider, Left and Right drag the slider, Play/Pause works anywhere,
// Menu leaves. A finger or the mouse does as well.
#include <platform/avfoundation/layer/AVPlayerLayer.h>
#include <platform/foundation/NSNotificationCenter.h>
#include <platform/uikit/UILabel.h>
#include <platform/uikit/UISlider.h>
#include <platform/uikit/UIWindow.h>
#include <subtitles/ASBPlayerScrubbing.h>

#include <QCommandLineParser>
#include <QGuiApplication>
#include <QPainter>
#include <QTimer>
#include <cstdio>

// A triangle to play, two bars to pause.
class PlayButton final : public UIView {
 public:
  PlayButton() {
    setDrawsContent(true);
    setUserInteractionEnabled(true);
    connect(this, &QQuickItem::focusChanged, this, &UIView::setNeedsDisplay);
  }
  bool pressesBegan(const UIPress& press) override {
    if (press.type == UIPressTypeSelect && !press.isRepeat) pressed();
    return press.type == UIPressTypeSelect;
  }
  void touchesEnded(const UIEvent&) override { pressed(); }

  std::function<void()> pressed;
  bool showsPause = false;

 protected:
  void drawRect(QPainter& painter, const CGRect& rect) override {
    painter.scale(rect.size.width / 100, rect.size.height / 100);
    painter.setPen(Qt::NoPen);
    painter.setBrush(isFirstResponder() ? QColor("#ffb81c") : QColor(255, 255, 255, 40));
    painter.drawEllipse(0, 0, 100, 100);
    painter.setBrush(isFirstResponder() ? QColor("#141414") : QColor(Qt::white));
    if (showsPause) {
      painter.drawRect(33, 29, 12, 42);
      painter.drawRect(55, 29, 12, 42);
    } else {
      painter.drawPolygon(QPolygon({{37, 26}, {77, 50}, {37, 74}}));
    }
  }
};

// The picture, and our controls over it.
class ControlsView final : public UIView {
 public:
  explicit ControlsView(const std::shared_ptr<AVPlayer>& player)
      : picture_(AVPlayerLayer::playerLayerWithPlayer(player)) {
    picture_->setFillsSuperlayer(true);
    layer()->addSublayer(picture_);
    shade_->setBackgroundColor(UIColor::colorWithWhite(0, 0.6));
    addSubview(shade_);
    addSubview(button);
    addSubview(slider);
    for (const auto& label : {elapsed, total, remaining}) addSubview(label);
    total->setTextAlignment(NSTextAlignmentCenter);
    remaining->setTextAlignment(NSTextAlignmentRight);
  }

  const std::shared_ptr<PlayButton> button = std::make_shared<PlayButton>();
  const std::shared_ptr<UISlider> slider = std::make_shared<UISlider>();
  const std::shared_ptr<UILabel> elapsed = std::make_shared<UILabel>();
  const std::shared_ptr<UILabel> total = std::make_shared<UILabel>();
  const std::shared_ptr<UILabel> remaining = std::make_shared<UILabel>();

 protected:
  // In 1080ths of the height, so that it looks the same on every screen.
  void layoutSubviews() override {
    const double unit = bounds().size.height / 1080;
    const double width = bounds().size.width / unit;
    const auto place = [unit](UIView& view, double x, double y, double w, double h) {
      view.setFrame(CGRectMake(x * unit, y * unit, w * unit, h * unit));
    };
    place(*shade_, 0, 840, width, 240);
    place(*button, 96, 894, 96, 96);
    place(*slider, 224, 894, width - 320, 60);
    for (const auto& label : {elapsed, total, remaining}) {
      label->setFont(UIFont::systemFontOfSize(40 * unit, UIFont::weightMedium));
      place(*label, 246, 958, width - 364, 56);
    }
  }

 private:
  const std::shared_ptr<AVPlayerLayer> picture_;
  const std::shared_ptr<UIView> shade_ = std::make_shared<UIView>();
};

class ControlsScreen final : public UIViewController, public ASBPlayerScrubbingDelegate, public NSKeyValueObserver {
 public:
  // Plays; `finished` hears when that is over, and why it failed if it did.
  void play(const std::string& media, const std::function<void(std::optional<std::string>)>& finished) {
    finished_ = finished;
    item_ = AVPlayerItem::playerItemWithURL(NSURL::URLFromUserInput(media));
    player_ = AVPlayer::playerWithPlayerItem(item_);
    const auto self = std::static_pointer_cast<ControlsScreen>(shared_from_this());
    item_->addObserver(self, "status");
    player_->addObserver(self, "rate");
    NSNotificationCenter::defaultCenter().addObserver(this, AVPlayerItemDidPlayToEndTimeNotification, item_,
                                                      [this](const NSNotification&) { finished_(std::nullopt); });
    controls_ = std::make_shared<ControlsView>(player_);
    controls_->button->pressed = [this] { scrubbing_->playPause(controls_->button.get()); };
    controls_->slider->setValueChanged([this](UISlider&, const UIEvent& event) { sliderDragged(event); });
    setView(controls_);

    scrubbing_->setCurrentTimeLabel(controls_->elapsed);
    scrubbing_->setDurationLabel(controls_->total);
    scrubbing_->setRemainingTimeLabel(controls_->remaining);
    scrubbing_->setDelegate(self);
    scrubbing_->setPlayer(player_);
    player_->play();
  }
  ~ControlsScreen() override { NSNotificationCenter::defaultCenter().removeObserver(this); }

  std::shared_ptr<UIView> preferredFirstResponder() override { return controls_->button; }

 private:
  bool pressesBegan(const UIPress& press) override {
    if (press.type == UIPressTypeMenu) finished_(std::nullopt);
    if (press.type == UIPressTypePlayPause) scrubbing_->playPause();
    if (press.type == UIPressTypeUpArrow) controls_->button->becomeFirstResponder();
    if (press.type == UIPressTypeDownArrow) controls_->slider->becomeFirstResponder();
    return true;
  }

  // Once a frame while it plays, and after each seek.
  void playerScrubbingDidUpdateTime(const std::shared_ptr<ASBPlayerScrubbing>&) override {
    const CMTime duration = item_->duration();
    if (!CMTIME_IS_NUMERIC(duration) || controls_->slider->isTracking()) return;
    controls_->slider->setMaximumValue(CMTimeGetSeconds(duration));
    controls_->slider->setValue(CMTimeGetSeconds(item_->currentTime()));
  }

  // The scrubbing pauses when a drag begins. Where to go, and whether to play on, is the host's to say.
  void sliderDragged(const UIEvent& event) {
    scrubbing_->sliderValueChanged(controls_->slider.get(), event);
    const double place = controls_->slider->value();
    scrubbing_->updateCurrentTimeLabelWithTime(place);
    scrubbing_->updateRemainingTimeLabelWithTime(controls_->slider->maximumValue() - place);
    if (controls_->slider->isTracking()) return;
    const bool isCancelled = event.allTouches().front().phase() == UITouchPhaseCancelled;
    player_->seekToTime(isCancelled ? player_->currentTime() : CMTimeMakeWithSeconds(place, 1000));
    if (scrubbing_->playAfterDrag()) player_->play();
  }

  void observeValueForKeyPath(const std::string& key, const std::shared_ptr<NSObject>&, const NSKeyValueChange&,
                              void*) override {
    controls_->button->showsPause = player_->rate() != 0;
    controls_->button->setNeedsDisplay();
    if (key == "status" && item_->error()) finished_(item_->error()->message);
  }

  std::function<void(std::optional<std::string>)> finished_;
  std::shared_ptr<AVPlayerItem> item_;
  std::shared_ptr<AVPlayer> player_;
  std::shared_ptr<ControlsView> controls_;
  const std::shared_ptr<ASBPlayerScrubbing> scrubbing_ = std::make_shared<ASBPlayerScrubbing>();
};

// Exits at the end of the clip: 0, 1 when it can't be played or drawn, 2 for wrong usage (1 for an unknown option).
int main(int argc, char** argv) {
  QGuiApplication application(argc, argv);
  QCommandLineParser parser;
  parser.addHelpOption();
  parser.addPositionalArgument("MEDIA", "What to play: a file or a URL.");
  parser.addOptions({{"seconds", "End after so many seconds, if not before.", "n"},
                     {"size", "Play in a window: 1280x720.", "WxH"},
                     {"snapshot", "At the end write what the screen shows as a PNG.", "file"}});
  parser.process(application);
  const QString sides = parser.value("size");
  const QSize size(sides.section('x', 0, 0).toInt(), sides.section('x', 1).toInt());
  const int seconds = parser.value("seconds").toInt();
  if (parser.positionalArguments().size() != 1 || (parser.isSet("size") && size.isEmpty()) ||
      (parser.isSet("seconds") && seconds <= 0)) {
    std::fprintf(stderr, "%s", qPrintable(parser.helpText()));
    return 2;
  }

  UIWindow window(size.isEmpty() ? std::nullopt : std::optional(CGSize{double(size.width()), double(size.height())}));
  window.unsetCursor();  // for who drags with the mouse
  const auto finish = [&](const std::optional<std::string>& failure) {
    if (failure) std::fprintf(stderr, "controls: %s\n", failure->c_str());
    const QString file = parser.value("snapshot");
    const bool drawn = file.isEmpty() || window.writeSnapshot(file.toStdString());
    if (!drawn) std::fprintf(stderr, "controls: the snapshot could not be written\n");
    QCoreApplication::exit(failure || !drawn ? 1 : 0);
  };
  const auto screen = std::make_shared<ControlsScreen>();
  screen->play(parser.positionalArguments().first().toStdString(), finish);
  window.setRootViewController(screen);
  window.makeKeyAndVisible();
  if (seconds > 0) QTimer::singleShot(std::chrono::seconds(seconds), [&] { finish({}); });
  return application.exec();
}
