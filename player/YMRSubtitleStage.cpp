#include "player/YMRSubtitleStage.h"

#include <QMatrix4x4>
#include <algorithm>
#include <cmath>
#include <utility>

#include "VAST/HostCall.h"
#include "ads/YMROutlinedLabel.h"
#include "platform/dispatch/Weakly.h"
#include "player/states/YMRPlayerStateHub.h"
#include "subtitles/core/ASBSubtitleReader.h"
#include "subtitles/core/ASBSubtitleText.h"
#include "ui/Autolayout.h"

namespace {

constexpr double screenHeight = 1080;  // of the screen that points are counted on
constexpr double aboveLowerEdge = 70;
constexpr double inset = 20;  // of the label in the container
constexpr double sideMargin = 0.05;
constexpr double topMargin = 0.05;

}  // namespace

// Shows a view larger or smaller, and higher, than its constraints have it: scaled about the middle of its lower edge,
// which ends at a place of its own. What it holds begins on a whole point of the screen, so that letters stay sharp.
class SubtitlePlacement final : public QQuickTransform {
 public:
  explicit SubtitlePlacement(QQuickItem& item) : QQuickTransform(&item), item_(item) {
    for (const auto changed :
         {&QQuickItem::xChanged, &QQuickItem::yChanged, &QQuickItem::widthChanged, &QQuickItem::heightChanged}) {
      QObject::connect(&item, changed, this, &SubtitlePlacement::update);
    }
    appendToItem(&item);
  }

  void place(double scale, double bottom) {
    scale_ = scale;
    bottom_ = bottom;
    update();
  }

  void applyTo(QMatrix4x4* matrix) const override {
    const double left = item_.x() + item_.width() / 2 * (1 - scale_);
    const double top = bottom_ - item_.height() * scale_;
    const auto whole = [this](double edge) { return std::round(edge + inset * scale_) - inset * scale_; };
    matrix->translate(float(whole(left) - item_.x()), float(whole(top) - item_.y()));
    matrix->scale(float(scale_));
  }

 private:
  const QQuickItem& item_;
  double scale_ = 1;
  double bottom_ = 0;
};

YMRSubtitleStage::YMRSubtitleStage() : subtitling_(ASBPlayerSubtitling::init()) {}

YMRSubtitleStage::~YMRSubtitleStage() {
  leaveScreen();
}

void YMRSubtitleStage::leaveScreen() {
  if (const auto screen = screen_.lock()) screen->setUnobscuredContentFrameDidChange({});
  screen_.reset();
}

void YMRSubtitleStage::letGoOfViews() {
  leaveScreen();
  subtitling_->setContainerView(nullptr);
  subtitling_->setLabel(nullptr);
  if (container_) container_->removeFromSuperview();
  container_ = nullptr;
  label_ = nullptr;
}

void YMRSubtitleStage::addToPlayerScreen(const std::shared_ptr<AVPlayerViewController>& screen) {
  screen_ = screen;
  const CGRect frame = CGRectMake(0, 0, 100, 50);
  container_ = std::make_shared<UIView>(frame);
  label_ = std::make_shared<YMROutlinedLabel>(frame);
  addSubViewWithAutolayout(container_, label_, inset);

  const auto overlay = screen->contentOverlayView();
  overlay->addSubview(container_);
  overlay->bringSubviewToFront(container_);
  container_->setTranslatesAutoresizingMaskIntoConstraints(false);
  const auto pin = [&](NSLayoutAttribute attribute, double constant) {
    overlay->addConstraint(NSLayoutConstraint::constraintWithItem(container_, attribute, NSLayoutRelationEqual, overlay,
                                                                  attribute, 1.0, constant));
  };
  pin(NSLayoutAttributeBottom, -aboveLowerEdge);
  pin(NSLayoutAttributeCenterX, 0);
  subtitling_->setContainerView(container_);
  subtitling_->setLabel(label_);

  placement_ = new SubtitlePlacement(*container_);
  const auto follow = weakly(weak_from_this(), &YMRSubtitleStage::followScreen);
  QObject::connect(overlay.get(), &QQuickItem::widthChanged, placement_, follow);
  QObject::connect(overlay.get(), &QQuickItem::heightChanged, placement_, follow);
  screen->setUnobscuredContentFrameDidChange(follow);
  followScreen();
}

void YMRSubtitleStage::followScreen() {
  const auto screen = screen_.lock();
  if (!screen) return;
  const CGSize size = screen->contentOverlayView()->bounds().size;
  if (size.width <= 0 || size.height <= 0) return;
  const double unit = size.height / screenHeight;
  const double free = screen->unobscuredContentFrame().size.height;
  // Where something stands in the way, the container's own inset is distance enough.
  const double bottom = std::min(size.height - aboveLowerEdge * unit, free);
  placement_->place(unit, bottom);
  label_->setContentScaleFactor(unit);
  label_->setPreferredMaxLayoutWidth(std::floor(size.width * (1 - 2 * sideMargin) / unit));
  label_->setNumberOfLines(linesAbove(bottom / unit));
}

