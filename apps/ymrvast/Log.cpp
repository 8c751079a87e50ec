#include "apps/ymrvast/Log.h"

#include <cstdio>

#include "VAST/SKLogger.h"
#include "apps/shared/Printable.h"

void logToStandardError(int level) {
  SKLogger::installSink(level, [](int ofMessage, std::string_view tag, std::string_view message) {
    const std::string line = std::string(SKLogger::levelNames()[static_cast<std::size_t>(ofMessage)]) + ": " +
                             printable(tag) + ": " + printable(message) + "\n";
    std::fputs(line.c_str(), stderr);
  });
}

std::vector<std::string> messagesLoggedBy(const std::function<void()>& work, int levelAfterwards) {
  std::vector<std::string> messages;
  SKLogger::installSink(SKLogLevelWarning, [&messages](int, std::string_view, std::string_view message) {
    messages.emplace_back(message);
  });
  work();
  logToStandardError(levelAfterwards);
  return messages;
}
