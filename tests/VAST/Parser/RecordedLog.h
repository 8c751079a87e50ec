#pragma once

#include <string>
#include <vector>

#include "VAST/SKLogger.h"

// Everything that is logged while it lives, up to `level`, as "level tag: message".
class RecordedLog {
 public:
  explicit RecordedLog(int level = SKLogLevelDebug) {
    SKLogger::installSink(level, [this](int at, std::string_view tag, std::string_view message) {
      const auto name = SKLogger::levelNames()[static_cast<std::size_t>(at)];
      lines_.push_back(std::string(name) + " " + std::string(tag) + ": " + std::string(message));
    });
  }
  RecordedLog(const RecordedLog&) = delete;
  RecordedLog& operator=(const RecordedLog&) = delete;
  ~RecordedLog() { SKLogger::installSink(SKLogLevelNone, {}); }

  const std::vector<std::string>& lines() const { return lines_; }

 private:
  std::vector<std::string> lines_;
};
