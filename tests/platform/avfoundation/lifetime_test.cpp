#include "tests/platform/avfoundation/PlayerTest.h"

class Lifetime : public PlayerTest {};

TEST_F(Lifetime, whoDestroysThePlayerFromInsideACallHearsNothingMore) {
  auto& center = NSNotificationCenter::defaultCenter();
  bool destroyed = false;
  const std::function<void()> destroy = [&] {
    EXPECT_FALSE(std::exchange(destroyed, true));
    player.reset();
    item.reset();
    diary->take();
  };
  std::shared_ptr<Reaction> reaction;
  AVPlayer::SeekCompletion completion;
  const auto onKey = [&](const std::shared_ptr<NSObject>& object, const char* key) {
    reaction = std::make_shared<Reaction>(destroy);
    object->addObserver(reaction, key);
  };
  const auto onNotification = [&](const char* name) {
    center.addObserver(&destroyed, name, item, [&](const NSNotification&) { destroy(); });
  };
  const std::pair<const char*, std::function<void()>> places[] = {
      {"rate", [&] { onKey(player, "rate"); }},
      {"status", [&] { onKey(item, "status"); }},
      {"duration", [&] { onKey(item, "duration"); }},
      {"empty buffer", [&] { onKey(item, "playbackBufferEmpty"); }},
      {"keeping up", [&] { onKey(item, "playbackLikelyToKeepUp"); }},
      {"caption", [&] { onKey(item, "currentCaption"); }},
      {"jump", [&] { onNotification(AVPlayerItemTimeJumpedNotification); }},
      {"end", [&] { onNotification(AVPlayerItemDidPlayToEndTimeNotification); }},
      {"tick", [&] { player->addPeriodicTimeObserver(seconds(3), nullptr, [&](CMTime) { destroy(); }); }},
      {"tick aside",
       [&] {
         player->addPeriodicTimeObserver(seconds(3), dispatch_queue_create("aside"), [&](CMTime) { destroy(); });
       }},
      {"completion", [&] { completion = [&](bool) { destroy(); }; }},
      {"failure",
       [&] {
         onKey(item, "status");
         reaction->act = [&] {
           if (item->status() == AVPlayerItemStatusFailed) destroy();
         };
       }},
  };
  for (const auto& [place, watch] : places) {
    SCOPED_TRACE(place);
    auto& script = media.script(programme);
    script = {};
    script.duration = 20;
    script.stalls = {{5, 1}};
    if (place == std::string("failure")) script.failure = {8, {AVFoundationErrorDomain, AVErrorUnknown, ""}};
    destroyed = false;
    completion = noted();
    open();
    const std::weak_ptr<AVPlayer> weak = player;
    watch();
    tickEvery(1);
    player->seekToTime(seconds(0.5), completion);
    player->play();
    for (int step = 0; step < 300 && !destroyed; ++step) {
      loop.advance(100ms);
      if (item && step == 10) engine().setCaption(MediaCaption{"text"});
    }
    EXPECT_TRUE(destroyed) << "never came there";
    loop.advance(30s);
    EXPECT_THAT(diary->take(), IsEmpty());
    EXPECT_TRUE(weak.expired());
    EXPECT_EQ(media.aliveEngines(), 0);
    EXPECT_EQ(media.logs().back()->rates.back(), 0) << "is not heard until it goes";
    EXPECT_EQ(loop.pendingTimers(), 0u);
    center.removeObserver(&destroyed);
    center.removeObserver(diary.get());
  }
}
