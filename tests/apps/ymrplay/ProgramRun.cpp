#include "tests/apps/ymrplay/ProgramRun.h"

#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <sstream>

namespace {

[[noreturn]] void become(const std::string& program, const std::vector<std::string>& arguments, int output,
                         int errors) {
  if (!std::freopen("/dev/null", "r", stdin)) _exit(127);
  dup2(output, 1);
  dup2(errors, 2);
  close(output);
  alarm(60);  // which lasts when another program takes over
  std::vector<char*> words{const_cast<char*>(program.c_str())};
  for (const auto& argument : arguments) words.push_back(const_cast<char*>(argument.c_str()));
  words.push_back(nullptr);
  execv(program.c_str(), words.data());
  _exit(127);
}

}  // namespace

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
  int output[2];
  std::FILE* const errors = std::tmpfile();
  if (!errors || pipe(output) != 0) return {};
  const pid_t process = fork();
  if (process == 0) become(program, arguments, output[1], fileno(errors));
  close(output[1]);

  ProgramRun run;
  char block[4096];
  std::size_t lineStart = 0;
  for (ssize_t got; (got = read(output[0], block, sizeof block)) > 0;) {
    run.output.append(block, static_cast<std::size_t>(got));
    for (std::size_t feed; onLine && (feed = run.output.find('\n', lineStart)) != std::string::npos;) {
      onLine(run.output.substr(lineStart, feed - lineStart), process);
      lineStart = feed + 1;
    }
  }
  close(output[0]);
  int status = 0;
  waitpid(process, &status, 0);
  run.exitStatus = WIFSIGNALED(status) ? 128 + WTERMSIG(status) : WEXITSTATUS(status);
  std::rewind(errors);
  while (const std::size_t got = std::fread(block, 1, sizeof block, errors)) run.errors.append(block, got);
  std::fclose(errors);
  return run;
}
