#include "apps/ymrplay/HostWindow.h"

#include <cstdio>
#include <utility>

#include "platform/uikit/UIWindow.h"

namespace {

// Headless, the size is the whole screen; on a display no size means full screen.
std::optional<CGSize> windowSize(const Options& options) {
  if (options.size) return CGSize{double(options.size->width), double(options.size->height)};
  if (options.headless) return CGSize{1920, 1080};
  return std::nullopt;
}

// What there is before something is presented, and nothing to be seen of it; Menu leaves.
class BlackScreen final : public UIViewController {
 public:
  explicit BlackScreen(std::function<void()> leave) : leave_(std::move(leave)) {}

 private:
  bool pressesBegan(const UIPress& press) override { return press.type == UIPressTypeMenu; }
  void pressesEnded(const UIPress& press) override {
    if (press.type == UIPressTypeMenu) leave_();
  }

  const std::function<void()> leave_;
};

}  // namespace

HostWindow::HostWindow(const Options& options, std::function<void()> leave, std::function<void()> subtitle)
    : options_(options),
      root_(std::make_shared<BlackScreen>(leave)),
      window_(std::make_shared<UIWindow>(windowSize(options),
                                         options.headless ? UIGraphics::software : UIGraphics::automatic)),
      remote_(window_, std::move(subtitle)) {
  if (!options.events) return;
  lines_.emplace([this, leave = std::move(leave)](const std::string& why) {
    fail("the events can't be written: " + why);
    leave();
  });
}

HostWindow::~HostWindow() = default;

void HostWindow::show() {
  window_->setRootViewController(root_);
  window_->makeKeyAndVisible();
}

void HostWindow::start() {
  startedAt_ = RunLoop::main().now();
  remote_.start(options_);
}

double HostWindow::elapsed() const {
  return std::chrono::duration<double>(RunLoop::main().now() - startedAt_).count();
}

void HostWindow::print(const std::string& line) {
  if (lines_) lines_->print(line);
}

void HostWindow::fail(const std::string& message) {
  std::fprintf(stderr, "ymrplay: %s\n", message.c_str());
  failed_ = true;
}

int HostWindow::exitStatus() {
  if (lines_ && !lines_->finish() && !failed_) fail("not all events could be written");
  const auto failures = remote_.failures();
  for (const auto& failure : failures) std::fprintf(stderr, "ymrplay: %s\n", failure.c_str());
  return failed_ || !failures.empty() ? 1 : 0;
}
