#pragma once

#include <QCoreApplication>
#include <cstdio>
#include <cstdlib>
#include <functional>

#include "bench/Playbin.h"

// Runs Qt's events until `done`; ends the program when that takes too long.
inline void runUntil(const std::function<bool()>& done, const char* what) {
  const auto start = std::chrono::steady_clock::now();
  while (!done()) {
    QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    if (millisecondsSince(start) < 30'000) continue;
    std::fprintf(stderr, "%s: not within 30 s\n", what);
    std::exit(1);
  }
}
