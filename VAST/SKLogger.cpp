#include "VAST/SKLogger.h"

#include <algorithm>
#include <atomic>
#include <memory>
#include <mutex>
#include <string>
#include <utility>

#include "platform/foundation/NSException.h"

namespace {

struct Outlet {
  std::atomic<int> level{SKLogLevelNone};
  std::mutex mutex;
  std::shared_ptr<const SKLogger::Sink> sink;
};

// Never destroyed: threads may still log while the process ends.
Outlet& outlet() {
  static auto* const instance = new Outlet;
  return *instance;
}

thread_local bool isSilent = false;  // inside the sink, too

void write(int level, std::string_view tag, std::string_view message) {
  if (!SKLogger::reachesSink(level)) return;
  std::shared_ptr<const SKLogger::Sink> sink;
  {
    const std::lock_guard lock(outlet().mutex);
    sink = outlet().sink;
  }
  if (!sink) return;
  isSilent = true;
  try {
    (*sink)(level, tag, message);
  } catch (...) {
  }
  isSilent = false;
}

}  // namespace

const std::array<std::string_view, 5>& SKLogger::levelNames() {
  static constexpr std::array<std::string_view, 5> names{"none", "error", "warning", "info", "debug"};
  return names;
}

std::optional<int> SKLogger::levelNamed(std::string_view name) {
  const auto found = std::find(levelNames().begin(), levelNames().end(), name);
  if (found == levelNames().end()) return std::nullopt;
  return static_cast<int>(found - levelNames().begin());
}

void SKLogger::setLogLevel(int level) {
  if (level < 0 || level >= static_cast<int>(levelNames().size())) {
    throw NSRangeException("no log level " + std::to_string(level));
  }
}

void SKLogger::installSink(int level, Sink sink) {
  setLogLevel(level);
  const bool listens = level > SKLogLevelNone && sink;
  auto installed = listens ? std::make_shared<const Sink>(std::move(sink)) : nullptr;
  {
    const std::lock_guard lock(outlet().mutex);
    outlet().level.store(listens ? level : SKLogLevelNone, std::memory_order_relaxed);
    outlet().sink.swap(installed);
  }
  // The old sink goes here, outside the lock: its captures may log.
}

bool SKLogger::reachesSink(int level) {
  return level <= outlet().level.load(std::memory_order_relaxed) && !isSilent;
}

SKLogger::Silence::Silence() : wasSilent_(std::exchange(isSilent, true)) {}

SKLogger::Silence::~Silence() {
  isSilent = wasSilent_;
}

void SKLogger::error(std::string_view tag, std::string_view message) {
  write(SKLogLevelError, tag, message);
}
void SKLogger::warning(std::string_view tag, std::string_view message) {
  write(SKLogLevelWarning, tag, message);
}
void SKLogger::info(std::string_view tag, std::string_view message) {
  write(SKLogLevelInfo, tag, message);
}
void SKLogger::debug(std::string_view tag, std::string_view message) {
  write(SKLogLevelDebug, tag, message);
}
