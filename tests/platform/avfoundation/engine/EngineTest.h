#pragma once

#include <gmock/gmock.h>

#include <algorithm>
#include <cctype>
#include <chrono>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "platform/avfoundation/engine/MediaEngine.h"
#include "platform/dispatch/PlainRunLoop.h"
#include "tests/support/HTTPServer.h"

using namespace std::chrono_literals;

inline std::string sample(const std::string& name) {
  return std::string(YMR_SAMPLES "/") + name;
}

// The number that every picture of the sample clips carries in sixteen blocks along its top edge.
inline std::optional<int> numberOf(const VideoFrame& frame) {
  if (!frame.isValid() || frame.width < 16 || frame.height < 8) return std::nullopt;
  std::vector<std::uint8_t> drawn;
  const std::uint8_t* bits = frame.bits;
  int stride = frame.stride;
  if (frame.decoded) {
    stride = 4 * frame.width;
    drawn.resize(static_cast<std::size_t>(stride * frame.decoded->rowsAtOnce()));
    frame.decoded->draw(0, drawn.data(), stride);
    bits = drawn.data();
  }
  int number = 0;
  for (int block = 0; block < 16; ++block) {
    const int x = (2 * block + 1) * frame.width / 32;
    const std::uint8_t* pixel = bits + 4 * stride + 4 * x;
    const int brightness = (pixel[0] + pixel[1] + pixel[2]) / 3;
    number = 2 * number + (brightness > 128);
  }
  return number;
}

// A sink that remembers the numbers of the pictures it was given, and the last picture.
class NumberedFrames final : public VideoFrameSink {
 public:
  void present(VideoFrame frame) override {
    std::lock_guard lock(mutex_);
    numbers_.push_back(numberOf(frame).value_or(-1));
    last_ = std::move(frame);
  }

  std::vector<int> numbers() const {
    std::lock_guard lock(mutex_);
    return numbers_;
  }
  VideoFrame last() const {
    std::lock_guard lock(mutex_);
    return last_;
  }
  // -1 when there was none.
  int lastNumber() const {
    std::lock_guard lock(mutex_);
    return numbers_.empty() ? -1 : numbers_.back();
  }
  void clear() {
    std::lock_guard lock(mutex_);
    numbers_.clear();
    last_ = {};
  }

 private:
  mutable std::mutex mutex_;
  std::vector<int> numbers_;
  VideoFrame last_;
};

// A place of media as the name of a parametrised case.
inline std::string caseName(std::string where) {
  std::ranges::replace_if(
      where, [](unsigned char c) { return !std::isalnum(c); }, '_');
  return where;
}

// The engine in this process, or, in the program that repeats these tests there, in one of its own.
std::unique_ptr<MediaEngine> engineUnderTest(const MediaSource& source);

// Real media in real time, without a sound device, and a web server that has every sample clip.
class EngineTest : public testing::Test {
 protected:
  // For what ought to come at once, on a machine that does other things too.
  static constexpr auto soon = 20s;

  EngineTest() {
    MediaEngineSettings::shared() = {};
    MediaEngineSettings::shared().audio = MediaEngineSettings::Audio::none;
    server.onOthers([](const HTTPServer::Request& request) { return fileReply(request.path); });
  }
  ~EngineTest() override {
    engine.reset();
    MediaEngineSettings::shared() = {};
  }

  static HTTPServer::Reply fileReply(const std::string& path) {
    HTTPServer::Reply reply;
    reply.file = sample(path.substr(1));
    const std::string ending = path.substr(path.rfind('.') + 1);
    reply.type = ending == "m3u8"  ? "application/vnd.apple.mpegurl"
                 : ending == "ts"  ? "video/mp2t"
                 : ending == "vtt" ? "text/vtt"
                 : ending == "mkv" ? "video/x-matroska"
                                   : "video/mp4";
    return reply;
  }

  // "@name" is the clip on the server, a URL is itself, everything else the clip's file.
  NSURL urlOf(const std::string& where) const {
    if (where.find(':') != std::string::npos) return *NSURL::URLWithString(where);
    if (where[0] == '@') return *NSURL::URLWithString(server.url("/" + where.substr(1)));
    return NSURL::fileURLWithPath(sample(where));
  }

  void make(const std::string& where, MediaPurpose purpose = MediaPurpose::programme,
            std::shared_ptr<MediaBytes> bytes = nullptr) {
    engine.reset();
    told = {};
    frames->clear();
    engine = engineUnderTest({urlOf(where), purpose, std::move(bytes)});
    MediaEngine::Events events;
    events.ready = [this] { ++told.ready; };
    events.failed = [this](NSError error) { told.failures.push_back(std::move(error)); };
    events.ended = [this] { ++told.ended; };
    events.captionChanged = [this](std::optional<MediaCaption> due) { told.captions.push_back(std::move(due)); };
    engine->setEvents(std::move(events));
    engine->setFrameSink(frames);
  }
  // Makes and loads; false when it has failed, or has not become ready in time.
  bool open(const std::string& where, MediaPurpose purpose = MediaPurpose::programme, double start = 0,
            std::shared_ptr<MediaBytes> bytes = nullptr) {
    make(where, purpose, std::move(bytes));
    engine->load(CMTimeMakeWithSeconds(start, 1'000'000'000));
    loop.runUntil([this] { return told.ready > 0 || !told.failures.empty(); }, soon);
    return told.ready > 0;
  }
  bool runUntil(const std::function<bool()>& done, RunLoop::Duration bound = soon) {
    return loop.runUntil(done, bound);
  }
  void runFor(RunLoop::Duration duration) {
    loop.runUntil([] { return false; }, duration);
  }
  double position() const { return CMTimeGetSeconds(engine->position()); }
  // Seeks and waits; nil when the completion did not come.
  std::optional<bool> seek(double seconds) { return seek(CMTimeMakeWithSeconds(seconds, 1'000'000'000)); }
  std::optional<bool> seek(const CMTime& time) {
    std::optional<bool> result;
    engine->seek(time, [&result](bool finished) { result = finished; });
    runUntil([&result] { return result.has_value(); });
    return result;
  }
  // Plays until the position has passed `seconds`.
  bool playTo(double seconds, RunLoop::Duration bound = soon) {
    engine->setRate(1);
    return runUntil([this, seconds] { return position() >= seconds || !told.failures.empty(); }, bound) &&
           told.failures.empty();
  }

  struct Told {
    int ready = 0;
    int ended = 0;
    std::vector<NSError> failures;
    std::vector<std::optional<MediaCaption>> captions;
  };

  PlainRunLoop loop;
  HTTPServer server;
  std::shared_ptr<NumberedFrames> frames = std::make_shared<NumberedFrames>();
  Told told;
  std::unique_ptr<MediaEngine> engine;
};
