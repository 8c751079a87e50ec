#pragma once

#include <QObject>
#include <functional>

class QSocketNotifier;

// SIGINT and SIGTERM as a block on the main queue. The first one runs the block; the second ends the process by the
// signal's default action. One object a process, made on the main thread.
class TerminationSignals : public QObject {
 public:
  explicit TerminationSignals(std::function<void()> first);
  ~TerminationSignals() override;

 private:
  int pipe_[2] = {-1, -1};
  QSocketNotifier* notifier_ = nullptr;
};
