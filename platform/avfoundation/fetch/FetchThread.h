#pragma once

#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <thread>
#include <vector>

#include "platform/avfoundation/bytes/ByteStore.h"
#include "platform/dispatch/RunLoop.h"
#include "platform/foundation/HTTPStream.h"
#include "platform/foundation/NSURL.h"

// Something to be fetched into a store whose reader wakes it. That thread's.
class FetchWork {
 public:
  using Time = RunLoop::Duration;

  virtual ~FetchWork() = default;
  // Does what is due. Returns when the next turn is needed at the latest, if nothing else happens.
  virtual std::optional<Time> turn(Time now) = 0;
  // Becomes readable when a turn is needed because of the reader; takeWake() ends that, before the turn.
  virtual int wakeDescriptor() const = 0;
  virtual void takeWake() = 0;
};

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
  // The same of other work, made on the thread.
  using Make = std::function<std::unique_ptr<FetchWork>(HTTPStreams& streams)>;
  std::uint64_t add(Make make);
  void remove(std::uint64_t number);

 private:
  struct State;
  void post(std::function<void(State&)> command);

  const std::shared_ptr<State> state_;
  std::uint64_t lastNumber_ = 0;
  std::thread thread_;
};
