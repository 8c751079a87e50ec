#include "platform/foundation/CurlURLLoader.h"

#include <gmock/gmock.h>
#include <unistd.h>
#include <zlib.h>

#include <filesystem>
#include <fstream>

#include "platform/dispatch/PlainRunLoop.h"
#include "tests/support/HTTPServer.h"

using namespace std::chrono_literals;
using testing::AllOf;
using testing::Gt;
using testing::HasSubstr;
using testing::Lt;
using testing::StartsWith;

namespace {

std::string text(const URLResponse& response) {
  return {reinterpret_cast<const char*>(response.body.data()), response.body.size()};
}

std::string gzipped(const std::string& plain) {
  z_stream stream{};
  deflateInit2(&stream, 9, Z_DEFLATED, 15 + 16, 8, Z_DEFAULT_STRATEGY);
  std::string packed(deflateBound(&stream, plain.size()), '\0');
  stream.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(plain.data()));
  stream.avail_in = static_cast<uInt>(plain.size());
  stream.next_out = reinterpret_cast<Bytef*>(packed.data());
  stream.avail_out = static_cast<uInt>(packed.size());
  deflate(&stream, Z_FINISH);
  packed.resize(stream.total_out);
  deflateEnd(&stream);
  return packed;
}

struct Loader : testing::Test {
  URLResponse load(URLRequest request) {
    std::optional<URLResponse> response;
    loader.load(std::move(request), dispatch_get_main_queue(), [&](URLResponse came) {
      EXPECT_TRUE(loop.isCurrent());
      EXPECT_FALSE(response) << "completed twice";
      response = std::move(came);
    });
    EXPECT_FALSE(response) << "completed before load() returned";
    EXPECT_TRUE(loop.runUntil([&] { return response.has_value(); }, 15s)) << "never completed";
    return response.value_or(URLResponse{});
  }
  URLResponse load(const std::string& url) { return load(URLRequest{*NSURL::URLWithString(url)}); }

  PlainRunLoop loop;
  CurlURLLoader loader;
  HTTPServer server;
};

TEST_F(Loader, bringsStatusAndBodyOfWhateverTheServerSays) {
  for (const int status : {200, 204, 302, 404, 500}) {  // 302 has no Location to follow
    HTTPServer::Reply reply;
    reply.status = status;
    reply.body = status == 204 ? "" : "body of " + std::to_string(status);
    server.on("/answer", reply);
    const URLResponse response = load(server.url("/answer"));
    EXPECT_EQ(response.status, status);
    EXPECT_EQ(text(response), reply.body);
    EXPECT_FALSE(response.error);
  }
  EXPECT_EQ(server.connections(), 1) << "connections are kept from fetch to fetch";
  EXPECT_THAT(server.log().front().headers.at("user-agent"), StartsWith("YMRPlayer/"));
}

TEST_F(Loader, followsRedirectsAndKeepsTheirCookies) {
  HTTPServer::Reply redirect;
  redirect.status = 302;
  redirect.headers = {{"Location", "/final"}, {"Set-Cookie", "seen=1"}};
  server.on("/start", redirect);
  server.on("/final", [](const HTTPServer::Request& request) {
    HTTPServer::Reply reply;
    reply.body = request.headers.count("cookie") ? request.headers.at("cookie") : "none";
    return reply;
  });
  EXPECT_EQ(text(load(server.url("/start"))), "seen=1");
  EXPECT_EQ(text(load(server.url("/final"))), "none") << "a cookie outlived its fetch";
}

