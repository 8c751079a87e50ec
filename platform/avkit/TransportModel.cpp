#include "platform/avkit/TransportModel.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <utility>

#include "platform/avkit/ClockText.h"
#include "platform/avkit/Scrubber.h"
#include "platform/coremedia/CMTime.h"

using namespace std::chrono_literals;

namespace {

constexpr auto refreshInterval = 250ms;
// Seconds of a live stream's past that are worth a place on the bar.
constexpr double shortestHistory = 10;
// How near to each other two marks may be.
constexpr double marksDistance = 1.0 / 150;
constexpr const char* minus = "\u2212";

QString text(double seconds) {
  return QString::fromStdString(clockText(seconds));
}

// Rounded up, so that what has been and what is left make the whole.
QString textLeft(double seconds) {
  return QString::fromUtf8(minus) + text(std::ceil(seconds));
}

}  // namespace

TransportModel::TransportModel() = default;

void TransportModel::setPlayer(std::shared_ptr<AVPlayer> player) {
  player_ = std::move(player);
  target_.reset();
  refresh();
}

void TransportModel::setTarget(std::optional<double> target) {
  target_ = target;
  refresh();
}

void TransportModel::setShown(bool shown) {
  if (shown == isShown()) return;
  refresh();
  clock_ = shown ? NSTimer::scheduledTimerWithTimeInterval(refreshInterval, true, [this] { refresh(); }) : nullptr;
  Q_EMIT shownChanged();
}

void TransportModel::refresh() {
  facts_ = read();
  Q_EMIT changed();
  auto marks = readMarks();
  if (marks == marks_) return;
  marks_ = std::move(marks);
  Q_EMIT marksChanged();
}

QList<double> TransportModel::readMarks() const {
  const auto item = player_ ? player_->currentItem() : nullptr;
  const double duration = item ? CMTimeGetSeconds(item->duration()) : 0;
  QList<double> marks;
  if (!(duration > 0) || !std::isfinite(duration)) return marks;
  for (const auto& range : item->interstitialTimeRanges()) {
    const double place = CMTimeGetSeconds(range.start) / duration;
    if (!(place >= 0 && place <= 1) || (!marks.empty() && place - marks.back() < marksDistance)) continue;
    marks.push_back(place);
  }
  return marks;
}

TransportModel::Facts TransportModel::read() const {
  Facts facts;
  const auto item = player_ ? player_->currentItem() : nullptr;
  if (!item) return facts;
  facts.live = CMTIME_IS_INDEFINITE(item->duration());
  facts.paused = player_->rate() == 0;
  const double now = CMTimeGetSeconds(player_->currentTime());
  const double shown = target_.value_or(now);
  const auto range = reachableRange(item);
  if (!facts.live) facts.elapsed = text(shown);
  // A live stream of which nothing that has been is kept is always at its end.
  if (facts.live && !target_ && !(range && now - range->first >= shortestHistory)) {
    facts.position = facts.playing = 1;
    return facts;
  }
  if (!range) return facts;
  const auto place = [&range = *range](double seconds) {
    return std::clamp((seconds - range.first) / (range.second - range.first), 0.0, 1.0);
  };
  facts.position = place(shown);
  facts.playing = place(now);
  if (const auto buffered = item->loadedTimeRanges(); !buffered.empty()) {
    facts.bufferedFrom = place(CMTimeGetSeconds(buffered.front().start));
    facts.bufferedTo = place(CMTimeGetSeconds(CMTimeRangeGetEnd(buffered.front())));
  }
  const double left = std::max(0.0, range->second - shown);
  if (!facts.live) {
    facts.remaining = textLeft(left);
  } else if (target_) {
    facts.elapsed = textLeft(left);
  }
  return facts;
}
