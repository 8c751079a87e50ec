#pragma once

#include <QObject>
#include <functional>
#include <list>
#include <memory>
#include <string>
#include <vector>

#include "apps/ymrplay/Options.h"
#include "platform/foundation/NSTimer.h"

class UIWindow;

// What happens on the clock of playback besides playing: the keys of --key are pressed on the window, and the pictures
// of --snapshot are taken of it. The key that no remote has, "subtitle" or S in the window, calls a block. Main thread.
class Remote : public QObject {
 public:
  // `subtitle` may be empty.
  explicit Remote(std::shared_ptr<UIWindow> window, std::function<void()> subtitle);

  // Counts every SECONDS from now.
  void start(const Options& options);
  // What could not be written, one sentence each, pictures whose time never came included.
  std::vector<std::string> failures() const;

 private:
  struct Picture {
    Options::Snapshot wanted;
    enum class Outcome { waiting, written, failed } outcome = Outcome::waiting;
  };

  bool eventFilter(QObject* window, QEvent* event) override;
  void at(double seconds, std::function<void()> block);

  std::shared_ptr<UIWindow> window_;
  const std::function<void()> subtitle_;
  std::list<Picture> pictures_;
  std::vector<std::shared_ptr<NSTimer>> timers_;
};
