#include "apps/ymrplay/HostWindow.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <utility>

#include "platform/uikit/UIWindow.h"

namespace {

// Headless, the size is the whole screen; on a display no size means full screen.
std::optional<CGSize> windowSize(const Options& options) {
  if (options.size) return CGSize{double(options.size->width), double(options.size->height)};
  if (options.headless) return CGSize{1920, 1080};
  return std::nullopt;
}

}  // namespace

HostWindow::HostWindow(const Options& options, std::function<void()> subtitle)
    : options_(options),
      root_(std::make_shared<UIViewController>()),
      window_(std::make_shared<UIWindow>(windowSize(options),
                                         options.headless ? UIGraphics::software : UIGraphics::automatic)),
      remote_(window_, std::move(subtitle)) {}

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
  if (!options_.events) return;
  if (std::puts(line.c_str()) >= 0 && std::fflush(stdout) == 0) return;
  if (!std::exchange(cannotPrint_, true)) fail(std::string("the events can't be written: ") + std::strerror(errno));
}

void HostWindow::fail(const std::string& message) {
  std::fprintf(stderr, "ymrplay: %s\n", message.c_str());
  failed_ = true;
}

int HostWindow::exitStatus() const {
  const auto failures = remote_.failures();
  for (const auto& failure : failures) std::fprintf(stderr, "ymrplay: %s\n", failure.c_str());
  return failed_ || !failures.empty() ? 1 : 0;
}
