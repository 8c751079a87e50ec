#include <gmock/gmock.h>

#include "VAST/Parser/SKVAST2Parser.h"
#include "platform/dispatch/VirtualRunLoop.h"
#include "tests/VAST/Parser/VASTTexts.h"
#include "tests/support/ScriptedURLLoader.h"

using namespace std::chrono_literals;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

namespace {

const std::string ads = "http://ads.test/";

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
    EXPECT_TRUE(loop.advanceUntil([&] { return completions > 0; }, 30s)) << "never completed";
    took = std::chrono::duration_cast<std::chrono::milliseconds>(loop.now() - startedAt);
    loop.advance(1min);
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

TEST_F(Resolution, endsAFetchWithTheErrorThatFits) {
  using Answer = ScriptedURLLoader::Answer;
  const std::string good = vast::document(vast::playable("a"));
  const struct {
    const char* name;
    Answer answer;
    int error;
    std::size_t documents;
    std::chrono::milliseconds after;
  } rows[] = {
      {"an ad", {200, good, 40ms, {}, false}, 0, 1, 40ms},
      {"no ad", {200, "<VAST version='2.0'/>", {}, {}, false}, 0, 1, 0ms},
      {"another status that has a body", {203, good, {}, {}, false}, 6, 0, 0ms},
      {"nothing to say", {204, "", {}, {}, false}, 6, 0, 0ms},
      {"a redirect that leads nowhere", {302, "", {}, {}, false}, 6, 0, 0ms},
      {"not found", {404, good, {}, {}, false}, 6, 0, 0ms},
      {"a broken server", {500, good, {}, {}, false}, 6, 0, 0ms},
      {"an empty body", {200, "", {}, {}, false}, 2, 0, 0ms},
      {"HTML", {200, "<html><br></html>", {}, {}, false}, 2, 0, 0ms},
      {"a document cut short", {200, good.substr(0, good.size() - 5), {}, {}, false}, 2, 0, 0ms},
      {"a refused connection", {0, "", {}, NSURLErrorCannotConnectToHost, false}, 6, 0, 0ms},
      {"no such host", {0, "", {}, NSURLErrorCannotFindHost, false}, 6, 0, 0ms},
      {"a connection lost after the head", {200, "", 5s, NSURLErrorNetworkConnectionLost, false}, 6, 0, 5s},
      {"redirects for ever", {0, "", {}, NSURLErrorHTTPTooManyRedirects, false}, 6, 0, 0ms},
      {"a bad certificate", {0, "", {}, NSURLErrorServerCertificateUntrusted, false}, 6, 0, 0ms},
      {"more than may come", {200, std::string(17'000'000, ' '), {}, {}, false}, 6, 0, 0ms},
      {"a time-out", {0, "", {}, NSURLErrorTimedOut, false}, 7, 0, 0ms},
      {"silence", {200, good, {}, {}, true}, 7, 0, 10s},
  };
  int number = 0;
  for (const auto& row : rows) {
    SCOPED_TRACE(row.name);
    const std::string url = ads + std::to_string(++number);
    loader->answer(url, row.answer);
    const auto model = request(url);
    EXPECT_EQ(model->getVastError(), row.error);
    EXPECT_THAT(model->vastDocumentArray(), SizeIs(row.documents));
    EXPECT_THAT(model->sequencedAdModels(), ElementsAre(model)) << "there is always an ad to report on";
    EXPECT_EQ(took, row.after);
  }
}

TEST_F(Resolution, followsFourWrappers) {
  serveChain(4);
  const auto model = requestTag();
  EXPECT_EQ(model->getVastError(), 1);
  EXPECT_THAT(model->vastDocumentArray(), SizeIs(5));
  EXPECT_THAT(model->adIDs(), ElementsAre("", "", "", "", ""));
  EXPECT_EQ(model->adTitle(), "end");
  EXPECT_THAT(model->impressions(), SizeIs(4));
  EXPECT_EQ(model->impressions()[0].url()->absoluteString(), "http://t.test/tag");
}

TEST_F(Resolution, fetchesAndRefusesTheFifth) {
  serveChain(5);
  const auto model = requestTag();
  EXPECT_EQ(model->getVastError(), 4);
  EXPECT_THAT(model->vastDocumentArray(), SizeIs(5));
  EXPECT_THAT(asked(), ElementsAre("tag", "hop1", "hop2", "hop3", "hop4", "hop5"));
  EXPECT_THAT(model->mediaFiles(), IsEmpty());
}

TEST_F(Resolution, leavesAWrapperThatPointsAtItself) {
  serve("tag", vast::wrapper(ads + "tag"));
  EXPECT_EQ(requestTag()->getVastError(), 4);
  EXPECT_THAT(asked(), SizeIs(6));
}

TEST_F(Resolution, followsOnlyHTTP) {
  for (const std::string target :
       {"file:///etc/passwd", "ftp://ads.test/x", "data:text/xml,x", "javascript:x", "fi\nle:///etc/passwd",
        "fi&#9;le:///etc/passwd", "//ads.test/x", "next.xml", " ", "http://"}) {
    const auto model =
        requestDocument(vast::document("<Ad><Wrapper><VASTAdTagURI>" + target + "</VASTAdTagURI></Wrapper></Ad>"));
    EXPECT_EQ(model->getVastError(), 6) << target;
    EXPECT_THAT(model->vastDocumentArray(), SizeIs(1)) << target;
  }
  EXPECT_EQ(request("file:///etc/passwd")->getVastError(), 6);
  EXPECT_EQ(request("not a url")->getVastError(), 6) << "a tag that is nil";
  EXPECT_THAT(asked(), IsEmpty());
}

TEST_F(Resolution, cleansWhereAWrapperPoints) {
  serve("tag", "<Ad><Wrapper><VASTAdTagURI>\n  <![CDATA[ http://ads.test/a|b ]]>\n</VASTAdTagURI></Wrapper></Ad>");
  serve("a%7cb", vast::playable("a"));
  EXPECT_EQ(requestTag()->adTitle(), "a");
}

TEST_F(Resolution, resolvesATreeDepthFirstAndOneHopAtATime) {
  serve("tag", vast::wrapper(ads + "s", "id='S'") + vast::wrapper(ads + "b", "id='B' sequence='2'") +
                   vast::wrapper(ads + "a", "id='A' sequence='1'"));
  serve("a", vast::wrapper(ads + "a2", "id='A2' sequence='2'") + vast::wrapper(ads + "a1", "id='A1' sequence='1'") +
                 vast::wrapper(ads + "as", "id='AS'"));
  serve("a1", vast::wrapper(ads + "a11"));
  for (const std::string leaf : {"a11", "a2", "as", "b", "s"}) {
    loader->answer(ads + leaf, {200, vast::document(vast::playable(leaf)), 100ms, {}, false});
  }
  const auto model = requestTag();
  EXPECT_THAT(asked(), ElementsAre("tag", "a", "a1", "a11", "a2", "as", "b", "s"));
  EXPECT_EQ(took, 500ms);
  const auto pod = model->sequencedAdModels();
  ASSERT_THAT(pod, SizeIs(3));
  EXPECT_EQ(pod[0]->adTitle(), "a11");
  EXPECT_EQ(pod[1]->adTitle(), "a2");
  EXPECT_EQ(pod[2]->adTitle(), "b");
  EXPECT_THAT(errors(pod), ElementsAre(1, 1, 1));
  EXPECT_EQ(model->getVastError(), 0);
}

TEST_F(Resolution, marksOnlyTheAdWhoseHopFailed) {
  serve("tag", vast::wrapper(ads + "missing", "id='A' sequence='1'") +
                   vast::wrapper(ads + "silent", "id='B' sequence='2'") +
                   vast::wrapper(ads + "broken", "id='C' sequence='3'") + vast::playable("d", "id='D' sequence='4'") +
                   vast::wrapper(ads + "missing", "id='S'"));
  loader->answer(ads + "missing", {404, "", {}, {}, false});
  loader->answer(ads + "silent", {200, "", {}, {}, true});
  loader->answer(ads + "broken", {200, "<VAST>", {}, {}, false});
  const auto model = requestTag();
  EXPECT_EQ(model->getVastError(), 0);
  EXPECT_THAT(errors(model->adModels()), ElementsAre(6, 7, 2, 0));
  EXPECT_THAT(errors(model->standaloneAdModels()), ElementsAre(6));
  EXPECT_THAT(model->adModels()[3]->mediaFiles(), SizeIs(1));
}

// Only the children of a pod are visited.
TEST_F(Resolution, leavesStandaloneAdsWithoutAPodUnresolved) {
  serve("tag", vast::wrapper(ads + "a", "id='A'") + vast::wrapper(ads + "b", "id='B'"));
  const auto model = requestTag();
  EXPECT_EQ(model->getVastError(), 0);
  EXPECT_THAT(asked(), ElementsAre("tag"));
  EXPECT_FALSE(model->standaloneAdModels()[0]->vastError());
}

TEST_F(Resolution, takesADocumentFromMemory) {
  serve("next", vast::playable("a"));
  EXPECT_EQ(requestDocument("")->getVastError(), 2);
  EXPECT_EQ(requestDocument(vast::document(vast::playable("a")))->getVastError(), 0);
  const auto model = requestDocument(vast::document(vast::wrapper(ads + "next")));
  EXPECT_EQ(model->getVastError(), 1);
  EXPECT_THAT(model->vastDocumentArray(), SizeIs(2));
}

TEST_F(Resolution, endsWhenTheTimeOfTheWholeRequestIsUp) {
  std::string pod = vast::playable("first", "id='0' sequence='0'");
  for (const std::string name : {"1", "2", "3", "4", "5"}) {
    pod += vast::wrapper(ads + name, "id='" + name + "' sequence='" + name + "'");
    loader->answer(ads + name, {200, "", {}, {}, true});
  }
  loader->answer(ads + "tag", {200, vast::document(pod), 4s, {}, false});
  const auto model = requestTag();
  EXPECT_EQ(took, 30s);
  EXPECT_THAT(asked(), ElementsAre("tag", "1", "2", "3")) << "10 s each, and 6 s for the last";
  EXPECT_THAT(errors(model->adModels()), ElementsAre(0, 7, 7, 7, 7, 7));
  EXPECT_THAT(model->adModels()[0]->mediaFiles(), SizeIs(1)) << "what is resolved plays";
  EXPECT_THAT(hops, SizeIs(6));
}

// A loader whose places are all taken keeps a fetch beyond its own limits.
TEST_F(Resolution, endsInTimeWithAFetchThatIsHeldBack) {
  struct Stuck : URLLoader {
    std::vector<std::function<void()>> late;
    void load(URLRequest, const dispatch_queue_t& queue, Completion completion) override {
      late.push_back([queue, completion = std::move(completion)] {
        dispatch_async(queue, [completion] { completion(URLResponse{200, {}, {}, {}}); });
      });
    }
    bool send(URLRequest) override { return false; }
  };
  const auto stuck = std::make_shared<Stuck>();
  options.loader = stuck;
  EXPECT_EQ(requestTag()->getVastError(), 7);
  EXPECT_EQ(took, 30s);
  for (const auto& end : stuck->late) end();
  loop.advance(1min);
  EXPECT_THAT(hops, SizeIs(1)) << "what comes late is not listened to";
}

TEST_F(Resolution, tellsWhoInspectsAboutEveryHop) {
  loader->answer(ads + "tag", {200,
                               vast::document(vast::wrapper(ads + "one", "id='A' sequence='1'") +
                                              vast::wrapper(ads + "two", "id='B' sequence='2'") +
                                              vast::wrapper("file:///x", "id='C' sequence='3'")),
                               30ms,
                               {},
                               false});
  loader->answer(ads + "one", {404, "gone", 20ms, {}, false});
  loader->answer(ads + "two", {200, vast::document(""), 10ms, NSURLErrorNetworkConnectionLost, false});
  requestTag();
  const struct {
    std::string url;
    int depth;
    long status;
    std::chrono::milliseconds elapsed;
    std::optional<SKVASTError> error;
  } rows[] = {{ads + "tag", 0, 200, 30ms, {}},
              {ads + "one", 1, 404, 20ms, SKVASTError(6)},
              {ads + "two", 1, 0, 10ms, SKVASTError(6)},
              {"file:///x", 1, 0, 0ms, SKVASTError(6)}};
  ASSERT_THAT(hops, SizeIs(4));
  for (std::size_t i = 0; i < 4; ++i) {
    EXPECT_EQ(hops[i].url, rows[i].url);
    EXPECT_EQ(hops[i].depth, rows[i].depth) << rows[i].url;
    EXPECT_EQ(hops[i].status, rows[i].status) << rows[i].url;
    EXPECT_EQ(hops[i].elapsed, rows[i].elapsed) << rows[i].url;
    EXPECT_EQ(hops[i].error, rows[i].error) << rows[i].url;
  }
}

TEST_F(Resolution, refusesADocumentThatTheSchemaDoesNotAllowWhenAskedTo) {
  const std::string valid =
      "<VAST version='2.0'><Ad id='1'><InLine><AdSystem>s</AdSystem><AdTitle>t</AdTitle>"
      "<Impression>http://t.test/i</Impression><Creatives><Creative><Linear><Duration>00:00:10</Duration></Linear>"
      "</Creative></Creatives></InLine></Ad></VAST>";
  const std::string invalid = "<VAST version='2.0'><Ad id='1'><Surprise/></Ad></VAST>";
  EXPECT_EQ(requestDocument(invalid)->getVastError(), 0) << "not checked unless asked to";
  options.validatesWithSchema = true;
  EXPECT_EQ(requestDocument(valid)->getVastError(), 0);
  const auto refused = requestDocument(invalid);
  EXPECT_EQ(refused->getVastError(), 3);
  EXPECT_THAT(refused->vastDocumentArray(), IsEmpty());
}

TEST_F(Resolution, boundsWhatARequestBringsInAll) {
  const auto podOf = [](const std::string& target) {
    std::string pod;
    for (const std::string name : {"1", "2", "3", "4", "5", "6"}) {
      pod += vast::wrapper(ads + target, "id='" + name + "' sequence='" + name + "'");
    }
    return pod;
  };
  std::string comments;
  while (comments.size() < 15'000'000) comments += "<!--" + std::string(1'000'000, '.') + "-->";
  serve("large", vast::playable("large") + comments);
  serve("tag", podOf("large"));
  EXPECT_THAT(errors(requestTag()->adModels()), ElementsAre(1, 1, 1, 1, 6, 6)) << "64 MiB";

  std::string elements;
  for (int i = 0; i < 300'000; ++i) elements += "<x/>";
  serve("many", vast::playable("many") + elements);
  EXPECT_THAT(errors(requestDocument(vast::document(podOf("many")))->adModels()), ElementsAre(1, 1, 1, 2, 2, 2))
      << "a million elements";
}

TEST_F(Resolution, harmsNobodyWhenItsHubIsGone) {
  serve("tag", vast::wrapper(ads + "a", "id='A' sequence='1'") + vast::playable("b", "id='B' sequence='2'"));
  serve("a", vast::playable("c", "id='C' sequence='1'") + vast::playable("d", "id='D' sequence='2'"));
  auto hub = std::make_shared<int>(0);
  std::weak_ptr<YMRVastModel> seen;
  SKVAST2Parser().parseWithUrl(NSURL::URLWithString(ads + "tag"),
                               [weak = std::weak_ptr(hub), &seen](std::shared_ptr<YMRVastModel> model) {
                                 seen = model;
                                 if (const auto alive = weak.lock()) ++*alive;
                               });
  hub.reset();
  loop.advance(1min);
  EXPECT_TRUE(seen.expired()) << "nobody keeps the model";
  EXPECT_THAT(asked(), ElementsAre("tag", "a"));
}

}  // namespace
