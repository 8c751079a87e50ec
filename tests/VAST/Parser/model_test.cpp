#include <gmock/gmock.h>

#include "VAST/Parser/YMRVastModel.h"
#include "tests/VAST/Parser/RecordedLog.h"
#include "tests/VAST/Parser/VASTTexts.h"

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

namespace {

using Lines = std::vector<std::string>;

std::shared_ptr<YMRVastModel> modelOf(std::initializer_list<std::string> documents) {
  auto model = std::make_shared<YMRVastModel>();
  for (const auto& document : documents) model->addVASTDocument(VASTDocument(document));
  return model;
}

std::string shown(const NSURL& url) {
  return url.absoluteString();
}
std::string shown(const SKVASTUrlWithId& url) {
  return url.id_().value_or("nil") + " " + shown(*url.url());
}
std::string shown(const std::shared_ptr<YMRVastModel>& model) {
  return model->adID();
}
std::string shown(const std::shared_ptr<SKVASTMediaFile>& file) {
  return shown(*file->url());
}
template <typename List>
Lines each(const List& list) {
  Lines lines;
  for (const auto& one : list) lines.push_back(shown(one));
  return lines;
}

std::string impression(const std::string& name) {
  return "<Impression>http://t.test/" + name + "</Impression>";
}

const std::string elsewhere = "http://ads.test/next";

}  // namespace

TEST(ModelDeathTest, stopsWhenItsOutcomeIsReadBeforeThereIsOne) {
  EXPECT_DEATH(YMRVastModel().getVastError(), "before any step");
}

TEST(Model, answersForItsLastDocumentAndGathersURLsOfTheWholeChainOutermostFirst) {
  const auto model = modelOf(
      {vast::document(
           vast::wrapper(elsewhere, "",
                         "<Impression id='w'>http://t.test/w1</Impression><Error>http://t.test/e1</Error>" +
                             impression("w2") + vast::linear("", vast::tracking("start", "http://t.test/s1"))),
           "3.0"),
       vast::document(vast::inLine(
           "<AdTitle>Harbour</AdTitle><Description><![CDATA[At dawn]]></Description>"
           "<Impression id=''>\n <![CDATA[http://t.test/i?a|b|c]]> \n</Impression>"
           "<Error id='x'>http://t.test/e2</Error>" +
           vast::linear(vast::mediaFile(" http://media.test/a|b.mp4\n"),
                        vast::tracking("start", "http://t.test/s2") + vast::tracking("pause", "http://t.test/p") +
                            "<Tracking>http://t.test/without-event</Tracking>") +
           "<Extensions><Extension><CustomTracking>" + vast::tracking("start", "http://t.test/c") +
           vast::tracking("skip", "http://t.test/k") + "</CustomTracking></Extension></Extensions>"))});
  EXPECT_EQ(model->vastVersion(), "3.0") << "of the first document";
  EXPECT_EQ(model->adTitle(), "Harbour");
  EXPECT_EQ(model->adDescription(), "At dawn");
  EXPECT_FALSE(model->redirectUrl()) << "the wrapper is not in the last document";
  EXPECT_THAT(each(model->mediaFiles()), ElementsAre("http://media.test/a%7cb.mp4"));
  EXPECT_THAT(each(model->impressions()),
              ElementsAre("w http://t.test/w1", "nil http://t.test/w2", " http://t.test/i?a%7cb%7cc"));
  EXPECT_THAT(each(model->errors()), ElementsAre("nil http://t.test/e1", "x http://t.test/e2"));
  const auto events = model->trackingEvents();
  EXPECT_THAT(events, SizeIs(3));
  EXPECT_THAT(each(events.at("start")), ElementsAre("http://t.test/s1", "http://t.test/s2", "http://t.test/c"));
  EXPECT_THAT(each(events.at("pause")), ElementsAre("http://t.test/p"));
  EXPECT_THAT(each(events.at("skip")), ElementsAre("http://t.test/k"));
}

