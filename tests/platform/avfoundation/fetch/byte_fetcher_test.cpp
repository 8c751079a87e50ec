// A fetcher and a reader against a real server on loopback.
#include "platform/avfoundation/fetch/ByteFetcher.h"

#include <gmock/gmock.h>
#include <httplib.h>

#include <thread>

#include "platform/dispatch/PlainRunLoop.h"
#include "tests/support/HTTPServer.h"

using namespace std::chrono_literals;
using Outcome = MediaBytes::Outcome;

namespace {

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

  const std::string film = [] {
    std::string text;
    for (int i = 0; text.size() < 3'000'000; ++i) text += std::to_string(i);
    return text;
  }();
  PlainRunLoop loop;
  HTTPServer server;  // serves the film until it ends
  std::unique_ptr<ByteFetcher> fetcher;
  std::shared_ptr<MediaBytes> reader;
  Outcome outcome = Outcome::done;
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
  EXPECT_EQ(server.log().front().get_header_value("Range"), "bytes=0-");
}

TEST_F(Fetcher, whatCannotBeOpenedHasFailedInWordsThatNameItAndTellWhy) {
  for (const auto& [from, to] : {std::pair("/loop", "/loop"), std::pair("/file", "file:///etc/hosts")}) {
    server.on(from, HTTPServer::Reply{.status = 302, .headers = {{"Location", to}}});
  }
  for (const int status : {204, 304, 403, 410, 500, 503}) {
    const HTTPServer::Reply reply{.status = status, .headers = {{"Retry-After", "0"}}};
    server.on("/" + std::to_string(status), reply);
  }
  httplib::SSLServer untrusted(YMR_UNTRUSTED ".pem", YMR_UNTRUSTED ".key");
  const std::string secure = "https://127.0.0.1:" + std::to_string(untrusted.bind_to_any_port("127.0.0.1")) + "/";
  std::thread thread([&] { untrusted.listen_after_bind(); });
  const std::string refusing = HTTPServer::refusingURL();
  const std::tuple<std::string, int, const char*> rows[] = {
      {server.url("/nothing"), NSURLErrorFileDoesNotExist, ": its server does not have it (HTTP 404)."},
      {server.url("/410"), NSURLErrorFileDoesNotExist, ": its server does not have it (HTTP 410)."},
      {server.url("/403"), NSURLErrorNoPermissionsToReadFile, ": its server does not allow it (HTTP 403)."},
      {server.url("/503"), NSURLErrorResourceUnavailable, ": its server is too busy (HTTP 503)."},
      {server.url("/500"), NSURLErrorBadServerResponse, ": its server is out of order (HTTP 500)."},
      {server.url("/204"), NSURLErrorZeroByteResource, ": its server sends nothing (HTTP 204)."},
      {server.url("/304"), NSURLErrorRedirectToNonExistentLocation, ": its server says that it is elsewhere, "},
      {server.url("/loop"), NSURLErrorHTTPTooManyRedirects, ": its server redirects without an end."},
      {server.url("/file"), NSURLErrorUnsupportedURL, ". The redirect to file:///etc/hosts is refused: "},
      {refusing, NSURLErrorCannotConnectToHost, ": its server can't be reached."},
      {"http://host.invalid/a", NSURLErrorCannotFindHost, ": there is no address for the name of its server."},
      {secure, NSURLErrorServerCertificateUntrusted, ". The server's certificate is not trusted: "},
  };
  for (const auto& [url, code, words] : rows) {
    open(url);
    read();
    EXPECT_EQ(outcome, Outcome::failed);
    EXPECT_TRUE(fetcher->failure()) << url;
    if (!fetcher->failure()) continue;
    EXPECT_EQ(fetcher->failure()->code, code) << url;
    EXPECT_THAT(fetcher->failure()->message, testing::StartsWith(url + " can't be fetched" + words));
    EXPECT_EQ(reader->failure()->message, fetcher->failure()->message);
  }
  untrusted.stop();
  thread.join();
  open("http://name:secret@" + server.url("/nothing?token=secret").substr(7));
  read();
  EXPECT_THAT(fetcher->failure().value_or(NSError{}).message, testing::StartsWith(server.url("/nothing?… can't")));
}

TEST_F(Fetcher, goesOnWhereAConnectionBroke) {
  for (const bool ranges : {true, false}) {
    std::atomic<int> requests = 0;
    server.on("/film.mp4", [&](const HTTPServer::Request&) {
      HTTPServer::Reply reply{.body = film, .headers = {{"ETag", "\"one\""}}, .ranges = ranges};
      if (++requests == 1) reply.cutAfter = 1'000'000;
      return reply;
    });
    open(server.url("/film.mp4"));
    EXPECT_TRUE(read() == film);
    EXPECT_EQ(requests, 2);
    EXPECT_EQ(server.log().back().headers.count("range"), ranges ? 1u : 0u);
  }
}

TEST_F(Fetcher, aSmallStoreIsEnoughForAnyFilmAndASeekIsOneRequest) {
  server.on("/film.mp4", film);
  open(server.url("/film.mp4"), 512 * 1024);
  EXPECT_TRUE(read() == film);
  EXPECT_TRUE(read(2'900'000, 1000) == film.substr(2'900'000, 1000));
  EXPECT_TRUE(read(1'000'000) == film.substr(1'000'000));
  EXPECT_EQ(server.log().size(), 2u);
}

TEST_F(Fetcher, goesAtAnyMomentAndWhoeverStillReadsIsInterrupted) {
  server.on("/film.mp4", [&](const HTTPServer::Request& request) {
    return HTTPServer::Reply{
        .body = film, .silent = request.get_header_value("Range") != "bytes=0-", .stallAfter = 1'000'000};
  });
  for (int round = 0; round < 50; ++round) {
    open(server.url("/film.mp4"));
    if (round % 3 == 0) read(0, 1000);
    std::thread waiting([&, reader = reader] {
      std::byte byte[1];
      std::size_t count = 0;
      EXPECT_EQ(reader->read(2'000'000, byte, count), Outcome::interrupted);
    });
    if (round % 2 == 0) fetcher.reset();
    reader->setInterrupted(true);
    waiting.join();
    fetcher.reset();
  }
}

}  // namespace
