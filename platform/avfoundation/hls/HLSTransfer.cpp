#include "platform/avfoundation/hls/HLSTransfer.h"

#include <algorithm>
#include <charconv>

#include "platform/avfoundation/bytes/ServerErrors.h"

using namespace std::chrono_literals;

namespace {

using Time = HLSTransfer::Time;

constexpr std::chrono::milliseconds connectingLimit{4'000};
constexpr Time silenceLimit = 4s;
constexpr Time firstPause = 500ms;
constexpr std::chrono::seconds pauseLimit{8};
// How often it is asked for: what a busy server has, what is lost on the way, what it says it does not have.
constexpr int busyLimit = 4;
constexpr int lostLimit = 3;
constexpr int goneLimit = 2;
constexpr int sideLimit = 2;
// What a server begins to send and cuts off so often, or leaves off, it does not have. A line that is down does not
// answer.
constexpr int cutsLimit = 4;

// The first place of "bytes 7-99/200".
std::optional<std::uint64_t> firstOf(const HTTPAnswer& answer) {
  const std::string& range = answer.header("content-range");
  const auto digits = range.find_first_of("0123456789");
  std::uint64_t first = 0;
  if (digits == std::string::npos) return std::nullopt;
  const auto error = std::from_chars(range.data() + digits, range.data() + range.size(), first).ec;
  return error == std::errc() ? std::optional(first) : std::nullopt;
}

}  // namespace

HLSTransfer::HLSTransfer(HTTPStreams& streams, Request request, Sink sink)
    : streams_(streams), request_(std::move(request)), sink_(std::move(sink)), url_(request_.url), pause_(firstPause) {
  if (request_.range) length_ = request_.range->length;
}

std::optional<Time> HLSTransfer::turn(Time now) {
  if (state_ != State::running) return std::nullopt;
  if (std::exchange(hasHeard_, false)) heardAt_ = now;
  if (hasEnded_) settle(now);
  if (stream_ && isPaused_) {
    if (!std::exchange(isCounted_, true)) counted_ += now - countedSince_;
    heardAt_ = countedSince_ = now;
    return std::nullopt;
  }
  isCounted_ = false;
  if (beganAt_ < Time(0)) beganAt_ = now;
  const bool isLate = request_.timeLimit > Time(0) && now - beganAt_ >= request_.timeLimit;
  if (isLate) attempts_ = lostLimit;
  if (stream_ && (isLate || now - heardAt_ >= silenceLimit)) {
    error_ = unansweredError({NSURLErrorDomain, NSURLErrorTimedOut, ""}, request_.url);
    if (request_.isSide) cuts_ = attempts_ = sideLimit;  // waiting again would cost as much
    lose();
    settle(now);
  }
  if (state_ != State::running) return now;
  if (stream_) return heardAt_ + silenceLimit;
  if (now < askAt_) return askAt_;
  ask(now);
  return now + silenceLimit;
}

void HLSTransfer::ask(Time now) {
  HTTPStreamRequest request{.url = request_.url, .headers = {}, .connectingLimit = connectingLimit};
  const std::uint64_t place = first() + received_;
  if (request_.range) {
    const std::uint64_t last = request_.range->first + request_.range->length - 1;
    request.headers.push_back("Range: bytes=" + std::to_string(place) + "-" + std::to_string(last));
  } else if (place > 0) {
    request.headers.push_back("Range: bytes=" + std::to_string(place) + "-");
  }
  hasEnded_ = isPaused_ = hasHeard_ = false;
  outcome_.reset();
  toSkip_.reset();
  skipped_ = 0;
  heardAt_ = countedSince_ = now;
  stream_ = streams_.start(std::move(request), *this);
}

bool HLSTransfer::streamDidAnswer(const HTTPAnswer& answer) {
  hasHeard_ = true;
  retryAfter_ = answer.retryAfter;
  if (const auto url = NSURL::URLWithString(answer.url)) url_ = *url;
  const std::uint64_t place = first() + received_;
  if (answer.status == 200) {
    toSkip_ = place;
    if (!request_.range && !length_) length_ = answer.length;
  } else if (answer.status == 206) {
    const auto begins = firstOf(answer);
    if (begins && *begins <= place) toSkip_ = place - *begins;
    if (!toSkip_) {
      outcome_ = Outcome::senseless;
      error_ = senselessAnswerError(request_.url, "another part");
    }
  } else {
    const bool isBusy = answer.status == 408 || answer.status == 429 || answer.status >= 500;
    outcome_ = isBusy ? Outcome::busy : Outcome::gone;
    error_ = statusError(answer.status, request_.url);
  }
  return toSkip_.has_value();
}

HTTPStreamClient::Taken HLSTransfer::streamDidReceive(std::span<const std::byte> bytes) {
  hasHeard_ = true;
  if (outcome_) return Taken::all;  // known to be of no use
  const auto all = bytes.size();
  const std::uint64_t skip = std::min<std::uint64_t>(all, *toSkip_ - skipped_);
  bytes = bytes.subspan(skip);
  if (request_.range) {
    bytes = bytes.first(std::min<std::uint64_t>(bytes.size(), request_.range->length - received_));
  }
  if (!bytes.empty()) {
    if (!sink_.hasRoom(bytes.size())) {
      isPaused_ = true;
      return Taken::none;
    }
    if (!sink_.take(bytes)) {
      outcome_ = Outcome::senseless;
      error_ = senselessAnswerError(request_.url, "no media");
      return Taken::all;
    }
    received_ += bytes.size();
    attempts_ = 0;
    pause_ = firstPause;
  }
  skipped_ += skip;
  if (request_.range && received_ >= request_.range->length) outcome_ = Outcome::complete;
  return Taken::all;
}

void HLSTransfer::streamDidEnd(std::optional<NSError> error) {
  hasEnded_ = true;
  if (outcome_) return;
  const bool isShort = request_.range && received_ < request_.range->length;
  if (!error && !isShort) {
    outcome_ = Outcome::complete;
    return;
  }
  lose();
  error_ = unansweredError(error.value_or(lostConnectionError(request_.url)), request_.url);
  constexpr int final[] = {NSURLErrorServerCertificateUntrusted, NSURLErrorHTTPTooManyRedirects,
                           NSURLErrorUnsupportedURL, NSURLErrorBadURL};
  if (error && std::ranges::count(final, error->code) > 0) outcome_ = Outcome::gone;
}

void HLSTransfer::lose() {
  const bool isOut = ++cuts_ >= (request_.isSide ? sideLimit : cutsLimit);
  outcome_ = toSkip_ && isOut ? Outcome::senseless : Outcome::lost;
}

void HLSTransfer::settle(Time now) {
  stream_.reset();
  hasEnded_ = isPaused_ = false;
  counted_ += now - countedSince_;
  isRefused_ = outcome_ == Outcome::gone || outcome_ == Outcome::busy || outcome_ == Outcome::senseless;
  switch (*std::exchange(outcome_, std::nullopt)) {
    case Outcome::complete:
      state_ = State::done;
      break;
    case Outcome::senseless:
      state_ = State::failed;
      break;
    case Outcome::gone:
      again(now, goneLimit);
      break;
    case Outcome::busy:
      again(now, busyLimit);
      break;
    case Outcome::lost:
      again(now, lostLimit);
      break;
  }
}

void HLSTransfer::again(Time now, int attemptsLimit) {
  if (++attempts_ >= (request_.isSide ? std::min(sideLimit, attemptsLimit) : attemptsLimit)) {
    state_ = State::failed;
    return;
  }
  const Time asked = retryAfter_ ? Time(std::min(*retryAfter_, pauseLimit)) : pause_;
  askAt_ = now + std::max(asked, pause_);
  pause_ = std::min<Time>(2 * pause_, pauseLimit);
}

void HLSTransfer::goOn() {
  if (stream_ && std::exchange(isPaused_, false)) stream_->resume();
}

Time HLSTransfer::receiving(Time now) const {
  return counted_ + (stream_ ? now - countedSince_ : Time(0));
}

HLSDocument::HLSDocument(HTTPStreams& streams, HLSTransfer::Request request, std::size_t bytesLimit)
    : transfer_(streams, std::move(request),
                {[](std::size_t) { return true; },
                 [this, bytesLimit](std::span<const std::byte> bytes) {
                   if (bytes.size() > bytesLimit - text_.size()) return false;
                   text_.append(reinterpret_cast<const char*>(bytes.data()), bytes.size());
                   return true;
                 }}) {}
