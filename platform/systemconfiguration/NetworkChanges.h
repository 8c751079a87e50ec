#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <thread>

// Tells of every change of the kernel's interfaces, addresses and routes, in the network namespace of the thread that
// asked first. One thread for all who listen. Any thread may call it, but not from inside a listener.
class NetworkChanges {
 public:
  using Listener = std::function<void()>;
  using Token = std::uint64_t;

  // The one that all share as long as anybody holds it; nil when the kernel does not tell.
  static std::shared_ptr<NetworkChanges> shared();
  NetworkChanges(const NetworkChanges&) = delete;
  NetworkChanges& operator=(const NetworkChanges&) = delete;
  ~NetworkChanges();

  // Runs `listener` on the own thread, once for changes that come together. It must only hand over.
  Token add(Listener listener);
  // After the call the listener does not run, and is gone.
  void remove(Token token);

 private:
  NetworkChanges(int socket, int stop);
  void run();

  const int socket_;
  const int stop_;  // an event descriptor
  std::mutex mutex_;
  std::map<Token, Listener> listeners_;
  Token lastToken_ = 0;
  std::thread thread_;
};