TEST_F(Loader, unpacksACompressedBody) {
  HTTPServer::Reply reply;
  reply.body = gzipped(std::string(100'000, 'x'));
  reply.headers = {{"Content-Encoding", "gzip"}};
  server.on("/packed", reply);
  EXPECT_EQ(text(load(server.url("/packed"))), std::string(100'000, 'x'));
}

struct Fault {
  const char* name;
  HTTPServer::Reply reply;
  int code;
};

std::vector<Fault> faults() {
  const auto made = [](auto change) {
    HTTPServer::Reply reply;
    reply.body = std::string(50, 'b');
    change(reply);
    return reply;
  };
  return {
      {"silence instead of an answer", made([](auto& r) { r.silent = true; }), NSURLErrorTimedOut},
      {"silence in mid-body", made([](auto& r) { r.stallAfter = 20; }), NSURLErrorTimedOut},
      {"a dripping head", made([](auto& r) { r.headPause = 60ms; }), NSURLErrorTimedOut},
      {"a dripping body", made([](auto& r) { r.bodyPause = 60ms; }), NSURLErrorTimedOut},
      {"a body cut short", made([](auto& r) { r.cutAfter = 20; }), NSURLErrorNetworkConnectionLost},
      {"a head without a body", made([](auto& r) { r.cutAfter = 0; }), NSURLErrorNetworkConnectionLost},
      {"an endless body", made([](auto& r) {
         r.endless = true;
         r.body = std::string(50'000, 'x');
       }),
       NSURLErrorDataLengthExceedsMaximum},
      {"a body one byte too long", made([](auto& r) { r.body = std::string(100'001, 'x'); }),
       NSURLErrorDataLengthExceedsMaximum},
      {"a small body that unpacks to 50 megabytes", made([](auto& r) {
         r.body = gzipped(std::string(50'000'000, 'x'));
         r.headers = {{"Content-Encoding", "gzip"}};
       }),
       NSURLErrorDataLengthExceedsMaximum},
      {"a body that claims to be packed", made([](auto& r) {
         r.headers = {{"Content-Encoding", "gzip"}};
       }),
       NSURLErrorBadServerResponse},
      {"a redirect loop", made([](auto& r) {
         r.status = 302;
         r.headers = {{"Location", "/fault"}};
       }),
       NSURLErrorHTTPTooManyRedirects},
      {"a redirect to a local file", made([](auto& r) {
         r.status = 302;
         r.headers = {{"Location", "file:///etc/passwd"}};
       }),
       NSURLErrorUnsupportedURL},
  };
}

TEST_F(Loader, everyFaultIsAnErrorWithinTheBoundsAndNoResponse) {
  for (const Fault& fault : faults()) {
    SCOPED_TRACE(fault.name);
    server.on("/fault", fault.reply);
    URLRequest request{*NSURL::URLWithString(server.url("/fault"))};
    request.silence = 400ms;
    request.whole = 900ms;
    request.maximumBytes = 100'000;
    const auto began = loop.now();
    const URLResponse response = load(request);
    EXPECT_LT(loop.now() - began, 5s);
    ASSERT_TRUE(response.error);
    EXPECT_EQ(response.error->code, fault.code) << response.error->message;
    EXPECT_EQ(response.error->domain, NSURLErrorDomain);
    EXPECT_FALSE(response.error->message.empty());
    EXPECT_EQ(response.status, 0);
    EXPECT_TRUE(response.body.empty());
  }
}

TEST_F(Loader, silenceEndsAFetchLongBeforeTheWholeBoundAndDrippingDoesNot) {
  HTTPServer::Reply stalled;
  stalled.body = "something";
  stalled.stallAfter = 4;
  server.on("/stalled", stalled);
  URLRequest request{*NSURL::URLWithString(server.url("/stalled"))};
  request.silence = 300ms;
  request.whole = 10s;
  EXPECT_THAT(load(request).elapsed, AllOf(Gt(290ms), Lt(5s)));

  HTTPServer::Reply dripping;
  dripping.body = "0123456789";
  dripping.bodyPause = 100ms;
  server.on("/dripping", dripping);
  request.url = *NSURL::URLWithString(server.url("/dripping"));
  request.silence = 700ms;
  const URLResponse response = load(request);
  EXPECT_EQ(text(response), "0123456789");
  EXPECT_GT(response.elapsed, 900ms);
}

TEST_F(Loader, aBodyOfExactlyTheLimitIsWhole) {
  server.on("/body", std::string(1000, 'x'));
  URLRequest request{*NSURL::URLWithString(server.url("/body"))};
  request.maximumBytes = 1000;
  EXPECT_EQ(load(request).body.size(), 1000u);
}

TEST_F(Loader, refusedAndUnknownHostsSaySo) {
  const auto refused = load(HTTPServer::refusingURL());
  ASSERT_TRUE(refused.error);
  EXPECT_EQ(refused.error->code, NSURLErrorCannotConnectToHost) << refused.error->message;
  const auto unknown = load("http://host.invalid/");
  ASSERT_TRUE(unknown.error);
  EXPECT_EQ(unknown.error->code, NSURLErrorCannotFindHost) << unknown.error->message;
}

TEST_F(Loader, opensNoOtherSchemes) {
  for (const char* url :
       {"ftp://127.0.0.1/x", "data:text/plain,x", "javascript:x", "file:///etc/passwd", "gopher://h/x"}) {
    const auto parsed = NSURL::URLWithString(url);
    if (!parsed) continue;
    const URLResponse response = load(URLRequest{*parsed});
    ASSERT_TRUE(response.error) << url;
    EXPECT_EQ(response.error->code, NSURLErrorUnsupportedURL) << url;
  }
}

TEST_F(Loader, usesTheProxyOfTheEnvironment) {
  server.onOthers([](const HTTPServer::Request& request) {
    HTTPServer::Reply reply;
    reply.body = "by proxy: " + request.target;
    return reply;
  });
  setenv("http_proxy", server.url("").c_str(), 1);
  const URLResponse response = load("http://ads.example/tag?x=1");
  unsetenv("http_proxy");
  EXPECT_EQ(text(response), "by proxy: http://ads.example/tag?x=1");
}

TEST_F(Loader, readsFilesOnlyWhenAllowedTo) {
  const auto folder = std::filesystem::temp_directory_path() / ("loader " + std::to_string(::getpid()));
  std::filesystem::create_directories(folder);
  const auto path = folder / "a b#c.txt";
  std::ofstream(path) << "from disk";
  URLRequest request{NSURL::fileURLWithPath(path.string())};
  EXPECT_EQ(load(request).error->code, NSURLErrorUnsupportedURL);
  request.allowsFiles = true;
  const URLResponse response = load(request);
  EXPECT_EQ(response.status, 200);
  EXPECT_EQ(text(response), "from disk");
  request.maximumBytes = 3;
  EXPECT_EQ(load(request).error->code, NSURLErrorDataLengthExceedsMaximum);
  request.url = NSURL::fileURLWithPath((folder / "missing").string());
  EXPECT_EQ(load(request).error->code, NSURLErrorFileDoesNotExist);
  request.url = NSURL::fileURLWithPath(folder.string());
  EXPECT_EQ(load(request).error->code, NSURLErrorFileDoesNotExist);
  std::filesystem::remove_all(folder);
}

TEST_F(Loader, completesOnTheQueueThatWasGivenWhileTheMainThreadWaits) {
  server.on("/tag", "answer");
  const auto group = dispatch_group_create();
  const auto queue = dispatch_queue_create("fetch");
  std::string came;
  bool isMain = true;
  dispatch_group_enter(group);
  loader.load(URLRequest{*NSURL::URLWithString(server.url("/tag"))}, queue, [&](URLResponse response) {
    came = text(response);
    isMain = loop.isCurrent();
    dispatch_group_leave(group);
  });
  dispatch_group_wait(group);
  EXPECT_EQ(came, "answer");
  EXPECT_FALSE(isMain);
}

TEST_F(Loader, manyAtOnceAllComplete) {
  server.onOthers([](const HTTPServer::Request& request) {
    HTTPServer::Reply reply;
    reply.body = request.target;
    return reply;
  });
  std::map<std::string, std::string> came;
  for (int i = 0; i < 200; ++i) {
    const std::string target = "/" + std::to_string(i);
    loader.load(URLRequest{*NSURL::URLWithString(server.url(target))}, dispatch_get_main_queue(),
                [&came, target](URLResponse response) { came[target] = text(response); });
  }
  EXPECT_TRUE(loop.runUntil([&] { return came.size() == 200; }, 20s));
  for (const auto& [target, body] : came) EXPECT_EQ(target, body);
  EXPECT_LE(server.connections(), 16);
}

TEST(LoaderLifetime, aLoaderThatGoesCancelsWhatItFetches) {
  PlainRunLoop loop;
  HTTPServer server;
  HTTPServer::Reply silent;
  silent.silent = true;
  server.on("/", silent);
  std::vector<int> codes;
  {
    CurlURLLoader loader;
    for (int i = 0; i < 40; ++i) {
      loader.load(URLRequest{*NSURL::URLWithString(server.url("/"))}, dispatch_get_main_queue(),
                  [&](URLResponse response) { codes.push_back(response.error->code); });
    }
    server.waitForRequests(16, 5s);
  }
  loop.runUntil([&] { return codes.size() >= 40; }, 5s);
  EXPECT_EQ(codes, std::vector<int>(40, NSURLErrorCancelled));
}

TEST(LoaderLifetime, runLoopsMayGoWhileAnswersArrive) {
  HTTPServer server;
  server.on("/", "answer");
  CurlURLLoader loader;
  auto owned = std::make_shared<int>(0);
  const std::weak_ptr<int> weak = owned;
  for (int round = 0; round < 50; ++round) {
    PlainRunLoop loop;
    loader.load(URLRequest{*NSURL::URLWithString(server.url("/"))}, dispatch_get_main_queue(), [owned](URLResponse) {});
    if (round % 2) server.waitForRequests(static_cast<std::size_t>(round), 1s);
  }
  server.stop();
  owned.reset();
  PlainRunLoop loop;
  loop.runUntil([&] { return weak.expired(); }, 5s);
  EXPECT_TRUE(weak.expired());
}

}  // namespace
