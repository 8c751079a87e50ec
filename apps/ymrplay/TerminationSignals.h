#pragma once

#include <QObject>
#include <functional>
#include <memory>

class QSocketNotifier;

// SIGINT, SIGTERM and SIGHUP as a block on the main queue. The first one runs the block; the second ends the process by
// the signal's default action. Nothing is lost between: take them first of all in main(), listen when there is
// something to end. One object a process, on the main thread.
class TerminationSignals final {
 public:
  TerminationSignals();
  ~TerminationSignals();
  TerminationSignals(const TerminationSignals&) = delete;
  TerminationSignals& operator=(const TerminationSignals&) = delete;

  // Calls `first` for the first one, also when that has come already. After the QGuiApplication.
  void listen(std::function<void()> first);

 private:
  int pipe_[2] = {-1, -1};
  std::unique_ptr<QSocketNotifier> notifier_;
};
