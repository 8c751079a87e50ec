#pragma once

#include <httplib.h>

#include <chrono>
#include <condition_variable>
#include <functional>
#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <utility>
#include <vector>

// A web server on a free port of 127.0.0.1, for tests against real connections: a thread for each, kept alive between
// requests, with ranges, HEAD and the faults that real servers have. Any thread may call it; all threads end with it.
// The library reads requests, makes answers and cuts ranges out of them; the faults are in what sends them.
class HTTPServer : httplib::Server {
 public:
  struct Request : httplib::Request {  // the path has no query; the target is both, as sent
    std::chrono::steady_clock::time_point at;
  };

  struct Reply {
    int status = 200;
    std::string body{};
    std::string type = "text/plain";
    std::vector<std::pair<std::string, std::string>> headers{};
    std::string file{};  // served in place of `body`, whole or the range asked for

    // Faults.
    bool ranges = true;                       // otherwise they are not offered, and who asks for one gets the whole
    bool chunked = false;                     // no length is told; the counts below are then of what goes over the wire
    bool silent = false;                      // the request is read, nothing is ever sent
    std::chrono::milliseconds pause{0};       // before each byte
    std::optional<std::size_t> cutAfter{};    // bytes of the body; then the connection is closed
    std::optional<std::size_t> stallAfter{};  // bytes of the body; then silence
    std::optional<std::chrono::milliseconds> stallFor{};  // the silence ends after this, and the rest follows
    bool endless = false;                                 // `body` again and again, without a length
  };
  using Handler = std::function<Reply(const Request&)>;

  HTTPServer();
  ~HTTPServer();

  // What a path gives from now on, whatever its query. Others give 404.
  void on(const std::string& path, Handler handler);
  void on(const std::string& path, Reply reply) {
    on(path, [reply = std::move(reply)](const Request&) { return reply; });
  }
  void on(const std::string& path, std::string body, std::string type = "text/plain") {
    on(path, Reply{.body = std::move(body), .type = std::move(type)});
  }
  void onFile(const std::string& path, std::string file, std::string type) {
    on(path, Reply{.type = std::move(type), .file = std::move(file)});
  }
  // For every path that has nothing of its own.
  void onOthers(Handler handler) { on("", std::move(handler)); }

  std::string url(const std::string& target) const { return "http://127.0.0.1:" + std::to_string(port_) + target; }
  // Requests so far, in the order in which their heads were read; of one path when given.
  std::vector<Request> log() const;
  std::size_t count(const std::string& path) const;
  // Connections accepted so far.
  int connections() const;
  // Waits for at least that many requests; false when they have not come within the bound.
  bool waitForRequests(std::size_t count, std::chrono::milliseconds bound) const;

  // A URL whose port refuses connections.
  static std::string refusingURL() { return HTTPServer().url("/"); }

 private:
  class Connection;
  bool process_and_close_socket(socket_t socket) override;
  Reply replyTo(httplib::Request& request);
  // False when the server stopped meanwhile.
  bool pause(std::chrono::milliseconds duration);

  int port_ = 0;
  mutable std::mutex mutex_;
  mutable std::condition_variable changed_;
  std::map<std::string, Handler> handlers_;  // "" for other paths
  std::vector<Request> log_;
  std::vector<int> sockets_;  // of open connections
  int connections_ = 0;
  bool isStopping_ = false;
  std::thread thread_;
};
