#pragma once

#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

#include "platform/avfoundation/bytes/ByteStore.h"
#include "platform/foundation/NSURL.h"

// The one thread that fetches media, for as long as there is any to fetch. Main thread.
class FetchThread {
 public:
  FetchThread();
  FetchThread(const FetchThread&) = delete;
  FetchThread& operator=(const FetchThread&) = delete;
  ~FetchThread();

  // The process's; it ends with whoever holds it last.
  static std::shared_ptr<FetchThread> shared();

  // Fetches into a store from now on. Returns a number for remove(), after which no request for it is made.
  std::uint64_t add(const NSURL& url, std::shared_ptr<ByteStore> store);
  void remove(std::uint64_t number);

 private:
  struct State;
  void post(std::function<void(State&)> command);

  const std::shared_ptr<State> state_;
  std::uint64_t lastNumber_ = 0;
  std::thread thread_;
};
