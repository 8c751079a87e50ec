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

// The first three to rates of 0, 1 and 2.
enum Event { vodStops, vodStarts, vodScans, adStops, adStarts, bufferEmpty, bufferFull, tick, adTick, jump, other };

void happen(Event event, RecordingHub& hub) {
  hub.item->isBufferEmpty = event == bufferEmpty;
  const auto state = hub.state;
  if (event <= vodScans) hub.setVodRate(static_cast<float>(event));
  if (event == adStops || event == adStarts) hub.setAdRate(event == adStarts);
  if (event == bufferEmpty || event == bufferFull) hub.report("playbackBufferEmpty", hub.item);
  if (event == tick) state->vodPlayerPeriodicTimeObserver(seconds(7), hub);
  if (event == adTick) state->adPlayerPeriodicTimeObserver(seconds(4), hub);
  if (event == jump) state->videoDidSeek({"jumped", hub.item}, hub);
  if (event == other) hub.report("status", hub.item);
}

}  // namespace

TEST(PlayerStates, eachEventDoesInEachStateWhatTheTableSays) {
  struct Row {
    std::string state;
    Event event;
    float recorded;  // the programme's rate before
    Lines did;
  };
  const std::vector<Row> table{
      {"PlayingVideo", vodStops, 1, {"videoOnPause 12", "videoOnPauseDuration 12 90", "-> PausedVideo"}},
      {"PlayingVideo", bufferEmpty, 1, {"videoDidBuffer", "videoOnBuffer"}},
      {"PlayingVideo", tick, 1, {"videoOnTime 7", "videoOnTimeDuration 7 90"}},
      {"PlayingVideo", jump, 1, {"videoDidSeekTo 42"}},
      {"PausedVideo", vodStarts, 0, {"videoOnPlay", "videoOnPlayDuration 12 90", "-> PlayingVideo"}},
      {"PausedVideo", vodStarts, 2, {"videoOnPlay", "videoOnPlayDuration 12 90", "-> PlayingVideo"}},
      {"PausedVideo", jump, 0, {"videoDidSeekTo 42"}},
      {"PlayingAd", adStops, 0.5, {"track 7", "videoAdOnPause 20 3", "-> PausedAd"}},
      {"PlayingAd", bufferEmpty, 0.5, {"videoAdOnBuffer 20 3"}},
      {"PlayingAd", adTick, 0.5, {"videoAdOnTime 20 4"}},
      {"PausedAd", adStarts, 0.5, {"track 8", "videoAdOnPlay 20 3", "-> PlayingAd"}},
      {"PlayingVideo", vodStops, 0, {}},  // no change of the rate
      {"PausedVideo", vodStarts, 1, {}},
  };
  // Whatever the table does not say is nothing; a state of the programme notes its rate.
  std::vector<Row> all = table;
  for (const auto* state : {"LoadingAd", "PlayingAd", "PausedAd", "PlayingVideo", "PausedVideo", "CompletedVideo"}) {
    for (int event = vodStops; event <= other; ++event) {
      const auto isSaid = [&](const Row& row) { return row.state == state && row.event == event; };
      if (std::none_of(table.begin(), table.end(), isSaid)) all.push_back({state, static_cast<Event>(event), 0.5, {}});
    }
  }
  for (const auto& row : all) {
    SCOPED_TRACE(row.state + ", event " + std::to_string(row.event));
    RecordingHub hub;
    hub.state = make(row.state);
    hub.recordedRate = row.recorded;
    hub.item->time = 42;
    hub.item->duration = 90;
    happen(row.event, hub);
    EXPECT_EQ(hub.did, row.did);
    const bool isNoted = row.event <= vodScans && row.state.find("Video") != std::string::npos;
    EXPECT_EQ(hub.recordedRate, isNoted ? static_cast<float>(row.event) : row.recorded);
  }
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
      {10.01, 20, 1, {"track 3", "videoAdOnPlayQuartile 1 20"}, 2},
      {15.01, 20, 2, {"track 4", "videoAdOnPlayQuartile 2 20"}, 3},
      {16, 20, 0, {"track 2", "videoAdOnPlayQuartile 0 20"}, 1},  // a jump over all of them
      {16, 20, 3, {}, 3},
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

TEST(PlayerStates, aStateThatForgetsToHandleEventsIsAProgrammingError) {
  YMRAbstractPlayerState state;
  RecordingHub hub;
  EXPECT_THROW(state.log(), NSInternalInconsistencyException);
  EXPECT_THROW(state.observeValueForKeyPath("rate", hub.vodPlayer, {}, nullptr, hub), NSInternalInconsistencyException);
}
