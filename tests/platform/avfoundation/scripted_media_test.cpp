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

TEST_F(Scripted, seeksAreLoggedAndTheLastOneWins) {
  media.script(url).seekDelay = 1;
  const auto engine = make();
  const auto note = [this](bool finished) { lines.push_back(finished ? "yes" : "no"); };
  engine->load();
  engine->seek(seconds(5), note);
  loop.advance(500ms);
  engine->seek(seconds(99), note);
  EXPECT_EQ(text(engine->position()), "60");
  loop.advance(2s);
  EXPECT_THAT(take(), ElementsAre("ready", "no", "yes", "buffering"));
  EXPECT_THAT(media.logs()[0]->seeks, ElementsAre(5, 99));
  EXPECT_EQ(media.logs()[0]->flushes, 1);
}

TEST_F(Scripted, silenceFailsWithinTheLimits) {
  media.script(url).neverLoads = true;
  const auto engine = make();
  engine->load();
  loop.advance(9999ms);
  EXPECT_THAT(take(), IsEmpty());
  loop.advance(1ms);
  EXPECT_THAT(take(), ElementsAre("failed -11870"));
}

TEST_F(Scripted, enginesAreCountedAndTheirLogsOutliveThem) {
  auto first = make();
  const auto second = MediaEngine::make({*NSURL::URLWithString("http://example.com/b.mp4")});
  EXPECT_EQ(media.aliveEngines(), 2);
  EXPECT_EQ(media.engine(url), first.get());
  EXPECT_EQ(media.engine(), second.get());
  first->load();
  first.reset();
  EXPECT_EQ(media.engine(url), nullptr);
  EXPECT_EQ(media.aliveEngines(), 1);
  ASSERT_EQ(media.logs(url).size(), 1u);
  EXPECT_EQ(media.logs(url)[0]->loads, 1);
  EXPECT_TRUE(media.logs(url)[0]->destroyed);
  EXPECT_EQ(loop.pendingTimers(), 0u);
}

TEST_F(Scripted, enginesTellWhenTheyAreDestroyedFromInsideTheirReports) {
  auto engine = make();
  MediaEngine::Events events;
  events.ready = [&] { engine.reset(); };
  engine->setEvents(std::move(events));
  engine->load();
  loop.advance(1s);
  EXPECT_EQ(media.aliveEngines(), 0);
  EXPECT_TRUE(media.logs()[0]->destroyedInsideAReport);
}
