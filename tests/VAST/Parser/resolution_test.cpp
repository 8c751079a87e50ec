// What a tag becomes: chains, trees, and what of them fails.
#include "tests/VAST/Parser/Resolution.h"

using namespace std::chrono_literals;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

TEST_F(Resolution, followsFourWrappersAndRefusesTheFifth) {
  serveChain(4);
  const auto four = requestTag();
  EXPECT_EQ(four->getVastError(), 1);
  EXPECT_EQ(four->adTitle(), "end");
  EXPECT_THAT(four->adIDs(), ElementsAre("", "", "", "", ""));
  EXPECT_THAT(four->impressions(), SizeIs(4));
  EXPECT_EQ(four->impressions()[0].url()->absoluteString(), "http://t.test/tag");
  serve("self", vast::wrapper(" " + ads + "self?a|b \n"));
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
