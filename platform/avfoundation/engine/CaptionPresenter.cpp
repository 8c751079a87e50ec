#include "platform/avfoundation/engine/CaptionPresenter.h"

#include <algorithm>
#include <utility>

namespace {

// No picture is shown for less: whoever hears of changes need not hear of more.
constexpr RunLoop::Duration shortestStay = std::chrono::milliseconds(15);
constexpr RunLoop::Duration longestWait = std::chrono::hours(1);

}  // namespace

CaptionPresenter::CaptionPresenter(std::function<void(std::optional<MediaCaption>)> changed)
    : changed_(std::move(changed)) {}

CaptionPresenter::~CaptionPresenter() {
  if (timer_) RunLoop::main().cancel(timer_);
}

void CaptionPresenter::update(std::function<std::int64_t()> now, bool runs) {
  now_ = std::move(now);
  runs_ = runs;
  present();
}

void CaptionPresenter::presentIn(RunLoop::Duration duration) {
  timer_ = RunLoop::main().schedule(std::min(duration, longestWait), [this] {
    timer_ = 0;
    present();
  });
}

void CaptionPresenter::present() {
  if (timer_) RunLoop::main().cancel(std::exchange(timer_, 0));
  const auto earliest = changedAt_ + shortestStay;
  if (const auto at = RunLoop::main().now(); at < earliest) return presentIn(earliest - at);
  const std::int64_t time = now_();
  const auto next = track_ && runs_ ? timeline_.nextChange(*track_, time) : std::nullopt;
  if (next) presentIn(RunLoop::Duration(*next - time));
  auto caption = track_ ? timeline_.captionAt(*track_, time) : std::nullopt;
  if (caption == shown_) return;
  changedAt_ = RunLoop::main().now();
  shown_ = caption;
  changed_(std::move(caption));  // last: it may end this object
}
