// A fetcher and a reader against a real server on loopback.
#include "platform/avfoundation/fetch/ByteFetcher.h"

#include <gmock/gmock.h>

#include "platform/dispatch/PlainRunLoop.h"
#include "tests/support/HTTPServer.h"

using namespace std::chrono_literals;
using Outcome = MediaBytes::Outcome;

namespace {

std::string content(std::size_t length) {
  std::string text(length, '\0');
  std::uint32_t state = 1;
  for (char& c : text) c = static_cast<char>((state = state * 1664525 + 1013904223) >> 24);
  return text;
}

struct Fetcher : testing::Test {
  void open(const std::string& url, std::size_t limit = ByteFetcher::adBytesLimit) {
    fetcher = ByteFetcher::open(*NSURL::URLWithString(url), limit);
    reader = fetcher->makeReader();
  }
  // All there is from a place on, at most so much; the outcome that ended it is kept.
  std::string read(std::uint64_t place = 0, std::size_t length = SIZE_MAX) {
    std::string all;
    std::vector<std::byte> part(100'000);
    while (all.size() < length) {
      std::size_t count = 0;
      const auto room = std::span(part).first(std::min(part.size(), length - all.size()));
      outcome = reader->read(place + all.size(), room, count);
      if (outcome != Outcome::done) break;
      all.append(reinterpret_cast<const char*>(part.data()), count);
    }
    return all;
  }

  PlainRunLoop loop;
  HTTPServer server;
  std::unique_ptr<ByteFetcher> fetcher;
  std::shared_ptr<MediaBytes> reader;
  Outcome outcome = Outcome::done;
  const std::string film = content(3'000'000);
};

TEST_F(Fetcher, bringsAResourceFromItsFirstByteToItsLast) {
  server.on("/film.mp4", film, "Video/MP4; codecs=x");
  open(server.url("/film.mp4"));
  MediaBytes::Head head;
  ASSERT_EQ(reader->head(head), Outcome::done);
  EXPECT_EQ(head.length, film.size());
  EXPECT_TRUE(head.isSeekable);
  EXPECT_EQ(head.contentType, "video/mp4");
  EXPECT_EQ(head.url, server.url("/film.mp4"));
  EXPECT_TRUE(read() == film);
  EXPECT_EQ(outcome, Outcome::ended);
  EXPECT_TRUE(reader->isFull());
  EXPECT_EQ(server.log().size(), 1u);
  EXPECT_EQ(server.log().front().headers.at("range"), "bytes=0-");
}

}  // namespace
