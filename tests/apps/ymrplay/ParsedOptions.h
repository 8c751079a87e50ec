#pragma once

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "apps/ymrplay/Options.h"

// What came of a command line, and what was printed about it.
struct ParsedOptions {
  std::optional<Options> options;
  int exitStatus = -1;
  std::string said;
};

inline ParsedOptions parseWords(std::vector<std::string> words) {
  words.insert(words.begin(), "ymrplay");
  std::vector<char*> argv;
  for (auto& word : words) argv.push_back(word.data());
  ParsedOptions parsed;
  testing::internal::CaptureStdout();
  testing::internal::CaptureStderr();
  parsed.options = parseOptions(static_cast<int>(argv.size()), argv.data(), parsed.exitStatus);
  parsed.said = testing::internal::GetCapturedStdout() + testing::internal::GetCapturedStderr();
  return parsed;
}
