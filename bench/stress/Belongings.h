#pragma once

#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

// What a process has, as the system counts it.

inline std::ptrdiff_t entriesOf(const char* folder) {
  return std::distance(std::filesystem::directory_iterator(folder), std::filesystem::directory_iterator());
}

// The processes that any thread of this one has started.
inline std::vector<int> children() {
  std::vector<int> found;
  for (const auto& thread : std::filesystem::directory_iterator("/proc/self/task")) {
    std::ifstream listed(thread.path() / "children");
    for (int child = 0; listed >> child;) found.push_back(child);
  }
  return found;
}

// In MiB, each page by its share: what several processes have in common counts once among them.
inline double memoryOf(int process) {
  std::ifstream lines("/proc/" + std::to_string(process) + "/smaps_rollup");
  for (std::string line; std::getline(lines, line);) {
    if (line.starts_with("Pss:")) return std::stod(line.substr(4)) / 1024;
  }
  return 0;
}
