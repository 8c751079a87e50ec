#include "apps/shared/StandardStreams.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstring>
#include <iostream>

void prepareStandardStreams() {
  std::signal(SIGPIPE, SIG_IGN);
  for (const int descriptor : {0, 1, 2}) {
    // The lowest free number is given; in the wrong direction, so that its use fails as before.
    if (::fcntl(descriptor, F_GETFD) < 0) ::open("/dev/null", descriptor == 0 ? O_WRONLY : O_RDONLY);
  }
}

bool flushStandardOutput(const char* program) {
  errno = 0;
  std::cout.flush();
  if (std::cout) return true;
  std::cerr << program << ": standard output cannot be written" << (errno ? ": " : "")
            << (errno ? std::strerror(errno) : "") << '\n';
  return false;
}

Input readInput(const std::string& path, std::size_t mebibytesLimit) {
  const int file = path == "-" ? ::dup(STDIN_FILENO) : ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
  Input input;
  char block[64 * 1024];
  ssize_t count = -1;
  while (file >= 0 && ((count = ::read(file, block, sizeof block)) > 0 || (count < 0 && errno == EINTR))) {
    if (count < 0) continue;
    input.bytes.append(block, static_cast<std::size_t>(count));
    if (input.bytes.size() <= mebibytesLimit << 20) continue;
    input.problem = "is longer than " + std::to_string(mebibytesLimit) + " MiB";
    break;
  }
  if (count < 0) input.problem = std::string("cannot be read: ") + std::strerror(errno);
  if (file >= 0) ::close(file);
  if (!input.problem.empty()) input.bytes.clear();
  return input;
}
