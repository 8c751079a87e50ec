#pragma once

#include <functional>
#include <string>
#include <vector>

// Sends the library's messages up to `level` to standard error, one a line.
void logToStandardError(int level);

// Runs `work` without logging any of it.
template <class Work>
auto quietly(int levelAfterwards, const Work& work) {
  logToStandardError(0);
  auto result = work();
  logToStandardError(levelAfterwards);
  return result;
}

// What the library logs as errors and warnings while `work` runs, in place of logging it.
std::vector<std::string> messagesLoggedBy(const std::function<void()>& work, int levelAfterwards);
