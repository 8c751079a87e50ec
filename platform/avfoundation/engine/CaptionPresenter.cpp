#include "platform/avfoundation/engine/CaptionPresenter.h"

#include <utility>

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

void CaptionPresenter::present() {
  if (timer_) RunLoop::main().cancel(std::exchange(timer_, 0));
  const std::int64_t time = now_();
  const auto next = track_ && runs_ ? timeline_.nextChange(*track_, time) : std::nullopt;
  if (next) {
    timer_ = RunLoop::main().schedule(RunLoop::Duration(*next - time), [this] {
      timer_ = 0;
      present();
    });
  }
  auto caption = track_ ? timeline_.captionAt(*track_, time) : std::nullopt;
  if (caption == shown_) return;
  shown_ = caption;
  changed_(std::move(caption));  // last: it may end this object
}
