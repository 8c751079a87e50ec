#pragma once

#include <filesystem>
#include <functional>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

// A folder of this process's own, while it lives.
struct TemporaryFolder {
  explicit TemporaryFolder(const std::string& name = "program-test-");
  TemporaryFolder(const TemporaryFolder&) = delete;
  TemporaryFolder& operator=(const TemporaryFolder&) = delete;
  ~TemporaryFolder() { std::filesystem::remove_all(folder); }

  // Writes one and returns where it is.
  std::string file(const std::string& name, const std::string& content) const;

  const std::filesystem::path folder;
};

// One run of a program: what it printed and how it ended.
struct ProgramRun {
  int exitStatus = -1;  // 128 + the signal's number when a signal ended it
  std::string output;
  std::string errors;

  // The lines of --events.
  std::vector<nlohmann::json> events() const;
  // Their names, `left` out.
  std::vector<std::string> eventNames(const std::vector<std::string>& left = {}) const;
  std::size_t count(const std::string& event) const;
  // The first event of that name; null when there is none.
  nlohmann::json first(const std::string& event) const;
};

// Runs `program` to its end in the environment of this process. Ends it by force after a minute, which is a failure.
// `onLine`, if given, is called with each line of its output as it comes, and its process number.
ProgramRun runProgram(const std::string& program, const std::vector<std::string>& arguments,
                      const std::function<void(const std::string& line, int process)>& onLine = {});
