#include "tests/support/HTTPServer.h"

#include <fcntl.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <fstream>
#include <sstream>
#include <string_view>

namespace {

// A thread for each connection: one that stalls must not hold the others up.
class ThreadEach final : public httplib::TaskQueue {
 public:
  void enqueue(std::function<void()> work) override { threads_.emplace_back(std::move(work)); }
  void shutdown() override {
    for (auto& thread : threads_) thread.join();
  }

 private:
  std::vector<std::thread> threads_;
};

void fill(httplib::Response& response, const HTTPServer::Reply& reply) {
  std::ostringstream file;
  if (!reply.file.empty()) file << std::ifstream(reply.file, std::ios::binary).rdbuf();
  const std::string body = reply.file.empty() ? reply.body : file.str();
  if (reply.status != 200) response.status = reply.status;  // a part has one of its own
  for (const auto& [name, value] : reply.headers) response.set_header(name, value);
  if (reply.ranges) response.set_header("Accept-Ranges", "bytes");
  const auto provider = [body, again = reply.endless](std::size_t, httplib::DataSink& sink) {
    const bool went = sink.write(body.data(), body.size());
    if (!again) sink.done();
    return went;
  };
  if (reply.endless) {
    response.set_content_provider(reply.type, provider);
  } else if (reply.chunked) {
    response.set_chunked_content_provider(reply.type, provider);
  } else {
    response.set_content(body, reply.type);
  }
}

}  // namespace

// One connection. What the library sends passes through here: the head in one piece, then the body.
class HTTPServer::Connection final : public httplib::Stream {
 public:
  Connection(HTTPServer& server, int socket) : server_(server), socket_(socket) {}

  // The reply at hand, of the connection of this thread.
  static thread_local Reply reply;
  void begin(Reply next) {
    reply = std::move(next);
    isHead_ = true;
    sent_ = 0;
  }

  bool is_readable() const override { return true; }
  bool is_writable() const override { return !isBroken_; }
  socket_t socket() const override { return socket_; }
  void get_remote_ip_and_port(std::string&, int&) const override {}
  void get_local_ip_and_port(std::string&, int&) const override {}

  ssize_t read(char* to, size_t size) override { return ::recv(socket_, to, size, 0); }
  ssize_t write(const char* from, size_t size) override {
    const std::string_view bytes(from, size);
    const auto due = reply.cutAfter ? reply.cutAfter : reply.stallAfter;
    const auto before = std::exchange(sent_, isHead_ ? 0 : sent_ + size);
    if (std::exchange(isHead_, false)) {
      isBroken_ = !send(bytes);
    } else if (due && before <= *due && *due <= sent_) {
      isBroken_ = !send(bytes.substr(0, *due - before)) || reply.cutAfter ||
                  !server_.pause(reply.stallFor.value_or(std::chrono::hours(1))) || !send(bytes.substr(*due - before));
    } else {
      isBroken_ = isBroken_ || !send(bytes);
    }
    return isBroken_ ? -1 : static_cast<ssize_t>(size);
  }

 private:
  bool send(std::string_view bytes) {
    while (!bytes.empty()) {
      if (!server_.pause(reply.pause)) return false;
      const auto count = ::send(socket_, bytes.data(), reply.pause.count() ? 1 : bytes.size(), MSG_NOSIGNAL);
      if (count <= 0) return false;
      bytes.remove_prefix(static_cast<std::size_t>(count));
    }
    return true;
  }

  HTTPServer& server_;
  const int socket_;
  bool isHead_ = false;
  bool isBroken_ = false;
  std::size_t sent_ = 0;  // of the body
};

thread_local HTTPServer::Reply HTTPServer::Connection::reply;

HTTPServer::HTTPServer() {
  new_task_queue = [] { return new ThreadEach; };
  set_tcp_nodelay(true);
  constexpr int never = 3600;
  set_keep_alive_timeout(never).set_keep_alive_max_count(never).set_read_timeout(never).set_write_timeout(never);
  set_pre_routing_handler([](const httplib::Request&, httplib::Response& response) {
    fill(response, Connection::reply);
    return HandlerResponse::Handled;
  });
  port_ = bind_to_any_port("127.0.0.1");
  ::listen(svr_sock_, 512);  // the library lets few connections wait
  thread_ = std::thread([this] { listen_after_bind(); });
  while (!is_running()) std::this_thread::yield();
}

HTTPServer::~HTTPServer() {
  {
    std::lock_guard lock(mutex_);
    isStopping_ = true;
    for (const int socket : sockets_) ::shutdown(socket, SHUT_RDWR);
  }
  changed_.notify_all();
  stop();
  thread_.join();
}

bool HTTPServer::process_and_close_socket(socket_t socket) {
  ::fcntl(socket, F_SETFD, FD_CLOEXEC);
  {
    std::lock_guard lock(mutex_);
    ++connections_;
    sockets_.push_back(socket);
    if (isStopping_) ::shutdown(socket, SHUT_RDWR);
  }
  Connection connection(*this, socket);
  const auto prepare = [&](httplib::Request& request) { connection.begin(replyTo(request)); };
  for (bool isLast = false; !isLast && connection.is_writable() && !connection.reply.endless;) {
    if (!process_request(connection, false, isLast, prepare)) break;
  }
  std::lock_guard lock(mutex_);
  std::erase(sockets_, socket);
  ::shutdown(socket, SHUT_RDWR);
  ::close(socket);
  return true;
}

HTTPServer::Reply HTTPServer::replyTo(httplib::Request& request) {
  const Request asked{{request}, std::chrono::steady_clock::now()};
  Handler handler;
  {
    std::lock_guard lock(mutex_);
    log_.push_back(asked);
    const auto found = handlers_.find(asked.path);
    handler = found == handlers_.end() ? handlers_[""] : found->second;
  }
  changed_.notify_all();
  Reply reply = handler ? handler(asked) : Reply{.status = 404};
  request.headers.erase("Accept-Encoding");  // what is packed, the test has packed
  if (!reply.ranges || reply.status != 200) request.ranges.clear();
  if (reply.silent) pause(std::chrono::hours(1));
  return reply;
}

bool HTTPServer::pause(std::chrono::milliseconds duration) {
  std::unique_lock lock(mutex_);
  return !changed_.wait_for(lock, duration, [this] { return isStopping_; });
}

void HTTPServer::on(const std::string& path, Handler handler) {
  std::lock_guard lock(mutex_);
  handlers_[path] = std::move(handler);
}

std::vector<HTTPServer::Request> HTTPServer::log() const {
  std::lock_guard lock(mutex_);
  return log_;
}

std::size_t HTTPServer::count(const std::string& path) const {
  const auto all = log();
  return static_cast<std::size_t>(std::ranges::count(all, path, &Request::path));
}

int HTTPServer::connections() const {
  std::lock_guard lock(mutex_);
  return connections_;
}

bool HTTPServer::waitForRequests(std::size_t count, std::chrono::milliseconds bound) const {
  std::unique_lock lock(mutex_);
  return changed_.wait_for(lock, bound, [&] { return log_.size() >= count; });
}
