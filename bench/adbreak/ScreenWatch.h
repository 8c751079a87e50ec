#pragma once

#include <QQuickWindow>
#include <chrono>
#include <vector>

// Reads the numbers of the pictures off a window, as they come to the screen: what its sixteen blocks along the top
// edge say, 0 for black. Needs the offscreen platform and the software scene graph, where the screen's memory can be
// read without drawing again. Main thread.
class ScreenWatch {
 public:
  struct Picture {
    std::chrono::steady_clock::time_point at;  // when it was first there
    int number;
  };

  explicit ScreenWatch(QQuickWindow& window);

  // What the screen showed since the last clear(), a picture that stayed once.
  const std::vector<Picture>& pictures() const { return pictures_; }
  void clear() { pictures_.clear(); }

 private:
  int numberOnScreen() const;

  QQuickWindow& window_;
  std::vector<Picture> pictures_;
};
