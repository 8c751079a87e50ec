#pragma once

#include <httplib.h>

#include <atomic>
#include <string>
#include <thread>

// A web server with TLS on a free port of 127.0.0.1 whose certificate nobody but itself has signed: good for a hundred
// years, for 127.0.0.1 and of a real length, so that the missing signature is all that is wrong. Answers every path.
class UntrustedServer {
 public:
  explicit UntrustedServer(const std::string& body) {
    http_.Get(".*", [this, body](const httplib::Request&, httplib::Response& response) {
      ++requests_;
      response.set_content(body, "text/plain");
    });
    port_ = http_.bind_to_any_port("127.0.0.1");
    thread_ = std::thread([this] { http_.listen_after_bind(); });
    while (!http_.is_running()) std::this_thread::yield();
  }
  ~UntrustedServer() {
    http_.stop();
    thread_.join();
  }

  std::string url(const std::string& path) const { return "https://127.0.0.1:" + std::to_string(port_) + path; }
  // Requests that came through in spite of it.
  int requests() const { return requests_; }

 private:
  httplib::SSLServer http_{YMR_UNTRUSTED ".pem", YMR_UNTRUSTED ".key"};
  std::atomic<int> requests_ = 0;
  int port_ = 0;
  std::thread thread_;
};
