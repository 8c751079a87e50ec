#include "apps/ymrplay/Remote.h"

#include <QKeyEvent>
#include <chrono>
#include <map>
#include <optional>
#include <utility>

#include "platform/uikit/UIWindow.h"

namespace {

// nil for the key that is none of the remote's.
std::optional<UIPressType> pressFor(const std::string& name) {
  static const std::map<std::string, UIPressType> presses{
      {"up", UIPressTypeUpArrow},       {"down", UIPressTypeDownArrow}, {"left", UIPressTypeLeftArrow},
      {"right", UIPressTypeRightArrow}, {"select", UIPressTypeSelect},  {"playpause", UIPressTypePlayPause},
      {"menu", UIPressTypeMenu},
  };
  const auto found = presses.find(name);
  return found == presses.end() ? std::nullopt : std::optional(found->second);
}

}  // namespace

Remote::Remote(std::shared_ptr<UIWindow> window, std::function<void()> subtitle)
    : window_(std::move(window)), subtitle_(std::move(subtitle)) {
  window_->installEventFilter(this);
}

bool Remote::eventFilter(QObject*, QEvent* event) {
  if (event->type() != QEvent::KeyPress || !subtitle_) return false;
  const auto& key = static_cast<const QKeyEvent&>(*event);
  if (key.key() != Qt::Key_S || key.isAutoRepeat()) return false;
  subtitle_();
  return true;
}

void Remote::at(double seconds, std::function<void()> block) {
  const auto delay = std::chrono::duration_cast<RunLoop::Duration>(std::chrono::duration<double>(seconds));
  timers_.push_back(NSTimer::scheduledTimerWithTimeInterval(delay, false, std::move(block)));
}

void Remote::start(const Options& options) {
  for (const auto& key : options.keys) {
    at(key.seconds, [this, press = pressFor(key.name)] {
      if (press) {
        window_->sendPress(*press);
      } else if (subtitle_) {
        subtitle_();
      }
    });
  }
  for (const auto& wanted : options.snapshots) {
    Picture& picture = pictures_.emplace_back(Picture{wanted});
    at(wanted.seconds, [this, &picture] {
      const bool written = window_->writeSnapshot(picture.wanted.file);
      picture.outcome = written ? Picture::Outcome::written : Picture::Outcome::failed;
    });
  }
}

std::vector<std::string> Remote::failures() const {
  std::vector<std::string> sentences;
  for (const auto& [wanted, outcome] : pictures_) {
    if (outcome == Picture::Outcome::failed) {
      sentences.push_back("could not write the snapshot " + wanted.file);
    } else if (outcome == Picture::Outcome::waiting) {
      sentences.push_back("playback was over before the snapshot " + wanted.file + " was due");
    }
  }
  return sentences;
}
