#include "apps/ymrplay/TerminationSignals.h"

#include <fcntl.h>
#include <unistd.h>

#include <QSocketNotifier>
#include <csignal>
#include <utility>

namespace {

constexpr int terminating[] = {SIGINT, SIGTERM, SIGHUP};
volatile int writeEnd = -1;

void handle(void (*handler)(int)) {
  struct sigaction action {};
  action.sa_handler = handler;
  action.sa_flags = SA_RESTART;
  sigemptyset(&action.sa_mask);
  for (const int number : terminating) sigaction(number, &action, nullptr);
}

// No signalfd: what reads it is the main thread alone, and the second signal must end a process whose main thread is
// stuck, too.
extern "C" void onTerminationSignal(int) {
  handle(SIG_DFL);  // the next one, of any kind, ends the process
  const char byte = 0;
  [[maybe_unused]] const auto written = write(writeEnd, &byte, 1);
}

}  // namespace

TerminationSignals::TerminationSignals() {
  if (pipe2(pipe_, O_CLOEXEC | O_NONBLOCK) != 0) return;
  writeEnd = pipe_[1];
  handle(onTerminationSignal);
}

TerminationSignals::~TerminationSignals() {
  handle(SIG_DFL);
  writeEnd = -1;
  notifier_ = nullptr;
  for (const int end : pipe_) {
    if (end >= 0) close(end);
  }
}

void TerminationSignals::listen(std::function<void()> first) {
  if (pipe_[0] < 0) return;
  notifier_ = std::make_unique<QSocketNotifier>(pipe_[0], QSocketNotifier::Read);
  QObject::connect(notifier_.get(), &QSocketNotifier::activated, [this, first = std::move(first)] {
    notifier_->setEnabled(false);
    first();
  });
}
