// What a tag becomes: chains, trees, and what of them fails.
#include "tests/VAST/Parser/Resolution.h"

using namespace std::chrono_literals;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

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
