// A request over real connections and threads.
#include <gtest/gtest.h>

#include "VAST/Parser/SKVAST2Parser.h"
#include "platform/dispatch/PlainRunLoop.h"
#include "platform/foundation/URLLoader.h"
#include "tests/VAST/Parser/VASTTexts.h"
#include "tests/support/HTTPServer.h"

TEST(Requests, harmNobodyWhenTheLoopGoesFirst) {
  PlainRunLoop loop;
  HTTPServer server;
  SKVAST2ParserOptions options;
  options.loader = URLLoader::shared();
  server.on("/silent", HTTPServer::Reply{.silent = true});
  server.on("/pod", vast::document(vast::wrapper(server.url("/silent"), "id='1' sequence='1'") +
                                   vast::wrapper(server.url("/silent"), "id='2' sequence='2'")));
  server.onOthers(
      [&](const auto&) { return HTTPServer::Reply{.body = vast::document(vast::wrapper(server.url("/next")))}; });
  for (int round = 0; round < 200; ++round) {
    const auto inner = std::make_unique<PlainRunLoop>();
    for (const char* path : {"/pod", "/a", "/silent"}) {
      SKVAST2Parser(options).parseWithUrl(NSURL::URLWithString(server.url(path)), [](const auto&) {});
    }
    inner->runUntil([] { return false; }, std::chrono::microseconds(round * 37));
  }
}
