// Any bytes as what a media process says and writes: the host's end must take or refuse each message, draw what it
// takes within its own memory, and give sensible answers all the while.
//
// The input is a row of steps: a byte that says what is done, two for a length, and so many bytes for it.
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <memory>

#include "platform/avfoundation/process/ProcessEngine.h"
#include "platform/dispatch/VirtualRunLoop.h"

namespace {

void require(bool holds) {
  if (!holds) std::abort();
}

// The process: what it is sent is of no interest to it, but for the page that it writes to.
class Peer final : public MediaPeer {
 public:
  void listen(const std::weak_ptr<Listener>& listener) override { listener_ = listener; }
  void send(const wire::ToProcess& message, const std::vector<int>& descriptors) override {
    if (std::holds_alternative<wire::Load>(message)) {
      page = SharedMemory::adopt(Descriptor(dup(descriptors.at(0))), 1, true);
      require(static_cast<bool>(page));
    }
    if (std::holds_alternative<wire::Area>(message)) {
      require(descriptors.size() == 1);
      pictures = SharedMemory::adopt(Descriptor(dup(descriptors[0])), 4096, true);
    }
  }
  std::uint64_t signsOfLife() const override { return 0; }
  void end() override { die(); }
  void say(std::span<const std::byte> bytes) {
    if (const auto listener = listener_.lock()) listener->peerDidSay(bytes, Descriptor(dup(STDIN_FILENO)));
  }
  void die() {
    const auto listener = std::exchange(listener_, {}).lock();
    if (listener) listener->peerDidDie({true, "ended"});
  }

  static void scribble(SharedMemory& memory, std::span<const std::byte> bytes) {
    if (memory) std::copy_n(bytes.begin(), std::min({bytes.size(), memory.size(), std::size_t{4096}}), memory.data());
  }

  SharedMemory page, pictures;

 private:
  std::weak_ptr<Listener> listener_;
};

// Draws every picture.
class Screen final : public VideoFrameSink {
 public:
  void present(VideoFrame frame) override {
    require(frame.isValid() && frame.decoded && frame.rotation % 90 == 0);
    if (frame.width > 512 || frame.height > 512) return;
    std::vector<std::uint8_t> bits(static_cast<std::size_t>(frame.width * frame.height * 4));
    for (int row = 0; row < frame.height; row += frame.decoded->rowsAtOnce()) {
      frame.decoded->draw(row, bits.data() + row * frame.width * 4, frame.width * 4);
    }
    last_ = std::move(frame);
  }

 private:
  VideoFrame last_;
};

}  // namespace

// GLib keeps a table of names for as long as the process lives, where the leak checker does not look.
extern "C" const char* __lsan_default_suppressions();
extern "C" const char* __lsan_default_suppressions() {
  return "leak:libglib-2.0.so";
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const bool isThere = (gst_init(nullptr, nullptr), true);
  require(isThere);
  g_log_set_default_handler([](const gchar*, GLogLevelFlags, const gchar*, gpointer) {}, nullptr);
  VirtualRunLoop loop;
  std::shared_ptr<Peer> peer;
  int peers = 0;
  ProcessEngine engine(MediaSource{*NSURL::URLWithString("http://host/film")}, [&] {
    ++peers;
    return peer = std::make_shared<Peer>();
  });
  int ready = 0, failed = 0;
  MediaEngine::Events events;
  events.ready = [&] { ++ready; };
  events.failed = [&](const NSError&) { ++failed; };
  engine.setEvents(std::move(events));
  engine.setFrameSink(std::make_shared<Screen>());
  engine.load(kCMTimeZero);
  engine.setRate(1);
  while (size >= 3) {
    const int step = data[0];
    const std::size_t length = std::min<std::size_t>(data[1] + 256u * data[2], size - 3);
    const std::span bytes(reinterpret_cast<const std::byte*>(data) + 3, length);
    switch (step % 8) {
      case 0:
        loop.advance(std::chrono::milliseconds(20 * length));
        break;
      case 1:
        Peer::scribble(peer->page, bytes);
        break;
      case 2:
        Peer::scribble(peer->pictures, bytes);
        break;
      case 3:
        engine.seek(CMTimeMake(static_cast<std::int64_t>(length), 25), {});
        break;
      default:
        peer->say(bytes);
    }
    loop.runUntilIdle();
    require(CMTimeGetSeconds(engine.position()) >= 0);
    for (const auto& track : engine.tracks()) require(track.width >= 0 && track.nominalFrameRate >= 0);
    engine.bufferedRanges();
    data += 3 + length;
    size -= 3 + length;
  }
  require(ready <= 1 && failed <= 1 && peers < 10'000);
  return 0;
}
