#pragma once

#include <chrono>
#include <condition_variable>
#include <functional>
#include <memory>
#include <mutex>
#include <thread>

#include "platform/foundation/HostLanes.h"
#include "platform/foundation/URLLoader.h"

// HTTP GETs side by side on one thread and one set of kept connections. What is asked for waits in a bounded queue
// until its host has a connection free; its time-outs count from there. Every limit that a hostile server could stretch
// is set here: protocols, redirects, time, size. Certificates are always verified, the environment's proxies are used.
//
// Any thread may call it. The destructor ends what is still running as cancelled.
class CurlTransfers {
 public:
  // Runs on the transfers' own thread, which it must not hold up.
  using Done = std::function<void(URLResponse)>;

  explicit CurlTransfers(HostLimits limits);
  CurlTransfers(const CurlTransfers&) = delete;
  CurlTransfers& operator=(const CurlTransfers&) = delete;
  ~CurlTransfers();

  // Queues a GET of an http or https URL. False, and `done` is dropped, when the queue is full.
  bool start(URLRequest request, Done done);
  // Waits until nothing waits or runs, for at most `bound`; returns whether that came about. Not on the own thread.
  bool drain(std::chrono::milliseconds bound);

 private:
  class Multi;
  struct Waiting {
    URLRequest request;
    Done done;
  };

  // What the thread works on. It shares this, since its last completion may be what lets go of the loader.
  struct State {
    explicit State(HostLimits limits);
    ~State();
    void run();

    const std::unique_ptr<Multi> multi;
    std::mutex mutex;
    std::condition_variable idle;
    HostLanes<Waiting> lanes;
    bool stopping = false;
  };

  const std::shared_ptr<State> state_;
  std::thread thread_;
};