int YMRSubtitleStage::linesAbove(double bottom) const {
  const NSAttributedString line("X", {.font = label_->font()});
  const double height = sizeOfAttributedString(line, 1 << 16, {}).height;
  const double room = bottom - screenHeight * topMargin - 2 * inset;
  return std::clamp(int(room / std::max(1.0, height)), 1, 100);
}

void YMRSubtitleStage::setSubtitle(const std::shared_ptr<YMRSubtitleConfig>& subtitle) {
  subtitle_ = subtitle;
  if (!subtitle || !label_) return;
  label_->setFont(subtitle->subtitleFont());
  label_->setTextColor(subtitle->subtitleTextColor());
  label_->setStrokeWidth(subtitle->subtitleStrokeWidth());
  label_->setStrokeColor(subtitle->subtitleStrokeColor());
  label_->setParagraphStyle(std::nullopt);
  label_->setBackgroundAttributes(std::nullopt);
  label_->setForegroundAttributes(std::nullopt);
  followScreen();
}

void YMRSubtitleStage::loadSubtitle(const std::shared_ptr<AVPlayer>& player) {
  subtitling_->setPlayer(player);
  switchSubtitle(0);
}

void YMRSubtitleStage::switchSubtitle(std::int32_t index) {
  if (!subtitle_) return;
  const auto& tracks = subtitle_->subtitles();
  if (static_cast<std::uint64_t>(static_cast<std::int64_t>(index)) >= tracks.size()) return;
  const YMRSubtitle track = tracks[static_cast<std::size_t>(index)];
  ++loads_;
  if (subtitle_->loadsInBackground()) {
    loadInBackground(track);
  } else {
    load(track);
  }
}

namespace {

std::size_t cuesWithText(const ASBSubtitleList& list) {
  const auto& cues = list.subtitles();
  return static_cast<std::size_t>(
      std::count_if(cues.begin(), cues.end(), [](const ASBSubtitle& cue) { return !cue.text.empty(); }));
}

void tellOfSuccess(const YMRSubtitleConfig& subtitle, const YMRSubtitle& track, std::size_t cues) {
  const auto didLoad = subtitle.didLoad();
  if (didLoad) callHost(ymrPlayerTag, [&] { didLoad(track, cues); });
}

void tellOfFailure(const YMRSubtitleConfig& subtitle, const YMRSubtitle& track, const NSError& error) {
  const auto loadDidFail = subtitle.loadDidFail();
  if (loadDidFail) callHost(ymrPlayerTag, [&] { loadDidFail(track, error); });
}

}  // namespace

// The host hears of it on a later turn: the programme may be half made now.
void YMRSubtitleStage::load(const YMRSubtitle& track) {
  std::optional<NSError> error;
  subtitling_->loadSubtitlesAtURL(track.url(), &error);
  dispatch_async(dispatch_get_main_queue(),
                 weakly(weak_from_this(), [load = loads_, subtitle = subtitle_, track, error = std::move(error),
                                           list = subtitling_->subtitles()](const YMRSubtitleStage& self) {
                   if (load != self.loads_) return;
                   if (error) return tellOfFailure(*subtitle, track, *error);
                   tellOfSuccess(*subtitle, track, cuesWithText(*list));
                 }));
}

void YMRSubtitleStage::loadInBackground(const YMRSubtitle& track) {
  const auto whenRead = [weak = weak_from_this(), load = loads_, subtitle = subtitle_, track](ASBSubtitleText text) {
    const auto self = weak.lock();
    if (!self || load != self->loads_) return;
    if (text.error) return tellOfFailure(*subtitle, track, *text.error);
    // Weakly, since what a configuration holds of the host's must not end on that thread.
    const auto config = std::weak_ptr(subtitle);
    dispatch_async(dispatch_get_global_queue(), [weak, load, config, track, content = std::move(text.content)] {
      auto list = std::make_shared<const ASBSubtitleList>(subtitlesFromSRT(content));
      dispatch_async(dispatch_get_main_queue(),
                     weakly(weak, [load, config, track, list = std::move(list)](YMRSubtitleStage& stage) {
                       if (load != stage.loads_) return;
                       stage.subtitling_->setSubtitles(list);
                       if (const auto told = config.lock()) tellOfSuccess(*told, track, cuesWithText(*list));
                     }));
    });
  };
  readSubtitleText(track.url(), whenRead);
}
