#pragma once

#include <QAnimationDriver>

#include "platform/dispatch/RunLoop.h"

// Makes Qt's animations, those of QML included, go by the run loop's time. Needed where that is not Qt's own: under a
// virtual loop. Main thread.
class RunLoopAnimationDriver final : public QAnimationDriver {
 public:
  // Installs the one driver of the process when the installed loop is not Qt's.
  static void installUnlessQtLoop();

  void advance() override;
  qint64 elapsed() const override;

 protected:
  void start() override;
  void stop() override;

 private:
  void tick();

  RunLoop::Duration begin_{};
  RunLoop::TimerToken timer_ = 0;
};
