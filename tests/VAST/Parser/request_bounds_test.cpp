// That a request ends, once, in time and within bounds, whatever comes.
#include "tests/VAST/Parser/Resolution.h"

using namespace std::chrono_literals;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

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
