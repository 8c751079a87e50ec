#include "tests/platform/avfoundation/PlayerTest.h"

class AssetLoading : public PlayerTest {
 protected:
  std::shared_ptr<AVURLAsset> assetOf(const char* url) {
    return std::make_shared<AVURLAsset>(NSURL::URLWithString(url));
  }
  void load(const std::shared_ptr<AVURLAsset>& asset, const std::string& name = "loaded") {
    asset->loadValuesAsynchronouslyForKeys({"playable"}, [self = diary, name] { self->note(name); });
  }
  static const NSError gone;
};

const NSError AssetLoading::gone = {NSURLErrorDomain, NSURLErrorFileDoesNotExist, "gone"};

TEST_F(AssetLoading, completesOnceForEachWhoAsksNeverInsideTheCallAndSoDoItsItems) {
  media.otherwise().loadFailure = gone;
  media.script(programme).loadFailure.reset();
  media.script("http://example.com/silent").neverLoads = true;
  const struct {
    std::optional<NSURL> url;
    int error;
  } rows[] = {{NSURL::URLWithString(programme), 0},
              {NSURL::URLWithString("http://example.com/gone"), NSURLErrorFileDoesNotExist},
              {NSURL::URLWithString("http://example.com/silent"), AVErrorNoDataReceived},
              {std::nullopt, NSURLErrorBadURL}};
  for (const auto& row : rows) {
    const auto asset = std::make_shared<AVURLAsset>(row.url);
    load(asset, "first");
    load(asset, "second");
    EXPECT_THAT(diary->lines(), IsEmpty());
    loop.advance(10s);
    load(asset, "late");
    EXPECT_THAT(diary->take(), ElementsAre("first", "second"));
    loop.advance(10s);
    EXPECT_THAT(diary->take(), ElementsAre("late"));
    NSError error;
    EXPECT_EQ(asset->statusOfValueForKey("playable", &error),
              row.error ? AVKeyValueStatusFailed : AVKeyValueStatusLoaded);
    EXPECT_EQ(error.code, row.error);

    item = AVPlayerItem::playerItemWithAsset(asset);
    Diary::watch(diary, item, {"status"});
    player = AVPlayer::playerWithPlayerItem(item);
    EXPECT_EQ(item->status(), AVPlayerItemStatusUnknown) << "until a later turn";
    EXPECT_THAT(diary->lines(), IsEmpty());
    loop.advance(row.error ? 0s : 1s);
    EXPECT_THAT(diary->take(), ElementsAre(row.error ? "status 2" : "status 1"));
    EXPECT_EQ(item->error().value_or(NSError{}).code, row.error);
  }
  EXPECT_EQ(media.logs().size(), 3u) << "what has failed is not opened again";
}

TEST_F(AssetLoading, handsItsPipelineToTheFirstItemLoadedOrLoading) {
  media.script(programme).loadDelay = 5;
  for (const auto loaded : {2s, 5s}) {
    const auto asset = assetOf(programme);
    load(asset);
    loop.advance(loaded);
    player = AVPlayer::playerWithPlayerItem(AVPlayerItem::playerItemWithAsset(asset));
    player->play();
    loop.advance(5250ms - loaded);
    EXPECT_EQ(position(), "0.25");
    EXPECT_THAT(diary->take(), ElementsAre("loaded"));
  }
  EXPECT_EQ(media.logs().size(), 2u) << "each was opened once";
}

TEST_F(AssetLoading, thePipelineGoesWithWhoeverHasItAndTheLoadStillCompletes) {
  media.script(programme).loadDelay = 5;
  auto asset = assetOf(programme);
  player = AVPlayer::playerWithPlayerItem(AVPlayerItem::playerItemWithAsset(asset));
  load(asset);
  player.reset();
  loop.runUntilIdle();
  EXPECT_THAT(diary->take(), ElementsAre("loaded"));
  EXPECT_EQ(asset->statusOfValueForKey("playable"), AVKeyValueStatusUnknown);
  load(asset, "again");
  EXPECT_EQ(media.aliveEngines(), 1);
  asset.reset();
  EXPECT_EQ(media.aliveEngines(), 0);
  EXPECT_THAT(diary->lines(), IsEmpty());
  loop.runUntilIdle();
  EXPECT_THAT(diary->take(), ElementsAre("again"));
}

TEST_F(AssetLoading, doesNotHandOutAPipelineThatBrokeWhileNobodyHadIt) {
  const auto asset = assetOf(programme);
  load(asset);
  loop.advance(1s);
  engine().fail(gone);
  loop.advance(1s);
  EXPECT_EQ(media.aliveEngines(), 0);
  item = AVPlayerItem::playerItemWithAsset(asset);
  player = AVPlayer::playerWithPlayerItem(item);
  loop.advance(1s);
  EXPECT_EQ(item->status(), AVPlayerItemStatusReadyToPlay);
}

TEST_F(AssetLoading, knowsTheDurationOnceLoadedAndLearnsFromItsItemsPipeline) {
  const auto asset = assetOf(programme);
  EXPECT_TRUE(CMTIME_IS_INVALID(asset->duration()));
  load(asset);
  loop.advance(1s);
  EXPECT_EQ(text(asset->duration()), "60");
  player = AVPlayer::playerWithPlayerItem(AVPlayerItem::playerItemWithAsset(asset));
  engine().setDuration(90);
  loop.runUntilIdle();
  EXPECT_EQ(text(asset->duration()), "90");
}
