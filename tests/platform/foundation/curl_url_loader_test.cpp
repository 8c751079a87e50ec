#include "platform/foundation/CurlURLLoader.h"

#include <arpa/inet.h>
#include <gmock/gmock.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>
#include <filesystem>
#include <fstream>

#include "platform/dispatch/PlainRunLoop.h"
#include "tests/support/HTTPServer.h"

using namespace std::chrono_literals;
using testing::AllOf;
using testing::Gt;
using testing::HasSubstr;
using testing::Lt;
using testing::Not;
using testing::StartsWith;

namespace {

std::string text(const URLResponse& response) {
  return {reinterpret_cast<const char*>(response.body.data()), response.body.size()};
}

// As many zeros, packed.
std::string gzipped(std::size_t length) {
  FILE* pipe = ::popen(("head -c " + std::to_string(length) + " /dev/zero | gzip").c_str(), "r");
  std::string packed(100'000, '\0');
  packed.resize(std::fread(packed.data(), 1, packed.size(), pipe));
  ::pclose(pipe);
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
    const std::string body = status == 204 ? "" : "body of " + std::to_string(status);
    server.on("/answer", HTTPServer::Reply{.status = status, .body = body});
    const URLResponse response = load(server.url("/answer"));
    EXPECT_EQ(response.status, status);
    EXPECT_EQ(text(response), body);
    EXPECT_FALSE(response.error);
  }
  EXPECT_EQ(server.connections(), 1) << "connections are kept from fetch to fetch";
  EXPECT_THAT(server.log().front().get_header_value("User-Agent"), StartsWith("YMRPlayer/"));

  server.on("/packed", HTTPServer::Reply{.body = gzipped(100'000), .headers = {{"Content-Encoding", "gzip"}}});
  URLRequest request{*NSURL::URLWithString(server.url("/packed"))};
  request.bytesLimit = 100'000;
  EXPECT_EQ(text(load(request)), std::string(100'000, '\0')) << "unpacked, up to the limit";
}

TEST_F(Loader, followsRedirectsAndKeepsTheirCookiesForOneFetch) {
  server.on("/start", HTTPServer::Reply{.status = 302, .headers = {{"Location", "/final"}, {"Set-Cookie", "seen=1"}}});
  server.on("/final", "answer");
  for (const char* path : {"/start", "/final"}) EXPECT_EQ(text(load(server.url(path))), "answer");
  const auto log = server.log();
  EXPECT_EQ(log.at(1).get_header_value("Cookie"), "seen=1");
  EXPECT_FALSE(log.at(2).has_header("Cookie"));
}

TEST_F(Loader, everyFaultIsAnErrorWithinTheBoundsAndNoResponse) {
  const auto check = [this](const std::string& name, const std::string& url, int code, const std::string& says = "") {
    SCOPED_TRACE(name);
    URLRequest request{*NSURL::URLWithString(url)};
    request.silenceLimit = 400ms;
    request.timeLimit = 900ms;
    request.bytesLimit = 100'000;
    const auto began = loop.now();
    const URLResponse response = load(request);
    EXPECT_LT(loop.now() - began, 5s);
    ASSERT_TRUE(response.error);
    EXPECT_EQ(response.error->code, code) << response.error->message;
    EXPECT_EQ(response.error->domain, NSURLErrorDomain);
    EXPECT_THAT(response.error->message, AllOf(Not(""), HasSubstr(says)));
    EXPECT_EQ(response.status, 0);
    EXPECT_TRUE(response.body.empty());
  };
  const std::string body(50, 'b'), page(50'000, 'x');
  const std::vector<std::pair<std::string, std::string>> packed{{"Content-Encoding", "gzip"}};
  const struct {
    const char* name;
    int code;
    HTTPServer::Reply reply;
    std::string says = "";
  } faults[] = {
      {"silence in mid-body", NSURLErrorTimedOut, {.body = body, .stallAfter = 20}},
      {"a dripping answer", NSURLErrorTimedOut, {.pause = 60ms}},
      {"a body cut short", NSURLErrorNetworkConnectionLost, {.body = body, .cutAfter = 20}},
      {"an endless body", NSURLErrorDataLengthExceedsMaximum, {.body = page, .endless = true}},
      {"one byte too long", NSURLErrorDataLengthExceedsMaximum, {.body = std::string(100'001, 'x')}},
      {"a bomb", NSURLErrorDataLengthExceedsMaximum, {.body = gzipped(50'000'000), .headers = packed}},
      {"not packed as it says", NSURLErrorBadServerResponse, {.body = body, .headers = packed}},
      {"a redirect loop",
       NSURLErrorHTTPTooManyRedirects,
       {.status = 302, .headers = {{"Location", "/fault"}}},
       "redirected more than 10 times, at last to " + server.url("/fault")},
      {"a redirect to a file",
       NSURLErrorUnsupportedURL,
       {.status = 302, .headers = {{"Location", "file:///etc/hosts"}}},
       "redirect to file:///etc/hosts is refused"},
  };
  for (const auto& fault : faults) {
    server.on("/fault", fault.reply);
    check(fault.name, server.url("/fault"), fault.code, fault.says);
  }
  check("refused", HTTPServer::refusingURL(), NSURLErrorCannotConnectToHost, "Failed to connect");
  check("unknown", "http://host.invalid/", NSURLErrorCannotFindHost);
  check("a file", "file:///etc/passwd", NSURLErrorUnsupportedURL);
  // Good for a hundred years and for this address: that nobody has signed it is all that is wrong with its certificate.
  httplib::SSLServer untrusted(YMR_UNTRUSTED ".pem", YMR_UNTRUSTED ".key");
  const std::string port = std::to_string(untrusted.bind_to_any_port("127.0.0.1"));
  std::thread thread([&] { untrusted.listen_after_bind(); });
  check("untrusted", "https://127.0.0.1:" + port, NSURLErrorServerCertificateUntrusted, "certificate is not trusted");
  untrusted.stop();
  thread.join();
}

TEST_F(Loader, silenceEndsAFetchLongBeforeTheWholeBoundAndDrippingDoesNot) {
  server.on("/slow", HTTPServer::Reply{.body = "0123456789", .stallAfter = 4});
  URLRequest request{*NSURL::URLWithString(server.url("/slow"))};
  request.silenceLimit = 300ms;
  request.timeLimit = 10s;
  EXPECT_THAT(load(request).elapsed, AllOf(Gt(290ms), Lt(5s)));

  server.on("/slow", HTTPServer::Reply{.body = "0123456789", .pause = 10ms});
  request.silenceLimit = 700ms;
  const URLResponse response = load(request);
  EXPECT_EQ(text(response), "0123456789");
  EXPECT_GT(response.elapsed, 900ms);
}

TEST_F(Loader, readsRegularFilesWhenAllowedTo) {
  const std::string path = testing::TempDir() + "a b#c " + std::to_string(::getpid());
  std::ofstream(path) << "from disk";
  const auto read = [&](const std::string& file, bool allowed, std::size_t limit) {
    URLRequest request{NSURL::fileURLWithPath(file)};
    request.allowsFiles = allowed;
    request.bytesLimit = limit;
    const URLResponse response = load(request);
    return response.error ? std::to_string(response.error->code) : std::to_string(response.status) + text(response);
  };
  EXPECT_EQ(read(path, true, 9), "200from disk");
  EXPECT_EQ(read(path, false, 9), std::to_string(NSURLErrorUnsupportedURL));
  EXPECT_EQ(read(path, true, 8), std::to_string(NSURLErrorDataLengthExceedsMaximum));
  const std::string pipe = path + " pipe";
  ::mkfifo(pipe.c_str(), 0600);  // which nobody writes to
  for (const std::string& file : std::vector<std::string>{"/missing", "/", "/dev/zero", pipe}) {
    EXPECT_EQ(read(file, true, 9), std::to_string(NSURLErrorFileDoesNotExist));
  }
  std::filesystem::remove(path);
  std::filesystem::remove(pipe);
}

TEST_F(Loader, connectingHasABoundOfItsOwn) {
  // A machine that answers no call: nobody is taken off its queue, which holds one.
  const int listener = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
  sockaddr_in address{.sin_family = AF_INET, .sin_port = 0, .sin_addr = {htonl(INADDR_LOOPBACK)}, .sin_zero = {}};
  socklen_t length = sizeof address;
  ASSERT_EQ(::listen(listener, 0), 0);  // which binds to loopback and all else
  ::getsockname(listener, reinterpret_cast<sockaddr*>(&address), &length);
  const std::string url = "http://127.0.0.1:" + std::to_string(ntohs(address.sin_port)) + "/";
  const int caller = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
  ASSERT_EQ(::connect(caller, reinterpret_cast<sockaddr*>(&address), length), 0);
  URLRequest request{*NSURL::URLWithString(url)};
  request.connectingLimit = 300ms;
  const URLResponse response = load(request);
  EXPECT_EQ(response.error.value_or(NSError{}).code, NSURLErrorTimedOut);
  EXPECT_LT(response.elapsed, 5s);
  ::close(caller);
  ::close(listener);
}

TEST(LoaderLifetime, aLoaderThatGoesCancelsWhatItFetches) {
  PlainRunLoop loop;
  HTTPServer server;
  server.on("/", HTTPServer::Reply{.silent = true});
  std::vector<int> codes;
  auto loader = std::make_unique<CurlURLLoader>();
  for (int i = 0; i < 40; ++i) {
    loader->load(URLRequest{*NSURL::URLWithString(server.url("/"))}, dispatch_get_main_queue(),
                 [&](URLResponse response) { codes.push_back(response.error->code); });
  }
  server.waitForRequests(16, 5s);
  EXPECT_EQ(server.connections(), 16);
  loader.reset();
  loop.runUntil([&] { return codes.size() >= 40; }, 5s);
  EXPECT_EQ(codes, std::vector<int>(40, NSURLErrorCancelled));
}

}  // namespace
