// A reader that writes whatever it likes into the words that it shares with the store, and a server that answers as it
// likes. However they behave, the store keeps to its memory and the fetching to its two connections, a reader that is
// honest gets the film's bytes or none, and requests are few. A server that lies about places may only spoil bytes.
#include <cstdlib>
#include <string_view>

#include "tests/support/FetchRig.h"

namespace {

void require(bool holds) {
  if (!holds) std::abort();
}

class Input {
 public:
  Input(const std::uint8_t* data, std::size_t size) : data_(data), size_(size) {}
  bool isEmpty() const { return size_ == 0; }
  std::uint8_t byte() { return size_ == 0 ? 0 : (--size_, *data_++); }
  std::uint64_t number() {
    const unsigned bits = byte() % 65;
    std::uint64_t value = 0;
    for (unsigned i = 0; i < (bits + 7) / 8; ++i) value = value << 8 | byte();
    return bits == 64 ? value : value & ((std::uint64_t{1} << bits) - 1);
  }
  std::string text() {
    std::string text(byte() % 40, ' ');
    for (char& c : text) c = static_cast<char>(byte());
    return text;
  }

 private:
  const std::uint8_t* data_;
  std::size_t size_;
};

PlayedAnswer honestAnswer(FetchRig& rig, Input& input, const PlayedServer::Request& request, std::size_t& parts) {
  constexpr long statuses[] = {204, 302, 401, 403, 404, 408, 410, 416, 429, 500, 503};
  if (request.place >= rig.length) return rig.refusal(416);
  auto answer = rig.part(request.place);
  switch (input.byte() % 12) {
    case 0:
      return rig.lost();
    case 1:
      return rig.refusal(statuses[input.byte() % std::size(statuses)]);
    case 2:
      return rig.whole();
    case 3:
      answer = rig.whole();
      answer.head.length.reset();
      return answer;
    case 4:
      answer.isSilent = true;
      answer.behind = std::min(answer.behind, answer.from + input.number());
      return answer;
    case 5:
      answer.error = NSError{NSURLErrorDomain, NSURLErrorNetworkConnectionLost, ""};
      answer.behind = std::min(answer.behind, answer.from + input.number() % 1'000'000);
      return answer;
    case 6:
      ++parts;
      answer.behind = std::min(answer.behind, answer.from + 1 + input.number() % 1'000'000);
      answer.head.headers["content-range"] = "bytes " + std::to_string(answer.from) + "-" +
                                             std::to_string(answer.behind - 1) + "/" + std::to_string(rig.length);
      return answer;
    case 7:
      answer.head.headers["etag"] = "\"two\"";
      return answer;
    default:
      return answer;
  }
}

PlayedAnswer lyingAnswer(FetchRig& rig, Input& input, const PlayedServer::Request& request) {
  auto answer = rig.part(request.place);
  answer.from = 0;
  answer.behind = input.number();
  answer.head.status = input.byte() % 2 ? 206 : 200;
  if (input.byte() % 2) answer.head.length = input.number();
  if (input.byte() % 2) answer.head.retryAfter = std::chrono::seconds(static_cast<std::int64_t>(input.number()));
  answer.head.headers["content-range"] = input.byte() % 2 ? input.text()
                                                          : "bytes " + std::to_string(input.number()) + "-" +
                                                                std::to_string(input.number()) + "/" +
                                                                std::to_string(input.number());
  for (const char* name : {"etag", "content-encoding", "content-type", "accept-ranges"}) {
    if (input.byte() % 4 == 0) answer.head.headers[name] = input.text();
  }
  return answer;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  Input input(data, size);
  const bool isHonest = input.byte() % 4 != 0;
  FetchRig rig(std::size_t{input.byte() % 64u} << 16);
  rig.length = 1 + input.number() % ByteStore::placesLimit;
  std::size_t parts = 0;
  rig.server.answer = [&](const PlayedServer::Request& request) {
    return isHonest ? honestAnswer(rig, input, request, parts) : lyingAnswer(rig, input, request);
  };
  while (!input.isEmpty()) {
    switch (input.byte() % 6) {
      case 0:
        rig.control().place = input.number();
        rig.control().isWaiting = input.byte();
        break;
      case 1:
        rig.control().aheadLimit = input.number();
        break;
      case 2: {
        auto& lane = rig.control().lane[input.byte() % 2];
        lane.place = input.number();
        lane.uses = input.number();
        break;
      }
      case 3:
        rig.server.now += std::chrono::milliseconds(input.number() % 20'000);
        break;
      default: {
        const std::uint64_t place = input.number();
        for (int steps = input.byte() % 32; steps > 0; --steps) rig.step();
        std::byte bytes[1000];
        std::size_t count = 0;
        if (rig.reader->read(place, bytes, count) != MediaBytes::Outcome::done) break;
        for (std::size_t i = 0; isHonest && i < count; ++i) require(bytes[i] == byteAt(place + i));
      }
    }
    require(rig.store->heldCount(0) + rig.store->heldCount(1) + rig.store->freeCount() == rig.store->chunkCount());
    require(rig.server.open() <= ByteStore::lanes);
    if (isHonest) {
      require(rig.server.log.size() <=
              20 + parts + static_cast<std::size_t>(rig.server.now / std::chrono::milliseconds(5)));
    }
  }
  return 0;
}
