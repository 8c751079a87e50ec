#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <random>
#include <string>
#include <vector>

#include "platform/avfoundation/engine/MediaEngine.h"
#include "platform/dispatch/PlainRunLoop.h"
#include "tests/support/HTTPServer.h"

// What every kind of load shares: a server with the sample clips, dice, and the count of what went wrong.
class Load {
 public:
  // With the folder of the clips, and a seed.
  Load(std::string samples, unsigned seed);

  // "name" is a clip's file, "@name" the same clip from the server.
  NSURL urlOf(const std::string& clip) const;
  HTTPServer::Reply replyOf(const std::string& name) const;
  std::size_t sizeOf(const std::string& name) const;
  // 0 to `limit` - 1.
  int below(int limit) { return std::uniform_int_distribution(0, limit - 1)(dice_); }

  // Says and counts what is not as it should be.
  void note(const std::string& what);
  int faults() const { return faults_; }

  // Waits until threads, descriptors and processes are what they were before; a fault when they stay.
  void comeToRest();

  PlainRunLoop loop;
  HTTPServer server;

 private:
  struct Belongings {
    std::ptrdiff_t threads, descriptors, processes;
    static Belongings now();
  };

  const std::string samples_;
  std::mt19937 dice_;
  int faults_ = 0;
  std::optional<Belongings> before_;
};

// One engine, where the product puts it, and what it has told.
struct Item {
  Item(Load& load, std::string name);

  bool isTold() const { return isReady || failure; }
  double position() const { return CMTimeGetSeconds(engine->position()); }
  double age() const;

  const std::string clip;
  bool isReady = false, hasEnded = false;
  std::optional<NSError> failure;
  std::function<void()> atReady;
  std::unique_ptr<MediaEngine> engine;

 private:
  const std::chrono::steady_clock::time_point began_ = std::chrono::steady_clock::now();
};
