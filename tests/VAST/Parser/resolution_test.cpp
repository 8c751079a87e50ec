// What a tag becomes: chains, trees, what of them fails; and that a request ends, once, in time and within bounds,
// whatever comes.
#include <gmock/gmock.h>

#include "VAST/Parser/SKVAST2Parser.h"
#include "platform/dispatch/VirtualRunLoop.h"
#include "tests/VAST/Parser/RecordedLog.h"
#include "tests/VAST/Parser/VASTTexts.h"
#include "tests/support/ScriptedURLLoader.h"

using namespace std::chrono_literals;
using testing::Contains;
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
      throw std::runtime_error("from the host");  // which changes nothing
    };
    {
      SKVAST2Parser parser(options);
      begin(parser, [&](Model result) {
        EXPECT_TRUE(loop.isCurrent());
        model = std::move(result);
        ++completions;
        throw completions;
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

}  // namespace

TEST_F(Resolution, followsFourWrappersAndRefusesTheFifth) {
  for (const std::string hop : {"tag", "1", "2", "3"}) {
    serve(hop, vast::wrapper(" " + ads + std::to_string(std::atoi(hop.c_str()) + 1) + " \n", "",
                             "<Impression>http://t.test/" + hop + "</Impression>"));
  }
  serve("4", vast::playable("end"));
  const auto four = requestTag();
  EXPECT_EQ(four->getVastError(), 1);
  EXPECT_EQ(four->adTitle(), "end");
  EXPECT_THAT(four->adIDs(), ElementsAre("", "", "", "", ""));
  EXPECT_THAT(four->impressions(), SizeIs(4));
  EXPECT_EQ(four->impressions()[0].url()->absoluteString(), "http://t.test/tag");
  serve("self", vast::wrapper(ads + "self?a|b"));
  loader->answer(ads + "self?a%7cb", vast::document(vast::wrapper(ads + "self")));
  const auto five = request(ads + "self");
  EXPECT_EQ(five->getVastError(), 4);
  EXPECT_THAT(five->vastDocumentArray(), SizeIs(5));
  EXPECT_THAT(five->mediaFiles(), IsEmpty());
  EXPECT_THAT(asked(), SizeIs(5 + 6));
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
  requestTag();
  EXPECT_FALSE(loader->wasAnsweredLately()) << "a connection that is refused";
  loader->answer(ads + "gone", {404, "", {}, {}, false});
  request(ads + "gone");
  EXPECT_TRUE(loader->wasAnsweredLately()) << "an answer, whatever it is, is proof of a network";
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
  EXPECT_THAT((std::vector{pod[0]->adTitle(), pod[1]->adTitle(), pod[2]->adTitle()}), ElementsAre("a11", "a2", "b"));
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
  const RecordedLog log(SKLogLevelWarning);
  const auto model = requestTag();
  EXPECT_EQ(model->getVastError(), 0);
  EXPECT_THAT(log.lines(),
              Contains("warning VAST-Parser: No document from " + ads + "missing: The server answered 404."));
  EXPECT_THAT(errors(model->adModels()), ElementsAre(6, 7, 2, 0));
  EXPECT_THAT(errors(model->standaloneAdModels()), ElementsAre(6));
  EXPECT_THAT(model->adModels()[3]->mediaFiles(), SizeIs(1));
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
  for (const auto& end : std::exchange(stuck->late, {})) end();
  loop.advance(1min);
  EXPECT_THAT(hops, SizeIs(1)) << "what comes late is not listened to";
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
