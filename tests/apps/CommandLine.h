#pragma once

#include <gmock/gmock.h>

#include <iomanip>
#include <optional>
#include <sstream>
#include <string>
#include <vector>

// What came of a command line, and what was printed about it.
template <typename Options>
struct Parsed {
  std::optional<Options> options;
  int exitStatus = -1;
  std::string output;
  std::string errors;
};

// A program's parseOptions().
template <typename Options>
using OptionsParser = std::optional<Options> (*)(int argc, char** argv, int& exitStatus);

// Words of `line` are separated by blanks; one in double quotes may be empty or have blanks in it.
template <typename Options>
Parsed<Options> parseLine(OptionsParser<Options> parser, const std::string& line) {
  std::vector<std::string> words{"program"};
  std::istringstream stream(line);
  for (std::string word; stream >> std::quoted(word);) words.push_back(word);
  std::vector<char*> argv;
  for (auto& word : words) argv.push_back(word.data());
  Parsed<Options> parsed;
  testing::internal::CaptureStdout();
  testing::internal::CaptureStderr();
  parsed.options = parser(static_cast<int>(argv.size()), argv.data(), parsed.exitStatus);
  parsed.output = testing::internal::GetCapturedStdout();
  parsed.errors = testing::internal::GetCapturedStderr();
  return parsed;
}

struct WrongUsage {
  std::string line;
  std::string complaint;  // has this in it
};

template <typename Options>
void expectComplaints(OptionsParser<Options> parser, const std::vector<WrongUsage>& rows) {
  for (const auto& [line, complaint] : rows) {
    const auto parsed = parseLine(parser, line);
    EXPECT_FALSE(parsed.options) << line;
    EXPECT_EQ(parsed.exitStatus, 2) << line;
    EXPECT_THAT(parsed.errors, testing::HasSubstr(complaint)) << line;
  }
}
