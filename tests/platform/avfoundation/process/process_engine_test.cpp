// What the host makes of a media process that dies, hangs or lies, in virtual time.
#include "platform/avfoundation/process/ProcessEngine.h"

#include <gmock/gmock.h>

#include "platform/avfoundation/process/FetchedSource.h"
#include "platform/dispatch/VirtualRunLoop.h"
#include "tests/platform/avfoundation/process/ScriptedPeer.h"
#include "tests/support/HTTPServer.h"

using namespace std::chrono_literals;

namespace {

class ProcessEngineTest : public testing::Test {
 protected:
  static constexpr std::int64_t second = 1'000'000'000;

  ProcessEngineTest() { make(MediaPurpose::programme); }

  void make(MediaPurpose purpose, const std::string& list = "") {
    const MediaSource source{*NSURL::URLWithString(list.empty() ? "http://host/film" : list), purpose};
    const auto launch = [this] {
      peers.push_back(std::make_shared<ScriptedPeer>());
      peers.back()->begins = begins;
      return peers.back();
    };
    const auto fetch = [source]() -> std::shared_ptr<ByteFetcher> {
      auto fetcher = fetcherOf(source);
      std::byte first{};
      std::size_t count = 0;
      fetcher->makeReader()->read(0, {&first, 1}, count);  // waits: what is looked at is here, or has failed
      return fetcher;
    };
    engine = std::make_unique<ProcessEngine>(source, launch, list.empty() ? ProcessEngine::Fetch() : fetch);
    MediaEngine::Events events;
    events.ready = [this] { told.push_back("ready"); };
    events.failed = [this](const NSError& error) { told.push_back("failed: " + error.message); };
    events.bufferingChanged = [this] { told.push_back(engine->isBufferEmpty() ? "empty" : "filled"); };
    events.jumped = [this] { told.push_back("jumped"); };
    events.ended = [this] { told.push_back("ended"); };
    engine->setEvents(std::move(events));
  }
  // Loaded, ready, and playing with the position written now.
  void play(double place = 0) {
    engine->load(kCMTimeZero);
    engine->setRate(1);
    peers.back()->becomeReady();
    loop.runUntilIdle();
    write(place);
    told.clear();
  }
  void write(double place, std::uint64_t jumps = 0, std::uint64_t seek = 0) {
    peers.back()->position->write(
        {static_cast<std::int64_t>(place * second), loop.now(), true, 60 * second, seek, jumps});
  }
  // Time passes for a process that is well.
  void pass(RunLoop::Duration duration) {
    for (; duration > 0s; duration -= 500ms) {
      loop.advance(500ms);
      peers.back()->position->beat();
    }
  }
  double position() const { return CMTimeGetSeconds(engine->position()); }
  bool hasFailed() const { return !told.empty() && told.back().starts_with("failed"); }

