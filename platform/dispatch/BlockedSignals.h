#pragma once

#include <csignal>

// Blocks every signal for the calling thread while it lives. Threads begun meanwhile inherit that, so that a host's
// signal handlers run on the host's own threads and a broken connection never raises SIGPIPE in it.
class BlockedSignals {
 public:
  BlockedSignals() {
    sigset_t all;
    sigfillset(&all);
    pthread_sigmask(SIG_SETMASK, &all, &before_);
  }
  BlockedSignals(const BlockedSignals&) = delete;
  BlockedSignals& operator=(const BlockedSignals&) = delete;
  ~BlockedSignals() { pthread_sigmask(SIG_SETMASK, &before_, nullptr); }

 private:
  sigset_t before_;
};
