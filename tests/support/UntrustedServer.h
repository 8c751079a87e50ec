#pragma once

#include <memory>
#include <string>

// A web server with TLS on a free port of 127.0.0.1 whose certificate nobody but itself has signed: good for a hundred
// years, for 127.0.0.1 and of a real length, so that the missing signature is all that is wrong. Answers every path.
class UntrustedServer {
 public:
  explicit UntrustedServer(std::string body);
  UntrustedServer(const UntrustedServer&) = delete;
  UntrustedServer& operator=(const UntrustedServer&) = delete;
  ~UntrustedServer();

  std::string url(const std::string& path) const;
  // Requests that came through in spite of it.
  int requests() const;

 private:
  struct Server;
  std::unique_ptr<Server> server_;
};
