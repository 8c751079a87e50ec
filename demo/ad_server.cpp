// The demo's ad server, on a free port of 127.0.0.1: it answers ad tags, clips and tracking requests, prints every
// request on standard error, and lives as long as the command that it runs.
//
//   ymr_ad_server TAGS CLIPS COMMAND [ARGUMENT]...
//
// TAGS and CLIPS are folders, served under /tags/ and /clips/; every other GET is tracking. In the documents of TAGS
// and in the command's arguments "http://ad-server/" becomes the server's own address. Ends with the command's exit
// status.
#include <httplib.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>

#include <chrono>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

namespace {

constexpr int wrongUsage = 2;

class AdServer {
 public:
  // Not usable when the folders cannot be served or no port is free.
  AdServer(std::string tags, const std::string& clips) : tags_(std::move(tags)) {
    server_.set_keep_alive_max_count(1000);
    server_.set_tcp_nodelay(true);
    server_.new_task_queue = [] { return new httplib::ThreadPool(32); };  // a connection that is kept open holds one
    server_.set_pre_routing_handler([this](const httplib::Request& request, httplib::Response&) {
      print(request);
      return httplib::Server::HandlerResponse::Unhandled;
    });
    server_.set_error_handler([](const httplib::Request& request, httplib::Response& response) {
      std::fprintf(stderr, "ad server           %d for %s\n", response.status, request.target.c_str());
    });
    server_.Get("/tags/([-a-z0-9]+\\.xml)", [this](const httplib::Request& request, httplib::Response& response) {
      answerTag(request.matches[1], response);
    });
    server_.Get("/track/.*", [](const httplib::Request&, httplib::Response& response) { response.status = 204; });
    const int port = server_.set_mount_point("/clips", clips) ? server_.bind_to_any_port("127.0.0.1") : -1;
    if (port < 0) return;
    address_ = "http://127.0.0.1:" + std::to_string(port) + "/";
    thread_ = std::thread([this] { server_.listen_after_bind(); });
    while (!server_.is_running()) std::this_thread::yield();  // until then it cannot be stopped
  }

  ~AdServer() {
    if (!thread_.joinable()) return;
    server_.stop();
    thread_.join();
  }

  // Empty when the server is not usable.
  const std::string& address() const { return address_; }

  std::string addressed(std::string text) const {
    static const std::string placeholder = "http://ad-server/";
    for (std::size_t at = 0; (at = text.find(placeholder, at)) != std::string::npos; at += address_.size()) {
      text.replace(at, placeholder.size(), address_);
    }
    return text;
  }

 private:
  void answerTag(const std::string& name, httplib::Response& response) const {
    std::ifstream file(tags_ + "/" + name);
    std::ostringstream document;
    document << file.rdbuf();
    if (file) {
      response.set_content(addressed(document.str()), "application/xml");
    } else {
      response.status = 404;
    }
  }

  void print(const httplib::Request& request) const {
    const std::chrono::duration<double> since = std::chrono::steady_clock::now() - startedAt_;
    const std::string range = request.get_header_value("Range");
    std::fprintf(stderr, "ad server %7.3f s  %s %s%s%s\n", since.count(), request.method.c_str(),
                 request.target.c_str(), range.empty() ? "" : "  ", range.c_str());
  }

  const std::string tags_;
  const std::chrono::steady_clock::time_point startedAt_ = std::chrono::steady_clock::now();
  httplib::Server server_;
  std::string address_;
  std::thread thread_;
};

// Process number of the command, which gets `mask` for its signals and a process group of its own: what the terminal
// sends reaches it through this process, once. -1 when it cannot be run.
pid_t spawn(std::vector<std::string> words, const sigset_t& mask) {
  std::vector<char*> argv;
  for (auto& word : words) argv.push_back(word.data());
  argv.push_back(nullptr);
  posix_spawnattr_t attributes;
  posix_spawnattr_init(&attributes);
  posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETPGROUP);
  posix_spawnattr_setsigmask(&attributes, &mask);
  pid_t process = -1;
  const int error = posix_spawnp(&process, argv[0], nullptr, &attributes, argv.data(), environ);
  posix_spawnattr_destroy(&attributes);
  if (error == 0) return process;
  std::fprintf(stderr, "ymr_ad_server: %s: %s\n", argv[0], std::strerror(error));
  return -1;
}

// Waits for the command and hands on the signals that come meanwhile. 128 and the signal's number for a command that a
// signal ended.
int exitStatusOf(pid_t process, const sigset_t& signals) {
  for (;;) {
    int number = 0;
    if (sigwait(&signals, &number) != 0) continue;
    int status = 0;
    if (waitpid(process, &status, WNOHANG) == process) {
      return WIFSIGNALED(status) ? 128 + WTERMSIG(status) : WEXITSTATUS(status);
    }
    if (number != SIGCHLD) kill(process, number);
  }
}

}  // namespace

int main(int argc, char** argv) {
  if (argc < 4) {
    std::fputs("usage: ymr_ad_server TAGS CLIPS COMMAND [ARGUMENT]...\n", stderr);
    return wrongUsage;
  }
  // Before any thread, so that all signals wait here.
  sigset_t signals, mask;
  sigemptyset(&signals);
  for (const int number : {SIGCHLD, SIGINT, SIGTERM, SIGHUP}) sigaddset(&signals, number);
  sigprocmask(SIG_BLOCK, &signals, &mask);

  const AdServer server(argv[1], argv[2]);
  if (server.address().empty()) {
    std::fprintf(stderr, "ymr_ad_server: cannot serve %s and %s on 127.0.0.1\n", argv[1], argv[2]);
    return wrongUsage;
  }
  std::vector<std::string> command;
  for (int word = 3; word < argc; ++word) command.push_back(server.addressed(argv[word]));
  const pid_t process = spawn(std::move(command), mask);
  return process < 0 ? wrongUsage : exitStatusOf(process, signals);
}