// Only the last step of a path may meet several elements of one name.
TEST(Model, findsNothingBehindTwoElementsOfOneName) {
  const std::string linear = "<Linear><TrackingEvents>" + vast::tracking("start", "http://t.test/s") +
                             "</TrackingEvents><MediaFiles>" + vast::mediaFile("http://media.test/a.mp4") +
                             "</MediaFiles></Linear>";
  const std::string one = "<Creatives><Creative>" + linear + "</Creative></Creatives>";
  const std::string two =
      "<Creatives><Creative>" + linear + "</Creative><Creative>" + linear + "</Creative></Creatives>";
  const std::string twoLinears = "<Creatives><Creative><Linear/>" + linear + "</Creative></Creatives>";
  for (const auto& creatives : {two, twoLinears}) {
    const auto model = modelOf({vast::document(vast::inLine(impression("i") + creatives))});
    EXPECT_THAT(model->mediaFiles(), IsEmpty());
    EXPECT_THAT(model->trackingEvents(), IsEmpty());
    EXPECT_THAT(model->impressions(), SizeIs(1));
  }
  const auto chain = modelOf({vast::document(vast::wrapper(elsewhere, "", two)), vast::document(vast::inLine(one))});
  EXPECT_THAT(chain->trackingEvents().at("start"), SizeIs(1)) << "only the wrapper's are lost";
}

TEST(Model, leavesOutWhatCannotBeAskedFor) {
  for (const std::string bad : {"file:///etc/passwd", "data:text/plain,x", "java\nscript:alert(1)",
                                "fi&#9;le:///etc/passwd", "not a url", "/relative", " \n "}) {
    const auto model = modelOf({vast::document(vast::inLine(
        "<Impression>" + bad + "</Impression><Error>" + bad + "</Error><Error>http://t.test/e</Error>" +
        vast::linear("<MediaFile type='video/mp4'>" + bad + "</MediaFile>", vast::tracking("start", bad))))});
    EXPECT_THAT(model->impressions(), IsEmpty()) << bad;
    EXPECT_THAT(each(model->errors()), ElementsAre("nil http://t.test/e")) << bad;
    EXPECT_THAT(model->trackingEvents(), IsEmpty()) << bad;
    EXPECT_THAT(model->mediaFiles(), IsEmpty()) << bad;
  }
}

TEST(Model, answersNothingOrWhatThereIsForStrangeDocuments) {
  const struct {
    const char* name;
    std::string document;
    std::optional<std::string> version;
    std::size_t files;
  } rows[] = {
      {"no XML", "<html><body>It works!", std::nullopt, 0},
      {"no ad", "<VAST version='3.0'/>", "3.0", 0},
      {"VAST 1", "<VideoAdServingTemplate><Ad><InLine/></Ad></VideoAdServingTemplate>", std::nullopt, 0},
      {"in a default namespace",
       "<VAST version='4.0' xmlns='http://www.iab.com/VAST'>" + vast::playable("a") + "</VAST>", "4.0", 1},
      {"in a prefixed namespace", "<v:VAST xmlns:v='urn:v' version='4.0'><v:Ad/></v:VAST>", std::nullopt, 0},
      {"unknown elements", vast::document("<X/>" + vast::playable("a") + "<Y><Ad/></Y>"), "2.0", 1},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.name);
    const auto model = modelOf({row.document});
    EXPECT_EQ(model->vastVersion(), row.version);
    EXPECT_THAT(model->mediaFiles(), SizeIs(row.files));
    EXPECT_THAT(model->adIDs(), ElementsAre(""));
    EXPECT_THAT(model->sequencedAdModels(), ElementsAre(model));
  }
}

TEST(Model, splitsIntoPodAndStandaloneAds) {
  const RecordedLog log(SKLogLevelWarning);
  const auto model =
      modelOf({vast::document(vast::playable("first", "id='S1'") + vast::playable("pod", "id='P' sequence='1'") +
                              vast::playable("nameless", "") + vast::playable("q", "id='Q' sequence='2'") +
                              vast::playable("r", "id='R' sequence='10'") + vast::playable("second", "id='S2'"))});
  ASSERT_THAT(each(model->sequencedAdModels()), ElementsAre("P", "R", "Q")) << "by sequence as text";
  EXPECT_FALSE(model->adTitle() || model->redirectUrl()) << "a model that was split answers no query";
  ASSERT_THAT(each(model->standaloneAdModels()), ElementsAre("S1", "S2")) << "one without id could not be found again";
  EXPECT_THAT(log.lines(), ElementsAre("warning VAST - Model: Left out 1 Ad without an id among several"));
  EXPECT_EQ(model->adModels()[0]->parent(), model);
  EXPECT_FALSE(model->standaloneAdModels()[0]->parent());
  EXPECT_EQ(model->adModels()[0]->adTitle(), "pod");
  EXPECT_THAT(each(model->standaloneAdModels()[1]->mediaFiles()), ElementsAre("http://media.test/second.mp4"));
}

