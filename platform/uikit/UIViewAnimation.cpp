// Views: animation of alpha.
#include <QEasingCurve>
#include <QScopeGuard>
#include <algorithm>
#include <utility>
#include <vector>

#include "platform/foundation/MainThread.h"
#include "platform/uikit/UIView.h"

// One run of animateWithDuration(): moves opacities from turn to turn until the time is over.
class UIViewAnimation : public std::enable_shared_from_this<UIViewAnimation> {
 public:
  using Completion = std::function<void(bool finished)>;

  UIViewAnimation(RunLoop::Duration duration, Completion completion)
      : begin_(RunLoop::main().now()), duration_(duration), completion_(std::move(completion)) {}

  // The one whose animations block runs; null outside.
  static UIViewAnimation*& current() {
    static UIViewAnimation* animation = nullptr;
    return animation;
  }

  void add(UIView& view, double goal) {
    moves_.push_back({&view, view.opacity(), goal});
    view.animation_ = weak_from_this();
  }

  void step() {
    const double passed = double((RunLoop::main().now() - begin_).count());
    const double progress = duration_.count() > 0 ? std::min(1.0, passed / double(duration_.count())) : 1.0;
    const double share = QEasingCurve(QEasingCurve::InOutQuad).valueForProgress(progress);
    bool any = false;
    for (const Move& move : moves_) {
      if (!moves(move)) continue;
      any = true;
      move.view->setOpacity(progress < 1 ? move.from + share * (move.goal - move.from) : move.goal);
    }
    const bool done = progress >= 1 || !any;
    RunLoop::main().schedule(done ? RunLoop::Duration::zero() : std::chrono::milliseconds(16),
                             [self = shared_from_this(), done] { done ? self->finish() : self->step(); });
  }

 private:
  struct Move {
    QPointer<UIView> view;
    double from;
    double goal;
  };

  bool moves(const Move& move) const { return move.view && move.view->animation_.lock().get() == this; }

  void finish() {
    const bool finished = std::all_of(moves_.begin(), moves_.end(), [this](const Move& move) { return moves(move); });
    for (const Move& move : moves_) {
      if (moves(move)) move.view->animation_.reset();
    }
    if (const auto completion = std::exchange(completion_, nullptr)) completion(finished);
  }

  const RunLoop::Duration begin_;
  const RunLoop::Duration duration_;
  Completion completion_;
  std::vector<Move> moves_;
};

void UIView::setAlpha(double alpha) {
  YMR_ASSERT_MAIN_THREAD();
  alpha_ = std::clamp(alpha, 0.0, 1.0);
  if (UIViewAnimation* animation = UIViewAnimation::current()) {
    animation->add(*this, alpha_);
  } else {
    animation_.reset();
    setOpacity(alpha_);
  }
}

void UIView::animateWithDuration(RunLoop::Duration duration, const std::function<void()>& animations,
                                 std::function<void(bool finished)> completion) {
  YMR_ASSERT_MAIN_THREAD();
  const auto animation = std::make_shared<UIViewAnimation>(duration, std::move(completion));
  UIViewAnimation* outer = std::exchange(UIViewAnimation::current(), animation.get());
  const auto begin = qScopeGuard([&] {
    UIViewAnimation::current() = outer;
    animation->step();
  });
  animations();
}
