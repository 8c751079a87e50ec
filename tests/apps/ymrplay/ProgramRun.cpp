#include "tests/apps/ymrplay/ProgramRun.h"

#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <fstream>
#include <sstream>

TemporaryFolder::TemporaryFolder(const std::string& name)
    : folder(std::filesystem::temp_directory_path() / (name + std::to_string(getpid()))) {
  std::filesystem::create_directories(folder);
}

std::string TemporaryFolder::file(const std::string& name, const std::string& content) const {
  std::ofstream(folder / name, std::ios::binary) << content;
  return (folder / name).string();
}

std::vector<nlohmann::json> ProgramRun::events() const {
  std::vector<nlohmann::json> list;
  std::istringstream stream(output);
  for (std::string line; std::getline(stream, line);) list.push_back(nlohmann::json::parse(line));
  return list;
}

std::vector<std::string> ProgramRun::eventNames(const std::vector<std::string>& left) const {
  std::vector<std::string> names;
  for (const auto& event : events()) names.push_back(event["event"]);
  std::erase_if(names, [&left](const std::string& name) { return std::ranges::count(left, name) > 0; });
  return names;
}

std::size_t ProgramRun::count(const std::string& event) const {
  return static_cast<std::size_t>(std::ranges::count(eventNames(), event));
}

nlohmann::json ProgramRun::first(const std::string& event) const {
  const auto all = events();
  const auto found = std::ranges::find_if(all, [&](const auto& one) { return one["event"] == event; });
  return found == all.end() ? nullptr : *found;
}

ProgramRun runProgram(const std::string& program, const std::vector<std::string>& arguments,
                      const std::function<void(const std::string&, int)>& onLine) {
  const TemporaryFolder temporary("errors-of-");
  const std::string errors = temporary.file("errors", "");
  // A shell that says which process it is and becomes the program.
  std::string command = "echo $$; exec timeout --foreground --signal KILL 60";
  auto words = arguments;
  words.insert(words.begin(), program);
  for (auto& word : words) {
    for (std::size_t at = 0; (at = word.find('\'', at)) != std::string::npos; at += 4) word.replace(at, 1, R"('\'')");
    command += " '" + word + "'";
  }
  std::FILE* const output = popen((command + " </dev/null 2>'" + errors + "'").c_str(), "re");
  ProgramRun run;
  char* line = nullptr;
  std::size_t capacity = 0;
  int process = 0;
  for (ssize_t length; (length = getline(&line, &capacity, output)) > 0;) {
    const std::string text(line, static_cast<std::size_t>(length));
    if (process != 0) run.output += text;
    if (process != 0 && onLine) onLine(text.substr(0, text.find('\n')), process);
    if (process == 0) process = std::stoi(text);
  }
  std::free(line);
  const int status = pclose(output);
  run.exitStatus = WIFSIGNALED(status) ? 128 + WTERMSIG(status) : WEXITSTATUS(status);
  std::ostringstream said;
  said << std::ifstream(errors).rdbuf();
  run.errors = said.str();
  return run;
}
