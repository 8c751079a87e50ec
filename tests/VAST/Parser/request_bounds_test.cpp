// That a request ends, once, in time and within bounds, whatever comes.
#include "tests/VAST/Parser/Resolution.h"

using namespace std::chrono_literals;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

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

TEST_F(Resolution, readsOrRefusesWhatServersSendForXML) {
  const std::string ad = vast::playable("caf\xc3\xa9");
  const std::string bare = "<VAST version='2.0'>" + ad + "</VAST>";
  std::string wide = "\xff\xfe";
  for (const char letter : "<?xml version='1.0' encoding='UTF-16'?><VAST>" + vast::playable("wide") + "</VAST>") {
    wide += {letter, '\0'};
  }
  std::string bomb = "<!DOCTYPE VAST [<!ENTITY a0 'ha'>";
  for (int i = 1; i < 40; ++i) {
    const std::string last = "&a" + std::to_string(i - 1) + ";";
    bomb += "<!ENTITY a" + std::to_string(i) + " '" + last + last + "'>";
  }
  const std::string file = "<!DOCTYPE VAST [<!ENTITY x SYSTEM 'file:///etc/hostname'>]>";
  const auto inTitle = [](const std::string& text) {
    return "<VAST>" + vast::inLine("<AdTitle>" + text + "</AdTitle>") + "</VAST>";
  };
  const struct {
    const char* name;
    std::string document;
    int error;
    std::optional<std::string> title;
  } rows[] = {
      {"without declaration", bare, 0, "caf\xc3\xa9"},
      {"byte order mark", "\xef\xbb\xbf" + bare, 0, "caf\xc3\xa9"},
      {"UTF-16", wide, 0, "wide"},
      {"Latin-1", "<?xml version='1.0' encoding='ISO-8859-1'?>" + inTitle("caf\xe9"), 0, "caf\xc3\xa9"},
      {"an encoding that nobody knows", "<?xml version='1.0' encoding='X-KLINGON'?>" + bare, 2, {}},
      {"bad UTF-8", inTitle("caf\xe9 bar"), 2, {}},
      {"a NUL", inTitle(std::string("a\0b", 3)), 2, {}},
      {"blank lines before the declaration", "\n\n<?xml version='1.0'?>" + bare, 2, {}},
      {"blank lines without one", "\n\n" + bare, 0, "caf\xc3\xa9"},
      {"an entity bomb", bomb + "]>" + inTitle("&a39;"), 0, {}},
      {"an external entity", file + inTitle("&x;"), 0, {}},
      {"an external DTD", "<!DOCTYPE VAST SYSTEM 'http://ads.test/vast.dtd'>" + bare, 0, "caf\xc3\xa9"},
      {"an undeclared entity", inTitle("&nbsp;"), 2, {}},
      {"two documents", bare + bare, 2, {}},
      {"JSON", "{\"ads\": []}", 2, {}},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.name);
    const auto model = requestDocument(row.document);
    EXPECT_EQ(model->getVastError(), row.error);
    EXPECT_EQ(model->adTitle(), row.title);
    EXPECT_THAT(model->vastDocumentArray(), SizeIs(row.error == 0 ? 1 : 0));
  }
  EXPECT_THAT(asked(), IsEmpty()) << "nothing is loaded for a document";
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
