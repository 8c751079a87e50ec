#include "tests/apps/ymrplay/ProgramRun.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <sstream>

namespace {

constexpr auto bound = std::chrono::seconds(60);

[[noreturn]] void become(const std::string& program, const std::vector<std::string>& arguments,
                         const std::map<std::string, std::string>& environment, int output, int errors) {
  dup2(open("/dev/null", O_RDONLY), 0);
  dup2(output, 1);
  dup2(errors, 2);
  for (const auto& [name, value] : environment) setenv(name.c_str(), value.c_str(), 1);
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
  for (const auto& event : events()) {
    const std::string name = event["event"];
    if (std::find(left.begin(), left.end(), name) == left.end()) names.push_back(name);
  }
  return names;
}

std::size_t ProgramRun::count(const std::string& event) const {
  const auto names = eventNames();
  return static_cast<std::size_t>(std::count(names.begin(), names.end(), event));
}

nlohmann::json ProgramRun::first(const std::string& event) const {
  for (const auto& one : events()) {
    if (one["event"] == event) return one;
  }
  return nullptr;
}

ProgramRun runProgram(const std::string& program, const std::vector<std::string>& arguments,
                      const std::map<std::string, std::string>& environment,
                      const std::function<void(const std::string&, int)>& onLine) {
  int output[2], errors[2];
  if (pipe2(output, O_CLOEXEC) != 0 || pipe2(errors, O_CLOEXEC) != 0) return {};
  const auto started = std::chrono::steady_clock::now();
  const pid_t process = fork();
  if (process == 0) become(program, arguments, environment, output[1], errors[1]);
  close(output[1]);
  close(errors[1]);

  ProgramRun run;
  std::size_t lineStart = 0;
  pollfd ends[] = {{output[0], POLLIN, 0}, {errors[0], POLLIN, 0}};
  while (ends[0].fd >= 0 || ends[1].fd >= 0) {
    if (std::chrono::steady_clock::now() - started > bound) {
      kill(process, SIGKILL);
      break;
    }
    poll(ends, 2, 1000);
    for (auto& end : ends) {
      if (end.fd < 0 || !end.revents) continue;
      char bytes[4096];
      const ssize_t got = read(end.fd, bytes, sizeof bytes);
      if (got <= 0) {
        end.fd = -1;
        continue;
      }
      (end.fd == output[0] ? run.output : run.errors).append(bytes, static_cast<std::size_t>(got));
    }
    for (std::size_t feed; onLine && (feed = run.output.find('\n', lineStart)) != std::string::npos;) {
      onLine(run.output.substr(lineStart, feed - lineStart), process);
      lineStart = feed + 1;
    }
  }
  close(output[0]);
  close(errors[0]);
  int status = 0;
  waitpid(process, &status, 0);
  run.exitStatus = WIFSIGNALED(status) ? 128 + WTERMSIG(status) : WEXITSTATUS(status);
  run.wall = std::chrono::steady_clock::now() - started;
  return run;
}
