// Requests over real connections and threads, against a server with every fault that ad servers have.
#include <gmock/gmock.h>

#include <map>
#include <mutex>

#include "VAST/Parser/SKVAST2Parser.h"
#include "platform/dispatch/PlainRunLoop.h"
#include "platform/foundation/URLLoader.h"
#include "tests/VAST/Parser/VASTTexts.h"
#include "tests/support/HTTPServer.h"
#include "tests/support/UntrustedServer.h"

using namespace std::chrono_literals;
using testing::HasSubstr;

namespace {

using Model = std::shared_ptr<YMRVastModel>;

struct Requests : testing::Test {
  // The last case leaves requests behind, which must not go on with another case's loader.
  Requests() { options.loader = URLLoader::shared(); }
  // Runs one request per URL, all at once, and checks that each ends once and in time.
  std::vector<Model> request(const std::vector<std::string>& urls) {
    std::vector<Model> models(urls.size());
    std::size_t left = urls.size();
    const auto startedAt = loop.now();
    for (std::size_t i = 0; i < urls.size(); ++i) {
      SKVAST2Parser(options).parseWithUrl(NSURL::URLWithString(urls[i]), [&, i](Model model) {
        EXPECT_TRUE(loop.isCurrent());
        EXPECT_FALSE(models[i]) << urls[i] << " completed twice";
        models[i] = std::move(model);
        --left;
      });
    }
    EXPECT_TRUE(loop.runUntil([&] { return left == 0; }, 20s)) << left << " never completed";
    took = loop.now() - startedAt;
    return models;
  }

  PlainRunLoop loop;
  HTTPServer server;
  SKVAST2ParserOptions options;
  RunLoop::Duration took{0};
};

TEST_F(Requests, endWithTheErrorThatFitsWithinTheirTime) {
  std::mutex mutex;
  std::map<std::string, std::string> reasons;  // by URL
  options.timeLimit = 3s;                      // room for a checker on a busy machine
  options.hopObserver = [&](const VASTHop& hop) {
    const std::lock_guard lock(mutex);
    reasons[hop.url] = hop.reason;
  };
  const std::string good = vast::document(vast::playable("a"));
  const auto on = [&](const std::string& path, HTTPServer::Reply reply) {
    server.on(path, std::move(reply));
    return server.url(path);
  };
  UntrustedServer untrusted(good);
  server.onRedirect("/moved", "/good");
  server.onRedirect("/loop", "/loop");
  server.onRedirect("/to-file", "file:///etc/hostname");
  const struct {
    const char* name;
    std::string url;
    int error;
    std::string reason = "";
  } rows[] = {
      {"an ad", on("/good", {.body = good}), 0},
      {"an ad that moved", server.url("/moved"), 0},
      {"refused", HTTPServer::refusingURL(), 6, "Failed to connect"},
      {"503", on("/503", {.status = 503, .body = good}), 6, "answered 503"},
      {"redirect loop", server.url("/loop"), 6, "redirected more than 10 times, at last to " + server.url("/loop")},
      {"redirect to a file", server.url("/to-file"), 6, "redirect to file:///etc/hostname is refused"},
      {"silence", on("/silent", {.silent = true}), 7},
      {"body cut short", on("/cut", {.body = good, .cutAfter = 50}), 6},
      {"bad certificate", untrusted.url("/tag"), 6, "certificate is not trusted"},
      {"cut inside the document", on("/half", {.body = good.substr(0, 99)}), 2},
  };
  std::vector<std::string> urls;
  for (const auto& row : rows) urls.push_back(row.url);
  const auto models = request(urls);
  EXPECT_EQ(untrusted.requests(), 0);
  EXPECT_LT(took, 8s) << "a little more than the time of a request";
  for (std::size_t i = 0; i < std::size(rows); ++i) {
    SCOPED_TRACE(rows[i].name);
    EXPECT_EQ(models[i]->getVastError(), rows[i].error);
    EXPECT_THAT(reasons[rows[i].url], HasSubstr(rows[i].reason));
  }
}

TEST_F(Requests, harmNobodyWhenTheLoopGoesFirst) {
  server.on("/silent", HTTPServer::Reply{.silent = true});
  server.on("/pod", vast::document(vast::wrapper(server.url("/silent"), "id='1' sequence='1'") +
                                   vast::wrapper(server.url("/silent"), "id='2' sequence='2'")));
  server.onOthers(
      [&](const auto&) { return HTTPServer::Reply{.body = vast::document(vast::wrapper(server.url("/next")))}; });
  for (int round = 0; round < 200; ++round) {
    const auto inner = std::make_unique<PlainRunLoop>();
    for (const char* path : {"/pod", "/a", "/silent"}) {
      SKVAST2Parser(options).parseWithUrl(NSURL::URLWithString(server.url(path)), [](const Model&) {});
    }
    inner->runUntil([] { return false; }, std::chrono::microseconds(round * 37));
  }
}

}  // namespace
