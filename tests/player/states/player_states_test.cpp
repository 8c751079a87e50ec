// What each state makes of what the two players report.
#include <gmock/gmock.h>

#include <cmath>

#include "platform/foundation/NSException.h"
#include "player/states/YMRPlayerStateCompletedVideo.h"
#include "player/states/YMRPlayerStateLoadingAd.h"
#include "player/states/YMRPlayerStatePausedAd.h"
#include "player/states/YMRPlayerStatePausedVideo.h"
#include "player/states/YMRPlayerStatePlayingAd.h"
#include "player/states/YMRPlayerStatePlayingVideo.h"
#include "tests/player/states/RecordingHub.h"

using testing::ElementsAre;
using testing::IsEmpty;
using Lines = std::vector<std::string>;

namespace {

CMTime seconds(double value) {
  return CMTimeMakeWithSeconds(value, 1'000'000'000);
}

std::shared_ptr<YMRAbstractPlayerState> make(const std::string& name) {
  if (name == "LoadingAd") return std::make_shared<YMRPlayerStateLoadingAd>();
  if (name == "PlayingAd") return std::make_shared<YMRPlayerStatePlayingAd>();
  if (name == "PausedAd") return std::make_shared<YMRPlayerStatePausedAd>();
  if (name == "PlayingVideo") return std::make_shared<YMRPlayerStatePlayingVideo>();
  if (name == "PausedVideo") return std::make_shared<YMRPlayerStatePausedVideo>();
  return std::make_shared<YMRPlayerStateCompletedVideo>();
}

}  // namespace

TEST(PlayerStates, eachEventDoesInEachStateWhatTheTableSays) {
  enum Event { vodStops, vodStarts, vodScans, adStops, adStarts, bufferEmpty, bufferFull, tick, adTick, jump, other };
  struct Row {
    std::string state;
    Event event;
    float recorded;  // the programme's rate before
    Lines did;
    float recordedAfter;
  };
  const std::vector<Row> table{
      {"PlayingVideo", vodStops, 1, {"videoOnPause 12", "videoOnPauseDuration 12 90", "-> PausedVideo"}, 0},
      {"PlayingVideo", vodStops, 0, {}, 0},
      {"PlayingVideo", vodStarts, 0, {}, 1},
      {"PlayingVideo", vodScans, 1, {}, 2},
      {"PlayingVideo", adStops, 1, {}, 1},
      {"PlayingVideo", bufferEmpty, 1, {"videoDidBuffer", "videoOnBuffer"}, 1},
      {"PlayingVideo", bufferFull, 1, {}, 1},
      {"PlayingVideo", tick, 1, {"videoOnTime 7", "videoOnTimeDuration 7 90"}, 1},
      {"PlayingVideo", adTick, 1, {}, 1},
      {"PlayingVideo", jump, 1, {"videoDidSeekTo 42"}, 1},
      {"PlayingVideo", other, 1, {}, 1},

      {"PausedVideo", vodStarts, 0, {"videoOnPlay", "videoOnPlayDuration 12 90", "-> PlayingVideo"}, 1},
      {"PausedVideo", vodStarts, 2, {"videoOnPlay", "videoOnPlayDuration 12 90", "-> PlayingVideo"}, 1},
      {"PausedVideo", vodStarts, 1, {}, 1},
      {"PausedVideo", vodScans, 0, {}, 2},
      {"PausedVideo", vodStops, 2, {}, 0},
      {"PausedVideo", adStarts, 0, {}, 0},
      {"PausedVideo", bufferEmpty, 0, {}, 0},
      {"PausedVideo", tick, 0, {}, 0},
      {"PausedVideo", jump, 0, {"videoDidSeekTo 42"}, 0},

      {"PlayingAd", adStops, 0.5, {"track 7", "videoAdOnPause 20 3", "-> PausedAd"}, 0.5},
      {"PlayingAd", adStarts, 0.5, {}, 0.5},
      {"PlayingAd", vodStops, 0.5, {}, 0.5},
      {"PlayingAd", bufferEmpty, 0.5, {"videoAdOnBuffer 20 3"}, 0.5},
      {"PlayingAd", bufferFull, 0.5, {}, 0.5},
      {"PlayingAd", tick, 0.5, {}, 0.5},
      {"PlayingAd", adTick, 0.5, {"videoAdOnTime 20 4"}, 0.5},
      {"PlayingAd", jump, 0.5, {}, 0.5},
      {"PlayingAd", other, 0.5, {}, 0.5},

      {"PausedAd", adStarts, 0.5, {"track 8", "videoAdOnPlay 20 3", "-> PlayingAd"}, 0.5},
      {"PausedAd", adStops, 0.5, {}, 0.5},
      {"PausedAd", vodStarts, 0.5, {}, 0.5},
      {"PausedAd", bufferEmpty, 0.5, {}, 0.5},
      {"PausedAd", adTick, 0.5, {}, 0.5},

      {"CompletedVideo", vodStarts, 0, {}, 1},
      {"CompletedVideo", vodStops, 1, {}, 0},
      {"CompletedVideo", adStarts, 1, {}, 1},
      {"CompletedVideo", bufferEmpty, 1, {}, 1},
      {"CompletedVideo", tick, 1, {}, 1},
      {"CompletedVideo", jump, 1, {}, 1},

      {"LoadingAd", vodStarts, 0.5, {}, 0.5},
      {"LoadingAd", vodStops, 0.5, {}, 0.5},
      {"LoadingAd", adStarts, 0.5, {}, 0.5},
      {"LoadingAd", bufferEmpty, 0.5, {}, 0.5},
      {"LoadingAd", tick, 0.5, {}, 0.5},
      {"LoadingAd", adTick, 0.5, {}, 0.5},
      {"LoadingAd", jump, 0.5, {}, 0.5},
  };
  for (const auto& row : table) {
    SCOPED_TRACE(row.state + ", event " + std::to_string(row.event));
    RecordingHub hub;
    hub.state = make(row.state);
    hub.recordedRate = row.recorded;
    hub.item->time = 42;
    hub.item->duration = 90;
    const auto state = hub.state;
    switch (row.event) {
      case vodStops:
        hub.setVodRate(0);
        break;
      case vodStarts:
        hub.setVodRate(1);
        break;
      case vodScans:
        hub.setVodRate(2);
        break;
      case adStops:
        hub.setAdRate(0);
        break;
      case adStarts:
        hub.setAdRate(1);
        break;
      case bufferEmpty:
        hub.item->isBufferEmpty = true;
        hub.report("playbackBufferEmpty", hub.item);
        break;
      case bufferFull:
        hub.report("playbackBufferEmpty", hub.item);
        break;
      case tick:
        state->vodPlayerPeriodicTimeObserver(seconds(7), hub);
        break;
      case adTick:
        state->adPlayerPeriodicTimeObserver(seconds(4), hub);
        break;
      case jump:
        state->videoDidSeek({"jumped", hub.item}, hub);
        break;
      case other:
        hub.report("status", hub.item);
        break;
    }
    EXPECT_EQ(hub.did, row.did);
    EXPECT_EQ(hub.recordedRate, row.recordedAfter);
  }
}

TEST(PlayerStates, aScanAndBackToNormalSpeedIsAStart) {
  RecordingHub hub;
  hub.begin<YMRPlayerStatePausedVideo>();
  hub.setVodRate(2);
  EXPECT_THAT(hub.did, IsEmpty());
  hub.setVodRate(1);
  EXPECT_EQ(RecordingHub::nameOf(*hub.state), "PlayingVideo");
}

TEST(PlayerStates, theStartPositionIsAppliedOnTheFirstStartOnly) {
  RecordingHub hub;
  hub.startPosition = 120;
  hub.begin<YMRPlayerStatePausedVideo>();
  hub.setVodRate(1);
  EXPECT_EQ(hub.did, (Lines{"videoOnPlay", "videoOnPlayDuration 12 90", "-> PlayingVideo", "seek 120"}));
  EXPECT_EQ(hub.startPosition, 0);
  hub.setVodRate(0);
  hub.did.clear();
  hub.setVodRate(1);
  EXPECT_THAT(hub.did, testing::Not(testing::Contains(testing::StartsWith("seek"))));
}

TEST(PlayerStates, aQuartileIsReportedOnceItsShareIsExceededAndOneATickAtMost) {
  struct Row {
    double second;
    double duration;
    int reported;
    Lines did;
    int reportedAfter;
  };
  const double unknown = std::nan("");
  const std::vector<Row> table{
      {5, 20, 0, {}, 0},  // exactly a quarter
      {5.002, 20, 0, {"track 2", "videoAdOnPlayQuartile 0 20"}, 1},
      {10, 20, 1, {}, 1},
      {10.01, 20, 1, {"track 3", "videoAdOnPlayQuartile 1 20"}, 2},
      {15, 20, 2, {}, 2},
      {15.01, 20, 2, {"track 4", "videoAdOnPlayQuartile 2 20"}, 3},
      {16, 20, 0, {"track 2", "videoAdOnPlayQuartile 0 20"}, 1},  // a jump over all of them
      {16, 20, 3, {}, 3},
      {16, 20, 4, {}, 4},
      {16, 20, -1, {}, -1},
      {1, 0, 0, {"track 2", "videoAdOnPlayQuartile 0 0"}, 1},  // an infinite share
      {0, 0, 0, {}, 0},
      {1, unknown, 0, {}, 0},
      {unknown, 20, 0, {}, 0},
  };
  for (const auto& row : table) {
    SCOPED_TRACE(std::to_string(row.second) + " of " + std::to_string(row.duration));
    RecordingHub hub;
    hub.adDurationNow = row.duration;
    hub.quartile = row.reported;
    hub.begin<YMRPlayerStatePlayingAd>();
    hub.state->adPlayerPeriodicTimeObserver(std::isnan(row.second) ? kCMTimeInvalid : seconds(row.second), hub);
    ASSERT_FALSE(hub.did.empty());
    hub.did.erase(hub.did.begin());  // videoAdOnTime
    EXPECT_EQ(hub.did, row.did);
    EXPECT_EQ(hub.quartile, row.reportedAfter);
  }
}

// What a host does inside a callback may end the state's say: nothing more is then reported, recorded or entered.
TEST(PlayerStates, aStateThatIsNoLongerCurrentDoesNothingMore) {
  struct Row {
    std::string state;
    std::string callback;
    Lines did;
  };
  const std::vector<Row> table{
      {"PlayingVideo", "videoOnPause", {"videoOnPause 12"}},
      {"PlayingVideo", "videoOnPauseDuration", {"videoOnPause 12", "videoOnPauseDuration 12 90"}},
      {"PlayingVideo", "videoDidBuffer", {"videoDidBuffer"}},
      {"PlayingVideo", "videoOnTime", {"videoOnTime 7"}},
      {"PausedVideo", "videoOnPlay", {"videoOnPlay"}},
      {"PausedVideo", "videoOnPlayDuration", {"videoOnPlay", "videoOnPlayDuration 12 90"}},
      {"PlayingAd", "videoAdOnPause", {"track 7", "videoAdOnPause 20 3"}},
      {"PlayingAd", "videoAdOnTime", {"videoAdOnTime 20 19"}},
      {"PlayingAd", "videoAdOnPlayQuartile", {"videoAdOnTime 20 19", "track 2", "videoAdOnPlayQuartile 0 20"}},
      {"PausedAd", "videoAdOnPlay", {"track 8", "videoAdOnPlay 20 3"}},
  };
  for (const auto& row : table) {
    SCOPED_TRACE(row.callback);
    RecordingHub hub;
    hub.startPosition = 30;
    hub.state = make(row.state);
    const auto successor = make("CompletedVideo");
    hub.inside[row.callback] = [&] { hub.state = successor; };
    const auto state = hub.state;
    if (row.callback == "videoDidBuffer") {
      hub.item->isBufferEmpty = true;
      hub.report("playbackBufferEmpty", hub.item);
    } else if (row.callback == "videoOnTime") {
      state->vodPlayerPeriodicTimeObserver(seconds(7), hub);
    } else if (row.callback == "videoAdOnTime" || row.callback == "videoAdOnPlayQuartile") {
      state->adPlayerPeriodicTimeObserver(seconds(19), hub);
    } else if (row.state == "PlayingVideo") {
      hub.recordedRate = 1;
      hub.setVodRate(0);
      EXPECT_EQ(hub.recordedRate, 1);
    } else if (row.state == "PausedVideo") {
      hub.setVodRate(1);
      EXPECT_EQ(hub.recordedRate, 0);
    } else {
      hub.setAdRate(row.state == "PlayingAd" ? 0.0f : 1.0f);
    }
    EXPECT_EQ(hub.did, row.did);
    EXPECT_EQ(hub.state, successor);
    EXPECT_EQ(hub.startPosition, 30);
    EXPECT_EQ(hub.quartile, 0);
  }
}

TEST(PlayerStates, aStateThatForgetsToHandleEventsIsAProgrammingError) {
  YMRAbstractPlayerState state;
  RecordingHub hub;
  const auto thrownBy = [](const auto& operation) -> std::string {
    try {
      operation();
    } catch (const NSInternalInconsistencyException& exception) {
      return exception.name() + ": " + exception.reason();
    }
    return "";
  };
  EXPECT_EQ(thrownBy([&] { state.log(); }), "NSInternalInconsistencyException: You must override log in a subclass");
  EXPECT_EQ(thrownBy([&] { state.observeValueForKeyPath("rate", hub.vodPlayer, {}, nullptr, hub); }),
            "NSInternalInconsistencyException: You must override "
            "observeValueForKeyPath:ofObject:change:context:ymrPlayer: in a subclass");
  state.vodPlayerPeriodicTimeObserver(seconds(1), hub);
  state.adPlayerPeriodicTimeObserver(seconds(1), hub);
  state.videoDidSeek({"jumped", hub.item}, hub);
  EXPECT_THAT(hub.did, IsEmpty());
  for (const auto* name : {"LoadingAd", "PlayingAd", "PausedAd", "PlayingVideo", "PausedVideo", "CompletedVideo"}) {
    EXPECT_NO_THROW(make(name)->log()) << name;
  }
}