TEST(Model, givesAChildTheURLsOfItsOwnAdInEveryDocument) {
  const auto root = modelOf({vast::document(vast::wrapper(elsewhere, "id='other' sequence='1'", impression("other")) +
                                            vast::wrapper(elsewhere, "id='A' sequence='2'", impression("outer")))});
  const auto child = root->adModels()[1];
  child->addVASTDocument(
      VASTDocument(vast::document(vast::wrapper(elsewhere, "id='unrelated'", impression("middle")))));
  child->addVASTDocument(VASTDocument(vast::document(vast::inLine(impression("a"), "id='x' sequence='1'") +
                                                     vast::inLine(impression("b"), "id='y' sequence='2'"))));
  EXPECT_THAT(root->vastDocumentArray(), SizeIs(1)) << "chains grow apart";
  ASSERT_THAT(each(root->sequencedAdModels()), ElementsAre("other", "x", "y"));
  const auto grandchild = child->adModels()[1];
  EXPECT_THAT(grandchild->adIDs(), ElementsAre("A", "", "y"));
  EXPECT_THAT(each(grandchild->impressions()),
              ElementsAre("nil http://t.test/outer", "nil http://t.test/middle", "nil http://t.test/b"));
  // One split into stand-alone ads only has one id fewer than documents, and is asked all the same.
  const auto other = root->adModels()[0];
  other->addVASTDocument(VASTDocument(vast::document(vast::playable("s", "id='s'") + vast::playable("t", "id='t'"))));
  EXPECT_THAT(each(root->sequencedAdModels()), ElementsAre("other", "x", "y"));
  EXPECT_THAT(other->mediaFiles(), IsEmpty());
  EXPECT_THAT(each(other->impressions()), ElementsAre("nil http://t.test/other"));
}

TEST(Model, handsOutEachStandaloneAdOnceThoughNobodyKeepsTheParent) {
  YMRVastModel::Models pod;
  std::weak_ptr<YMRVastModel> parent;
  {
    const auto root = modelOf(
        {vast::document(vast::wrapper(elsewhere, "id='S1'") + vast::playable("s2", "id='S2'") +
                        vast::playable("p", "id='P' sequence='1'") + vast::playable("q", "id='Q' sequence='2'"))});
    parent = root;
    root->standaloneAdModels()[0]->addVASTDocument(VASTDocument(
        vast::document(vast::playable("x", "id='x' sequence='1'") + vast::playable("y", "id='y' sequence='2'"))));
    pod = root->adModels();
    EXPECT_THAT(each(pod[0]->sequencedAdModelsOfStandaloneAd()), ElementsAre("x"));
    EXPECT_THAT(each(root->standaloneAdModels()), ElementsAre("y", "S2"));
    EXPECT_THAT(each(root->sequencedAdModelsOfStandaloneAd()), IsEmpty()) << "the root has no parent";
  }
  EXPECT_TRUE(parent.expired()) << "a tree of models goes without being taken apart";
  EXPECT_THAT(each(pod[1]->sequencedAdModelsOfStandaloneAd()), ElementsAre("y")) << "the list is the parent's";
  EXPECT_THAT(each(pod[0]->sequencedAdModelsOfStandaloneAd()), ElementsAre("S2"));
  EXPECT_THAT(pod[0]->sequencedAdModelsOfStandaloneAd(), IsEmpty());
}

// Quadratic work anywhere would take minutes.
TEST(Model, answersForTwentyThousandAds) {
  std::string ads;
  for (int i = 0; i < 20'000; ++i) {
    const std::string number = std::to_string(i);
    ads += vast::playable(number, "id='" + number + (i % 2 ? "'" : "' sequence='" + number + "'"));
  }
  const auto model = modelOf({vast::document(ads)});
  const auto pod = model->sequencedAdModels();
  ASSERT_THAT(pod, SizeIs(10'000));
  for (const auto& ad : pod) {
    EXPECT_EQ(ad->adTitle(), ad->adID());
    EXPECT_THAT(ad->mediaFiles(), SizeIs(1));
    EXPECT_THAT(ad->sequencedAdModelsOfStandaloneAd(), SizeIs(1));
  }
}
