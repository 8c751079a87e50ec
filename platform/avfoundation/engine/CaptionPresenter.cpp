#include "platform/avfoundation/engine/CaptionPresenter.h"

#include <utility>

CaptionPresenter::CaptionPresenter(std::function<void(std::optional<std::string>)> changed)
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
  auto text = track_ ? timeline_.textAt(*track_, time) : std::nullopt;
  if (text == shown_) return;
  shown_ = text;
  changed_(std::move(text));  // last: it may end this object
}
