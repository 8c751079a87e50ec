#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <string>

#include "platform/avfoundation/hls/HLSPlaylist.h"
#include "platform/dispatch/RunLoop.h"
#include "platform/foundation/HTTPStream.h"

// Fetches one resource, or a part of it, to whoever takes its bytes: asked again when its server is busy or the
// connection is lost, from where it stopped, until it is here or has failed.
//
// The thread that drives the streams. It does nothing but in turn(), and hand on bytes in between.
class HLSTransfer final : HTTPStreamClient {
 public:
  using Time = RunLoop::Duration;

  struct Request {
    NSURL url;
    std::optional<HLSByteRange> range = {};
    bool isSide = false;  // there are others, or something can be done without it: it is not asked for often
    Time timeLimit{0};    // for all of it; 0 for none
  };
  struct Sink {
    // Whether there is room for so many bytes; when not, they come again after goOn().
    std::function<bool(std::size_t)> hasRoom;
    // False when they are not what was expected: the transfer has failed.
    std::function<bool(std::span<const std::byte>)> take;
  };
  enum class State { running, done, failed };

  HLSTransfer(HTTPStreams& streams, Request request, Sink sink);
  ~HLSTransfer() override = default;

  // Does what is due. Returns when the next turn is needed at the latest, if nothing else happens.
  std::optional<Time> turn(Time now);
  State state() const { return state_; }
  const NSURL& url() const { return url_; }  // where it came from, after redirects
  const NSError& error() const { return error_; }
  // The server has answered that it does not have it, or with something else; nothing is wrong with the line.
  bool isRefused() const { return isRefused_; }

  // There may be room again.
  void goOn();
  std::uint64_t received() const { return received_; }
  // How long it has been receiving, pauses apart; and of how much in all, when that was told.
  Time receiving(Time now) const;
  std::optional<std::uint64_t> expected() const { return length_; }

 private:
  bool streamDidAnswer(const HTTPAnswer& answer) override;
  Taken streamDidReceive(std::span<const std::byte> bytes) override;
  void streamDidEnd(std::optional<NSError> error) override;

  enum class Outcome { complete, gone, busy, lost, senseless };
  void ask(Time now);
  void lose();
  void settle(Time now);
  void again(Time now, int attemptsLimit);
  std::uint64_t first() const { return request_.range ? request_.range->first : 0; }

  HTTPStreams& streams_;
  const Request request_;
  const Sink sink_;
  NSURL url_;
  State state_ = State::running;
  NSError error_;
  bool isRefused_ = false;

  std::unique_ptr<HTTPStream> stream_;
  std::uint64_t received_ = 0;  // of what was asked for
  std::uint64_t skipped_ = 0;   // at the beginning of this answer, of what is to be skipped
  std::optional<std::uint64_t> toSkip_;
  std::optional<std::uint64_t> length_;  // of all that was asked for
  std::optional<Outcome> outcome_;       // of this answer, when it is known
  std::optional<std::chrono::seconds> retryAfter_;
  bool hasEnded_ = false, isPaused_ = false, hasHeard_ = false;
  Time heardAt_{0}, askAt_{0}, pause_;
  Time countedSince_{0}, counted_{0}, beganAt_{-1};
  bool isCounted_ = false;
  int attempts_ = 0;
  int cuts_ = 0;  // times that it was lost
};

// A small resource, held whole.
class HLSDocument {
 public:
  HLSDocument(HTTPStreams& streams, HLSTransfer::Request request, std::size_t bytesLimit);
  std::optional<HLSTransfer::Time> turn(HLSTransfer::Time now) { return transfer_.turn(now); }
  HLSTransfer::State state() const { return transfer_.state(); }
  const HLSTransfer& transfer() const { return transfer_; }
  const std::string& text() const { return text_; }

 private:
  std::string text_;
  HLSTransfer transfer_;
};
