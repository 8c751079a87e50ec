#pragma once

#include <gmock/gmock.h>

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "VAST/Parser/SKVAST2Parser.h"
#include "platform/dispatch/VirtualRunLoop.h"
#include "tests/VAST/Parser/VASTTexts.h"
#include "tests/support/ScriptedURLLoader.h"

inline const std::string ads = "http://ads.test/";

// Requests against a scripted loader, on virtual time.
struct Resolution : testing::Test {
  using Model = std::shared_ptr<YMRVastModel>;

  // Runs one request to its end, within the time that a request may take.
  Model finish(const std::function<void(SKVAST2Parser&, SKVAST2Parser::Completion)>& begin) {
    Model model;
    int completions = 0;
    options.hopObserver = [this](const VASTHop& hop) {
      EXPECT_FALSE(loop.isCurrent());
      hops.push_back(hop);
    };
    {
      SKVAST2Parser parser(options);
      begin(parser, [&](Model result) {
        EXPECT_TRUE(loop.isCurrent());
        model = std::move(result);
        ++completions;
      });
      EXPECT_EQ(completions, 0) << "completed before the call returned";
    }
    const auto startedAt = loop.now();
    EXPECT_TRUE(loop.advanceUntil([&] { return completions > 0; }, std::chrono::seconds(30))) << "never completed";
    took = std::chrono::duration_cast<std::chrono::milliseconds>(loop.now() - startedAt);
    loop.advance(std::chrono::minutes(1));
    EXPECT_EQ(completions, 1);
    EXPECT_EQ(loop.pendingTimers(), 0u);
    return model;
  }

  Model request(const std::string& url) {
    return finish([&](SKVAST2Parser& parser, auto completion) {
      parser.parseWithUrl(NSURL::URLWithString(url), std::move(completion));
    });
  }
  Model requestTag() { return request(ads + "tag"); }

  Model requestDocument(const std::string& text) {
    return finish([&](SKVAST2Parser& parser, auto completion) {
      parser.parseWithData(VASTDocument(text), std::move(completion));
    });
  }

  void serve(const std::string& name, const std::string& content) {
    loader->answer(ads + name, vast::document(content));
  }

  // `count` wrappers behind the tag, and then an ad.
  void serveChain(int count) {
    std::string name = "tag";
    for (int i = 1; i <= count; ++i) {
      const std::string next = "hop" + std::to_string(i);
      serve(name, vast::wrapper(ads + next, "", "<Impression>http://t.test/" + name + "</Impression>"));
      name = next;
    }
    serve(name, vast::playable("end"));
  }

  std::vector<std::string> asked() const {
    auto urls = loader->askedURLs();
    for (auto& url : urls) url.erase(0, ads.size());
    return urls;
  }

  static std::vector<SKVASTError> errors(const YMRVastModel::Models& models) {
    std::vector<SKVASTError> list;
    for (const auto& model : models) list.push_back(model->getVastError());
    return list;
  }

  VirtualRunLoop loop;
  ScriptedLoaderInPlace inPlace;
  const std::shared_ptr<ScriptedURLLoader> loader = inPlace.loader;
  SKVAST2ParserOptions options;
  std::vector<VASTHop> hops;
  std::chrono::milliseconds took{0};
};
