#pragma once

#include <memory>

#include "platform/foundation/NSTimer.h"

// Keeps the screen on while it lives: through the session's screen saver service, and, under X11, by telling the server
// again and again that somebody is there. Answers are not waited for; what is missing is done without. Main thread.
class IdleInhibitor {
 public:
  IdleInhibitor();
  IdleInhibitor(const IdleInhibitor&) = delete;
  IdleInhibitor& operator=(const IdleInhibitor&) = delete;
  ~IdleInhibitor();

 private:
  struct Inhibition;
  std::shared_ptr<Inhibition> inhibition_;
  std::shared_ptr<NSTimer> timer_;
};
