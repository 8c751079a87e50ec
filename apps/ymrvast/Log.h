#pragma once

#include <functional>
#include <string>
#include <vector>

// Sends the library's messages up to `level` to standard error, one a line.
void logToStandardError(int level);

// What the library logs as errors and warnings while `work` runs, in place of logging it.
std::vector<std::string> messagesLoggedBy(const std::function<void()>& work, int levelAfterwards);
