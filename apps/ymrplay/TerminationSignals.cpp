#include "apps/ymrplay/TerminationSignals.h"

#include <fcntl.h>
#include <unistd.h>

#include <QSocketNotifier>
#include <csignal>

namespace {

volatile int writeEnd = -1;

extern "C" void onTerminationSignal(int) {
  // The next one, of either kind, ends the process.
  std::signal(SIGINT, SIG_DFL);
  std::signal(SIGTERM, SIG_DFL);
  const char byte = 0;
  [[maybe_unused]] const auto written = write(writeEnd, &byte, 1);
}

}  // namespace

TerminationSignals::TerminationSignals(std::function<void()> first) {
  if (pipe2(pipe_, O_CLOEXEC | O_NONBLOCK) != 0) return;
  writeEnd = pipe_[1];
  notifier_ = new QSocketNotifier(pipe_[0], QSocketNotifier::Read, this);
  connect(notifier_, &QSocketNotifier::activated, this, [this, first = std::move(first)] {
    notifier_->setEnabled(false);
    first();
  });
  struct sigaction action {};
  action.sa_handler = onTerminationSignal;
  action.sa_flags = SA_RESTART;
  sigemptyset(&action.sa_mask);
  sigaction(SIGINT, &action, nullptr);
  sigaction(SIGTERM, &action, nullptr);
}

TerminationSignals::~TerminationSignals() {
  std::signal(SIGINT, SIG_DFL);
  std::signal(SIGTERM, SIG_DFL);
  writeEnd = -1;
  for (const int end : pipe_) {
    if (end >= 0) close(end);
  }
}
