#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "apps/ymrplay/LineOutput.h"
#include "apps/ymrplay/Options.h"
#include "apps/ymrplay/Remote.h"
#include "platform/dispatch/RunLoop.h"

class UIViewController;
class UIWindow;

// What every host of this program has: a window with a controller to present from, the remote, the clock that SECONDS
// and `t` count on, the printed events, and what went wrong. Main thread.
class HostWindow {
 public:
  // The options must outlive it; `leave` ends the presentation; `subtitle` as in Remote.
  HostWindow(const Options& options, std::function<void()> leave, std::function<void()> subtitle);
  ~HostWindow();

  void show();
  const std::shared_ptr<UIViewController>& root() const { return root_; }
  // Starts the clock, and with it keys and pictures.
  void start();
  // Seconds on the clock.
  double elapsed() const;
  // Prints a line when events are asked for. When nobody reads them any more, that is a failure, and the presentation
  // ends.
  void print(const std::string& line);
  // Says on standard error what went wrong; the exit status is 1 from then on.
  void fail(const std::string& message);
  // 1 after a failure, or when a line or a picture could not be written, which it says; else 0.
  int exitStatus();

 private:
  const Options& options_;
  RunLoop::Duration startedAt_{0};
  bool failed_ = false;
  std::shared_ptr<UIViewController> root_;
  std::shared_ptr<UIWindow> window_;
  Remote remote_;
  std::optional<LineOutput> lines_;  // when events are asked for
};
