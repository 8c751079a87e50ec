#pragma once

#include <fcntl.h>

#include <algorithm>
#include <functional>
#include <vector>

#include "platform/avfoundation/fetch/Fetch.h"

// A server that is played, and time that is moved: every byte of a film has a value that its place tells.
inline std::byte byteAt(std::uint64_t place) {
  return static_cast<std::byte>((place * 0x9E3779B97F4A7C15) >> 56);
}

// How a played server answers one request.
struct PlayedAnswer {
  HTTPAnswer head = {};
  bool isAnswered = true;              // else the connection ends, or is silent, before there is any
  std::uint64_t from = 0, behind = 0;  // the body's places
  std::optional<NSError> error = {};   // how it ends
  bool isSilent = false;               // instead of the end
};

class PlayedServer final : public HTTPStreams {
 public:
  struct Request {
    std::uint64_t place = 0;  // asked for
    bool hasRange = false;
    std::string ifRange = {};
    Fetch::Time at{0};
  };
  std::function<PlayedAnswer(const Request&)> answer;
  std::vector<Request> log;
  Fetch::Time now{0};

  std::unique_ptr<HTTPStream> start(HTTPStreamRequest request, HTTPStreamClient& client) override {
    Request asked{.at = now};
    for (const std::string& header : request.headers) {
      if (header.starts_with("Range: bytes=")) asked.place = std::stoull(header.substr(13));
      asked.hasRange = asked.hasRange || header.starts_with("Range: ");
      if (header.starts_with("If-Range: ")) asked.ifRange = header.substr(10);
    }
    log.push_back(asked);
    return std::make_unique<Stream>(*this, client, answer(asked));
  }

  // Moves every stream on by one delivery; false when none could.
  bool pump() {
    bool has = false;
    const auto all = streams_;
    for (Stream* stream : all) has = (std::ranges::count(streams_, stream) && stream->pump()) || has;
    return has;
  }
  std::size_t open() const { return streams_.size(); }

 private:
  class Stream final : public HTTPStream {
   public:
    Stream(PlayedServer& server, HTTPStreamClient& client, PlayedAnswer answer)
        : server_(server), client_(client), answer_(std::move(answer)) {
      server_.streams_.push_back(this);
    }
    ~Stream() override { std::erase(server_.streams_, this); }
    void resume() override { isPaused_ = false; }

    bool pump() {
      if (hasEnded_ || isPaused_) return false;
      const bool goesOn = !answer_.isAnswered || hasAnswered_ || client_.streamDidAnswer(answer_.head);
      hasAnswered_ = true;
      const std::uint64_t count = std::min<std::uint64_t>(answer_.behind - answer_.from, 16 * 1024);
      if (goesOn && answer_.isAnswered && count > 0) {
        std::vector<std::byte> bytes(count);
        for (std::uint64_t i = 0; i < count; ++i) bytes[i] = byteAt(answer_.from + i);
        isPaused_ = client_.streamDidReceive(bytes) == HTTPStreamClient::Taken::none;
        if (!isPaused_) answer_.from += count;
        return !isPaused_;
      }
      if (goesOn && answer_.isSilent) return false;
      hasEnded_ = true;
      client_.streamDidEnd(goesOn ? answer_.error : std::nullopt);
      return true;
    }

   private:
    PlayedServer& server_;
    HTTPStreamClient& client_;
    PlayedAnswer answer_;
    bool hasAnswered_ = false, hasEnded_ = false, isPaused_ = false;
  };
  std::vector<Stream*> streams_;
};

// A film on a played server, a store, what fills it, and a reader of this thread that never sleeps: it says what it
// waits for, and time passes.
struct FetchRig {
  explicit FetchRig(std::size_t bytes = 16 << 20) : store(ByteStore::make(bytes)) {
    const int copy = ::fcntl(store->descriptors().control, F_DUPFD_CLOEXEC, 0);
    controlMemory = SharedMemory::adopt(Descriptor(copy), sizeof(ByteStoreLayout::Control), true);
    reader = store->makeReader();
    reader->setInterrupted(true);
    server.answer = [this](const PlayedServer::Request& request) { return part(request.place); };
  }

  ByteStoreLayout::Control& control() { return *reinterpret_cast<ByteStoreLayout::Control*>(controlMemory.data()); }
  // The film from a place on, as an able server answers.
  PlayedAnswer part(std::uint64_t place) const {
    PlayedAnswer answer{.from = place, .behind = length};
    answer.head.status = 206;
    answer.head.url = "http://media.example/film.mp4";
    answer.head.headers = {{"content-range", "bytes " + std::to_string(place) + "-" + std::to_string(length - 1) + "/" +
                                                 std::to_string(length)},
                           {"etag", "\"one\""}};
    return answer;
  }
  PlayedAnswer whole() const {
    PlayedAnswer answer{.behind = length};
    answer.head.status = 200;
    answer.head.length = length;
    return answer;
  }
  static PlayedAnswer refusal(long status) {
    PlayedAnswer answer;
    answer.head.status = status;
    return answer;
  }
  static PlayedAnswer lost() { return {.isAnswered = false, .error = NSError{NSURLErrorDomain, -1005, "reset"}}; }

  // What is due now, and then as much time as nothing happens in, up to `patience`.
  void step(Fetch::Time patience = std::chrono::seconds(1)) {
    if (!fetch) fetch = std::make_unique<Fetch>(*NSURL::URLWithString("http://media.example/film.mp4"), store, server);
    const auto due = fetch->turn(server.now);
    if (server.pump()) return;
    server.now = std::max(server.now, std::min(due.value_or(Fetch::Time::max()), server.now + patience));
  }
  void pass(Fetch::Time time) {
    for (const auto end = server.now + time; server.now < end;) step(end - server.now);
    step(Fetch::Time(0));
  }
  // Reads up to `count` bytes at a place, within a minute; returns how many were right before the first wrong one.
  std::uint64_t read(std::uint64_t place, std::uint64_t count) {
    std::uint64_t right = 0;
    std::vector<std::byte> bytes(64 * 1024);
    for (const auto bound = server.now + std::chrono::minutes(1); right < count && server.now < bound;) {
      std::size_t here = 0;
      outcome = reader->read(place + right, std::span(bytes).first(std::min(bytes.size(), count - right)), here);
      control().isWaiting = outcome == MediaBytes::Outcome::interrupted;
      if (outcome == MediaBytes::Outcome::interrupted) {
        control().place = place + right;
        step();
        continue;
      }
      if (outcome != MediaBytes::Outcome::done) break;
      for (std::size_t i = 0; i < here; ++i, ++right) {
        if (bytes[i] != byteAt(place + right)) return right;
      }
    }
    return right;
  }

  std::uint64_t length = 3'000'000;
  PlayedServer server;
  std::shared_ptr<ByteStore> store;
  SharedMemory controlMemory;
  std::shared_ptr<MediaBytes> reader;
  MediaBytes::Outcome outcome = MediaBytes::Outcome::done;
  std::unique_ptr<Fetch> fetch;
};
