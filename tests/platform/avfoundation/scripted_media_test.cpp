#include "tests/platform/avfoundation/PlayerTest.h"

// The tool that other tests trust.
class Scripted : public testing::Test {
 protected:
  static constexpr const char* url = "http://example.com/a.mp4";

  std::unique_ptr<MediaEngine> make() {
    auto engine = MediaEngine::make({*NSURL::URLWithString(url)});
    MediaEngine::Events events;
    events.ready = [this] { lines.push_back("ready"); };
    events.failed = [this](const NSError& error) { lines.push_back("failed " + std::to_string(error.code)); };
    events.ended = [this] { lines.push_back("ended"); };
    events.bufferingChanged = [this] { lines.push_back("buffering"); };
    engine->setEvents(std::move(events));
    return engine;
  }
  std::vector<std::string> take() { return std::exchange(lines, {}); }

  VirtualRunLoop loop;
  ScriptedMedia media;
  std::vector<std::string> lines;
};

TEST_F(Scripted, mediaPlayOnTheClockBetweenReadyAndEnd) {
  media.script(url).loadDelay = 1;
  media.script(url).duration = 4;
  const auto engine = make();
  engine->load();
  engine->setRate(1);
  loop.advance(1s);
  EXPECT_EQ(text(engine->position()), "0");
  loop.advance(1500ms);
  EXPECT_EQ(text(engine->position()), "1.5");
  engine->setRate(2);
  loop.advance(1s);
  EXPECT_EQ(text(engine->position()), "3.5");
  loop.advance(10s);
  EXPECT_EQ(text(engine->position()), "4");
  EXPECT_THAT(take(), ElementsAre("ready", "ended"));
  EXPECT_EQ(loop.pendingTimers(), 0u);
}

TEST_F(Scripted, troubleComesWhereTheScriptSaysInOrder) {
  auto& script = media.script(url);
  script.stalls = {{2, 1}, {3, 1}};
  script.failure = {4, {"domain", 7, ""}};
  const auto engine = make();
  engine->load();
  engine->setRate(1);
  loop.advance(2050ms);
  EXPECT_TRUE(engine->isBufferEmpty());
  EXPECT_THAT(engine->bufferedRanges(), IsEmpty());
  loop.advance(20s);
  EXPECT_EQ(text(engine->position()), "4");
  EXPECT_THAT(take(), ElementsAre("ready", "buffering", "buffering", "buffering", "buffering", "failed 7"));
}