  VirtualRunLoop loop;
  std::vector<std::shared_ptr<ScriptedPeer>> peers;
  std::vector<std::string> told;
  std::unique_ptr<ProcessEngine> engine;
  bool begins = true;
};

TEST_F(ProcessEngineTest, takesTheDeathOfAProcessForAStallAndGoesOnWithAllThatWasChosen) {
  engine->setMuted(true);
  engine->selectLegibleTrack("german");
  play(12);
  loop.advance(200ms);
  const double place = position();
  peers[0]->die("killed by signal 11");
  loop.runUntilIdle();
  EXPECT_THAT(told, testing::ElementsAre("empty"));
  EXPECT_FALSE(engine->isLikelyToKeepUp());
  ASSERT_EQ(peers.size(), 2u);
  const auto load = peers[1]->all<wire::Load>().at(0);
  EXPECT_NEAR(CMTimeGetSeconds(load.start), 12.2, 0.01);
  EXPECT_FALSE(load.isWithoutTexts);
  EXPECT_TRUE(peers[1]->all<wire::SetMuted>().back().muted);
  EXPECT_EQ(peers[1]->all<wire::SelectLegible>().back().identifier, "german");
  EXPECT_EQ(peers[1]->all<wire::SetRate>().back().rate, 1);
  loop.advance(1s);
  EXPECT_EQ(position(), place) << "until the other one is there";
  peers[1]->becomeReady();
  loop.runUntilIdle();
  EXPECT_EQ(told.back(), "filled");
  EXPECT_THAT(told, testing::Not(testing::Contains("ready")));
}

TEST_F(ProcessEngineTest, tellsOfATakeoverThatBeginsElsewhereAndLetsTheTimeOfALiveStreamRunOn) {
  for (const bool isLive : {false, true}) {
    make(MediaPurpose::programme);
    play(12);
    if (isLive) peers.back()->becomeReady(true);
    loop.runUntilIdle();
    std::optional<bool> finished;
    if (isLive) engine->seek(CMTimeMake(12, 1), [&](bool is) { finished = is; });
    peers.back()->die("killed by signal 11");
    loop.runUntilIdle();
    EXPECT_TRUE(peers.back()->all<wire::Load>().at(0).hasBegun);
    write(3);
    peers.back()->becomeReady(isLive);
    loop.runUntilIdle();
    EXPECT_EQ(finished.value_or(true), !isLive) << "a live stream's time is another one there";
    EXPECT_EQ(testing::Value(told, testing::Contains("jumped")), !isLive);
    EXPECT_NEAR(position(), isLive ? 12 : 3, 0.01);
    peers.back()->say(wire::Buffering{false, true, {{kCMTimeZero, CMTimeMake(5, 1)}}});
    loop.runUntilIdle();
    EXPECT_EQ(CMTimeGetSeconds(engine->bufferedRanges().at(0).start), isLive ? 9 : 0);
    engine->seek(CMTimeMake(11, 1), {});
    EXPECT_EQ(CMTimeGetSeconds(peers.back()->all<wire::Seek>().back().time), isLive ? 2 : 11);
  }
}

TEST_F(ProcessEngineTest, givesUpAtTheThirdDeathNearOnePlaceAndLeavesTextsOutBefore) {
  play(12);
  for (int death = 0; death < 2; ++death) {
    peers.back()->die("killed by signal 11");
    loop.advance(1s);
    EXPECT_EQ(peers.back()->all<wire::Load>().at(0).isWithoutTexts, death == 1);
    peers.back()->becomeReady();
    loop.runUntilIdle();
  }
  EXPECT_FALSE(hasFailed());
  peers.back()->die("killed by signal 11");
  loop.runUntilIdle();
  EXPECT_TRUE(hasFailed());
  EXPECT_EQ(peers.size(), 3u);
  EXPECT_EQ(loop.pendingTimers(), 0u);
}

TEST_F(ProcessEngineTest, goesOnForEverWhenTheDeathsAreFarApartInTheMediaOrInTime) {
  play();
  for (int death = 0; death < 20; ++death) {
    write(death % 2 ? 50 : 10, static_cast<std::uint64_t>(death) + 1);
    peers.back()->die("killed by signal 11");
    loop.runUntilIdle();
    peers.back()->becomeReady();
    pass(16s);
  }
  EXPECT_FALSE(hasFailed());
}

TEST_F(ProcessEngineTest, anAdFailsWithItsProcessUnlessItHasEnded) {
  make(MediaPurpose::advertisement);
  play();
  peers.back()->die("killed by signal 11");
  loop.runUntilIdle();
  EXPECT_TRUE(hasFailed());
  make(MediaPurpose::advertisement);
  play();
  peers.back()->say(wire::Ended{});
  peers.back()->die("killed by signal 11");
  loop.runUntilIdle();
  EXPECT_EQ(told.back(), "ended");
}

TEST_F(ProcessEngineTest, blamesNoAdForAProcessThatStoodStillBeforeItBeganWithIt) {
  make(MediaPurpose::advertisement);
  begins = false;
  engine->load(kCMTimeZero);
  peers[0]->say(wire::Hello{});
  begins = true;
  loop.advance(3s);
  ASSERT_EQ(peers.size(), 2u);
  EXPECT_FALSE(hasFailed());
  peers[1]->die("killed by signal 11");
  loop.runUntilIdle();
  EXPECT_TRUE(hasFailed());

  make(MediaPurpose::advertisement);
  begins = false;
  engine->load(kCMTimeZero);
  for (int death = 0; death < 3; ++death) {
    peers.back()->die("killed by signal 11");
    loop.runUntilIdle();
  }
  EXPECT_TRUE(hasFailed()) << "and not in the host: it may have lied";
  EXPECT_EQ(peers.size(), 5u);
}

TEST_F(ProcessEngineTest, endsAProcessWhoseHeartStandsStillForTwoSecondsOfItsOwnRunningTime) {
  play();
  pass(15s);
  EXPECT_FALSE(peers[0]->isEnded);
  loop.advance(2500ms);
  EXPECT_TRUE(peers[0]->isEnded);
  ASSERT_EQ(peers.size(), 2u);
  for (int sign = 0; sign < 10; ++sign) {
    ++peers[1]->signs;  // it loads its libraries from a slow disk
    loop.advance(1500ms);
  }
  EXPECT_FALSE(peers[1]->isEnded);
  loop.advance(2500ms);
  EXPECT_TRUE(peers[1]->isEnded);
}

TEST_F(ProcessEngineTest, readsAListAnewBeforeAnotherProcessPlaysItIfItIsThere) {
  HTTPServer server;
  server.on("/live", "#EXTM3U");
  make(MediaPurpose::programme, server.url("/live"));
  engine->load(kCMTimeZero);
  for (const std::size_t number : {1u, 2u, 3u}) {
    loop.advance(10ms);
    ASSERT_EQ(peers.size(), number);
    EXPECT_TRUE(peers.back()->all<wire::Load>().at(0).areSegments);
    peers.back()->becomeReady();
    if (number == 2) server.on("/live", HTTPServer::Reply{.status = 404});
    pass(61s);  // it is not the media's fault
    peers.back()->die("killed by signal 11");
  }
  EXPECT_FALSE(hasFailed());
}

TEST_F(ProcessEngineTest, completesEachSeekOnceThroughADeathToo) {
  play();
  std::vector<bool> completed;
  const auto seek = [&](int seconds) {
    engine->seek(CMTimeMake(seconds, 1), [&](bool finished) { completed.push_back(finished); });
  };
  seek(20);
  seek(30);
  EXPECT_EQ(position(), 30);
  peers[0]->die("killed by signal 11");
  loop.runUntilIdle();
  EXPECT_EQ(CMTimeGetSeconds(peers[1]->all<wire::Load>().at(0).start), 30);
  peers[1]->becomeReady();
  peers[1]->say(wire::SeekDone{peers[1]->all<wire::Seek>().at(0).number, true});
  loop.runUntilIdle();
  EXPECT_THAT(completed, testing::ElementsAre(false, true));
  seek(40);
  peers[1]->say(wire::SeekDone{3, true});
  loop.runUntilIdle();
  EXPECT_THAT(completed, testing::ElementsAre(false, true, true));
}

TEST_F(ProcessEngineTest, thePositionRunsOnBetweenLooksNeverBackAndNeverFarOnItsOwn) {
  play(5);
  loop.advance(100ms);
  EXPECT_NEAR(position(), 5.1, 1e-6);
  write(5.05);
  EXPECT_NEAR(position(), 5.1, 1e-6) << "the process was slower than was thought";
  pass(10s);
  EXPECT_NEAR(position(), 5.55, 1e-6);
  write(59.9);
  loop.advance(400ms);
  EXPECT_EQ(position(), 60);
  write(7, 1);
  EXPECT_NEAR(position(), 7, 1e-6) << "it says that it has gone back";
}

TEST_F(ProcessEngineTest, endsAProcessThatSaysWhatNobodySays) {
  std::vector<std::byte> longer = wire::encode(wire::ToHost(wire::Ready{}));
  longer.push_back({});
  wire::Picture picture;
  picture.area = 3;
  wire::Caption caption{MediaCaption{"a\x1b[2J", false}};
  wire::Failed failed{NSError{"d", 1, "\xff"}};
  wire::Facts facts;
  facts.tracks.resize(1);
  facts.tracks[0].width = -1;
  wire::Buffering endless{false, true, {CMTimeRange{kCMTimeZero, kCMTimePositiveInfinity}}};
  for (const auto& bytes :
       {std::vector<std::byte>(), std::vector<std::byte>(3), std::vector<std::byte>(200'000), longer,
        wire::encode(wire::ToHost(picture)), wire::encode(wire::ToHost(caption)), wire::encode(wire::ToHost(failed)),
        wire::encode(wire::ToHost(facts)), wire::encode(wire::ToHost(endless)),
        wire::encode(wire::ToHost(wire::AreaWanted{1ull << 60})), wire::encode(wire::ToHost(wire::Hello{99}))}) {
    make(MediaPurpose::programme);
    play();
    const auto peer = peers.back();
    peer->say(bytes);
    EXPECT_TRUE(peer->isEnded) << bytes.size();
  }
}

}  // namespace
