#include "platform/avfoundation/process/MediaProcess.h"

#include <fcntl.h>
#include <signal.h>
#include <spawn.h>
#include <sys/socket.h>
#include <sys/syscall.h>
#include <sys/wait.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <charconv>
#include <cstring>
#include <fstream>
#include <string_view>

#include "platform/avfoundation/bytes/DescriptorMessage.h"
#include "platform/avfoundation/process/ProcessWatch.h"

extern char** environ;

namespace {

constexpr int socketNumber = 3;  // in the process
// What a process may say before anybody listens: its first word.
constexpr std::size_t unheardLimit = 4;

std::string wordsOf(int error) {
  std::array<char, 128> buffer;
  return strerror_r(error, buffer.data(), buffer.size());
}

struct SpawnActions {
  posix_spawn_file_actions_t actions;
  posix_spawnattr_t attributes;
  SpawnActions() {
    posix_spawn_file_actions_init(&actions);
    posix_spawnattr_init(&attributes);
  }
  ~SpawnActions() {
    posix_spawn_file_actions_destroy(&actions);
    posix_spawnattr_destroy(&attributes);
  }
};

int spawn(const std::string& program, int socket, pid_t& pid) {
  SpawnActions spawn;
  posix_spawn_file_actions_addopen(&spawn.actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
  posix_spawn_file_actions_addopen(&spawn.actions, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
  posix_spawn_file_actions_adddup2(&spawn.actions, socket, socketNumber);
  posix_spawn_file_actions_addclosefrom_np(&spawn.actions, socketNumber + 1);
  sigset_t none, all;
  sigemptyset(&none);
  sigfillset(&all);
  posix_spawnattr_setsigmask(&spawn.attributes, &none);
  posix_spawnattr_setsigdefault(&spawn.attributes, &all);
  // A session, and so a process group, of its own: a terminal that it inherits is not its terminal.
  posix_spawnattr_setflags(&spawn.attributes, POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF | POSIX_SPAWN_SETSID);
  std::string name = program;
  char* arguments[] = {name.data(), nullptr};
  return posix_spawn(&pid, program.c_str(), &spawn.actions, &spawn.attributes, arguments, environ);
}

}  // namespace

std::shared_ptr<MediaProcess> MediaProcess::start(const std::string& program, std::string& failure) {
  int ends[2];
  if (socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0, ends) != 0) {
    failure = wordsOf(errno);
    return nullptr;
  }
  Descriptor own(ends[0]);
  // dup2() of a descriptor onto itself would leave it to be closed.
  Descriptor theirs(ends[1] > socketNumber ? ends[1] : fcntl(ends[1], F_DUPFD_CLOEXEC, socketNumber + 1));
  if (ends[1] <= socketNumber) close(ends[1]);
  pid_t pid = 0;
  if (const int error = spawn(program, theirs.get(), pid)) {
    failure = program + ": " + wordsOf(error);
    return nullptr;
  }
  Descriptor process(static_cast<int>(syscall(SYS_pidfd_open, pid, 0)));
  if (!process) {
    failure = "no descriptor of the process: " + wordsOf(errno);
    kill(pid, SIGKILL);
    waitpid(pid, nullptr, 0);
    return nullptr;
  }
  fcntl(process.get(), F_SETFD, FD_CLOEXEC);
  const std::shared_ptr<MediaProcess> started(new MediaProcess(std::move(own), std::move(process), pid));
  started->watch();
  return started;
}

std::shared_ptr<MediaProcess> MediaProcess::adopt(Descriptor socket) {
  const std::shared_ptr<MediaProcess> adopted(new MediaProcess(std::move(socket), {}, std::nullopt));
  adopted->watch();
  return adopted;
}

MediaProcess::MediaProcess(Descriptor socket, Descriptor process, std::optional<int> pid)
    : socket_(std::move(socket)), process_(std::move(process)), pid_(pid), isReaped_(!pid) {}

MediaProcess::~MediaProcess() = default;

// The watch holds the process for as long as it lives, and so its descriptors: whoever lets go calls end() first.
void MediaProcess::watch() {
  auto& watch = ProcessWatch::shared();
  watch.add(socket_.get(), [self = shared_from_this()] { return self->receive(); });
  if (process_) watch.add(process_.get(), [self = shared_from_this()] { return self->reap(); });
}

void MediaProcess::listen(const std::weak_ptr<Listener>& listener) {
  std::lock_guard lock(mutex_);
  listener_ = listener;
  const auto heard = listener.lock();
  for (const auto& message : std::exchange(unheard_, {})) {
    if (heard) heard->peerDidSay(message, {});
  }
  if (heard && death_) heard->peerDidDie(*death_);
}

bool MediaProcess::receive() {
  static thread_local std::vector<std::byte> buffer(wire::messageLimit + 1);
  for (;;) {
    auto received = DescriptorMessage::receive(socket_.get(), buffer, MSG_DONTWAIT);
    if (received.size < 0 && errno == EAGAIN) return true;
    if (received.size <= 0) break;
    Descriptor descriptor;  // one at most means anything
    if (!received.descriptors.empty()) descriptor = std::move(received.descriptors[0]);
    hasSpoken_ = true;
    std::lock_guard lock(mutex_);
    const std::span message(buffer.data(), static_cast<std::size_t>(received.size));
    if (const auto listener = listener_.lock()) {
      listener->peerDidSay(message, std::move(descriptor));
    } else if (unheard_.size() < unheardLimit) {
      unheard_.emplace_back(message.begin(), message.end());
    }
  }
  isClosed_ = true;
  if (pid_) end();  // it does not listen any more
  die("closed its socket");
  return false;
}

bool MediaProcess::reap() {
  siginfo_t info{};
  const bool isKnown = waitid(P_PIDFD, static_cast<id_t>(process_.get()), &info, WEXITED) == 0;
  isReaped_ = true;
  shutdown(socket_.get(), SHUT_RDWR);              // whoever it may have given its end to; what it said is still read
  reason_ = !isKnown                     ? "gone"  // a host that waits for all its children has been faster
            : info.si_code == CLD_EXITED ? "exited with status " + std::to_string(info.si_status)
                                         : "killed by signal " + std::to_string(info.si_status) + " (" +
                                               std::string(strsignal(info.si_status)) + ")";
  die(reason_);
  return false;
}

// When all it had to say has been heard and the reason is known.
void MediaProcess::die(std::string reason) {
  if (!isClosed_ || !isReaped_) return;
  isDead_ = true;
  const Death death{hasSpoken_, reason_.empty() ? std::move(reason) : reason_};
  std::lock_guard lock(mutex_);
  if (const auto listener = listener_.lock()) {
    listener->peerDidDie(death);
  } else {
    death_ = death;
  }
}

void MediaProcess::send(const wire::ToProcess& message, const std::vector<int>& descriptors) {
  const auto bytes = wire::encode(message);
  const ssize_t sent = DescriptorMessage::send(socket_.get(), bytes, descriptors, MSG_NOSIGNAL | MSG_DONTWAIT);
  if (sent < 0 && errno == EAGAIN) end();
}

// What the system says of it, from its state on.
std::vector<std::string> MediaProcess::status() const {
  std::ifstream file("/proc/" + std::to_string(pid_.value_or(0)) + "/stat");
  std::string text;
  std::getline(file, text);
  std::vector<std::string> words;
  std::string_view rest = std::string_view(text).substr(text.rfind(')') + 1);
  while (!rest.empty()) {
    rest.remove_prefix(std::min(rest.size(), rest.find_first_not_of(' ')));
    const std::size_t length = std::min(rest.size(), rest.find(' '));
    words.emplace_back(rest.substr(0, length));
    rest.remove_prefix(length);
  }
  return words;
}

bool MediaProcess::isStopped() const {
  const auto words = status();
  return !words.empty() && (words[0] == "T" || words[0] == "t");
}

// Pages that it has touched and time that it has used, as the system counts them: in any language alike.
std::uint64_t MediaProcess::signsOfLife() const {
  const auto words = status();
  std::uint64_t sum = 0;
  for (std::size_t word = 7; word <= 12 && word < words.size(); ++word) {
    std::uint64_t count = 0;
    std::from_chars(words[word].data(), words[word].data() + words[word].size(), count);
    sum += count;
  }
  return sum;
}

void MediaProcess::end() {
  if (process_) {
    syscall(SYS_pidfd_send_signal, process_.get(), SIGKILL, nullptr, 0);
  } else {
    shutdown(socket_.get(), SHUT_RDWR);
  }
}
