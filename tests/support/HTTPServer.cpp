#include "tests/support/HTTPServer.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <cctype>
#include <cstdio>
#include <fstream>
#include <sstream>
#include <stdexcept>
#include <string_view>

namespace {

int boundSocket(int& port) {
  const int socket = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  socklen_t length = sizeof address;
  if (socket < 0 || ::bind(socket, reinterpret_cast<sockaddr*>(&address), length) != 0 ||
      ::getsockname(socket, reinterpret_cast<sockaddr*>(&address), &length) != 0) {
    throw std::runtime_error("HTTPServer: no port of 127.0.0.1 can be had");
  }
  port = ntohs(address.sin_port);
  return socket;
}

std::string lowered(std::string text) {
  std::transform(text.begin(), text.end(), text.begin(),
                 [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
  return text;
}

// First and last byte of "bytes=a-b" within `size`.
std::optional<std::pair<std::size_t, std::size_t>> range(const HTTPServer::Request& request, std::size_t size) {
  const auto header = request.headers.find("range");
  if (header == request.headers.end() || size == 0) return std::nullopt;
  unsigned long first = 0, last = size - 1;
  if (std::sscanf(header->second.c_str(), "bytes=%lu-%lu", &first, &last) < 1) return std::nullopt;
  return std::pair<std::size_t, std::size_t>{first, std::min<std::size_t>(last, size - 1)};
}

std::string contents(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  std::ostringstream text;
  text << file.rdbuf();
  return text.str();
}

}  // namespace

HTTPServer::HTTPServer() : listener_(boundSocket(port_)) {
  ::listen(listener_, 512);
  acceptor_ = std::thread([this] { accept(); });
}

HTTPServer::~HTTPServer() {
  stop();
}

void HTTPServer::stop() {
  {
    std::lock_guard lock(mutex_);
    if (stopping_) return;
    stopping_ = true;
    for (const auto& [number, socket] : sockets_) ::shutdown(socket, SHUT_RDWR);
    ::shutdown(listener_, SHUT_RDWR);
  }
  changed_.notify_all();
  acceptor_.join();
  ::close(listener_);
  for (auto& thread : threads_) thread.join();
}

void HTTPServer::on(const std::string& path, Handler handler) {
  std::lock_guard lock(mutex_);
  handlers_[path] = std::move(handler);
}

void HTTPServer::on(const std::string& path, Reply reply) {
  on(path, [reply = std::move(reply)](const Request&) { return reply; });
}

void HTTPServer::on(const std::string& path, std::string body, std::string type) {
  on(path, Reply{.body = std::move(body), .type = std::move(type)});
}

void HTTPServer::onFile(const std::string& path, std::string file, std::string type) {
  on(path, Reply{.type = std::move(type), .file = std::move(file)});
}

void HTTPServer::onRedirect(const std::string& path, std::string location, int status) {
  on(path, Reply{.status = status, .headers = {{"Location", std::move(location)}}});
}

void HTTPServer::onOthers(Handler handler) {
  std::lock_guard lock(mutex_);
  others_ = std::move(handler);
}

std::string HTTPServer::url(const std::string& target) const {
  return "http://127.0.0.1:" + std::to_string(port_) + target;
}

std::vector<HTTPServer::Request> HTTPServer::log() const {
  std::lock_guard lock(mutex_);
  return log_;
}

std::size_t HTTPServer::count(const std::string& path) const {
  std::lock_guard lock(mutex_);
  return static_cast<std::size_t>(
      std::count_if(log_.begin(), log_.end(), [&](const Request& request) { return request.path == path; }));
}

int HTTPServer::connections() const {
  std::lock_guard lock(mutex_);
  return connections_;
}

bool HTTPServer::waitForRequests(std::size_t count, std::chrono::milliseconds bound) const {
  std::unique_lock lock(mutex_);
  return changed_.wait_for(lock, bound, [&] { return log_.size() >= count; });
}

std::string HTTPServer::refusingURL() {
  int port = 0;
  ::close(boundSocket(port));
  return "http://127.0.0.1:" + std::to_string(port) + "/";
}

void HTTPServer::accept() {
  for (;;) {
    const int socket = ::accept4(listener_, nullptr, nullptr, SOCK_CLOEXEC);
    std::lock_guard lock(mutex_);
    if (stopping_) {
      if (socket >= 0) ::close(socket);
      return;
    }
    if (socket < 0) continue;
    const int noDelay = 1;
    ::setsockopt(socket, IPPROTO_TCP, TCP_NODELAY, &noDelay, sizeof noDelay);
    const int number = ++connections_;
    sockets_[number] = socket;
    threads_.emplace_back([this, socket, number] { serve(socket, number); });
  }
}

void HTTPServer::serve(int socket, int number) {
  std::string buffered;
  while (auto request = read(socket, buffered)) {
    Handler handler;
    {
      std::lock_guard lock(mutex_);
      if (stopping_) break;
      log_.push_back(*request);
      const auto found = handlers_.find(request->path);
      handler = found == handlers_.end() ? others_ : found->second;
    }
    changed_.notify_all();
    if (!answer(socket, *request, handler ? handler(*request) : Reply{.status = 404})) break;
  }
  std::lock_guard lock(mutex_);
  sockets_.erase(number);
  ::close(socket);
}

std::optional<HTTPServer::Request> HTTPServer::read(int socket, std::string& buffered) const {
  std::size_t end;
  while ((end = buffered.find("\r\n\r\n")) == std::string::npos) {
    char block[4096];
    const auto count = ::recv(socket, block, sizeof block, 0);
    if (count <= 0) return std::nullopt;
    buffered.append(block, static_cast<std::size_t>(count));
  }
  std::istringstream head(buffered.substr(0, end));
  buffered.erase(0, end + 4);
  Request request;
  request.at = std::chrono::steady_clock::now();
  std::string line;
  head >> request.method >> request.target;
  std::getline(head, line);
  request.path = request.target.substr(0, request.target.find('?'));
  while (std::getline(head, line)) {
    if (!line.empty() && line.back() == '\r') line.pop_back();
    const auto colon = line.find(':');
    if (colon == std::string::npos) continue;
    const auto value = line.find_first_not_of(' ', colon + 1);
    request.headers[lowered(line.substr(0, colon))] = value == std::string::npos ? "" : line.substr(value);
  }
  return request;
}

bool HTTPServer::answer(int socket, const Request& request, const Reply& reply) {
  if (reply.silent) return pause(std::chrono::hours(1));
  const std::string whole = reply.file.empty() ? reply.body : contents(reply.file);
  std::string_view body = whole;
  int status = reply.status;
  std::string head;
  const bool mayBePart = reply.ranges && !reply.endless && status == 200;
  if (const auto part = range(request, whole.size()); part && mayBePart) {
    status = part->first > part->second ? 416 : 206;
    body = status == 206 ? body.substr(part->first, part->second - part->first + 1) : std::string_view();
    head += "Content-Range: bytes " + std::to_string(part->first) + "-" + std::to_string(part->second) + "/" +
            std::to_string(whole.size()) + "\r\n";
  }
  head = "HTTP/1.1 " + std::to_string(status) + (status < 400 ? " Fine" : " Fault") + "\r\n" + head;
  std::string chunks;
  if (reply.chunked) {
    std::ostringstream text;
    text << std::hex << body.size() << "\r\n" << body << "\r\n0\r\n\r\n";
    chunks = std::move(text).str();
    body = chunks;
    head += "Transfer-Encoding: chunked\r\n";
  } else if (!reply.endless && status != 204) {
    head += "Content-Length: " + std::to_string(body.size()) + "\r\n";
  }
  head += "Content-Type: " + reply.type + "\r\n";
  if (reply.ranges) head += "Accept-Ranges: bytes\r\n";
  if (reply.endless) head += "Connection: close\r\n";
  for (const auto& [name, value] : reply.headers) head += name + ": " + value + "\r\n";
  head += "\r\n";
  const bool isPlain = reply.headPause.count() == 0 && reply.bodyPause.count() == 0 && !reply.endless &&
                       !reply.cutAfter && !reply.stallAfter && request.method != "HEAD" && status != 204;
  if (isPlain) return sendAll(socket, head += body, {});
  if (!sendAll(socket, head, reply.headPause)) return false;
  if (request.method == "HEAD" || status == 204) return true;
  if (reply.stallAfter && reply.stallFor && *reply.stallAfter < body.size()) {
    return sendAll(socket, body.substr(0, *reply.stallAfter), reply.bodyPause) && pause(*reply.stallFor) &&
           sendAll(socket, body.substr(*reply.stallAfter), reply.bodyPause);
  }
  if (const auto limit = reply.cutAfter ? reply.cutAfter : reply.stallAfter) body = body.substr(0, *limit);
  do {
    if (!sendAll(socket, body, reply.bodyPause)) return false;
  } while (reply.endless);
  if (reply.stallAfter) pause(std::chrono::hours(1));
  return !reply.cutAfter && !reply.stallAfter;
}

bool HTTPServer::sendAll(int socket, std::string_view bytes, std::chrono::milliseconds before) {
  while (!bytes.empty()) {
    if (!pause(before)) return false;
    const auto count = ::send(socket, bytes.data(), before.count() ? 1 : bytes.size(), MSG_NOSIGNAL);
    if (count <= 0) return false;
    bytes.remove_prefix(static_cast<std::size_t>(count));
  }
  return true;
}

bool HTTPServer::pause(std::chrono::milliseconds duration) {
  std::unique_lock lock(mutex_);
  return !changed_.wait_for(lock, duration, [this] { return stopping_; });
}
