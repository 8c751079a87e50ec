#include "platform/avfoundation/AVMetadataItem.h"
#include "platform/foundation/NSException.h"
#include "tests/platform/avfoundation/PlayerTest.h"

class Item : public PlayerTest {};

TEST_F(Item, isUnknownUntilALaterTurnWhateverItsAssetHasComeTo) {
  media.script("http://example.com/gone").loadFailure = NSError{NSURLErrorDomain, NSURLErrorCannotConnectToHost, ""};
  const struct {
    std::optional<NSURL> url;
    bool loadedBefore;
    AVPlayerItemStatus status;
  } rows[] = {
      {NSURL::URLWithString(programme), false, AVPlayerItemStatusReadyToPlay},
      {NSURL::URLWithString(programme), true, AVPlayerItemStatusReadyToPlay},
      {NSURL::URLWithString("http://example.com/gone"), false, AVPlayerItemStatusFailed},
      {NSURL::URLWithString("http://example.com/gone"), true, AVPlayerItemStatusFailed},
      {std::nullopt, false, AVPlayerItemStatusFailed},
      {std::nullopt, true, AVPlayerItemStatusFailed},
  };
  for (const auto& row : rows) {
    const auto asset = std::make_shared<AVURLAsset>(row.url);
    if (row.loadedBefore) asset->loadValuesAsynchronouslyForKeys({"playable"}, [] {});
    loop.advance(1s);
    item = AVPlayerItem::playerItemWithAsset(asset);
    EXPECT_EQ(item->status(), AVPlayerItemStatusUnknown);
    player = AVPlayer::playerWithPlayerItem(item);
    Diary::watch(diary, item, {"status"});
    EXPECT_EQ(item->status(), AVPlayerItemStatusUnknown);
    EXPECT_THAT(diary->lines(), IsEmpty());
    loop.advance(row.loadedBefore ? 0s : 1s);
    EXPECT_THAT(diary->take(), ElementsAre("status " + std::to_string(row.status)));
    EXPECT_EQ(item->error().has_value(), row.status == AVPlayerItemStatusFailed);
  }
}

TEST_F(Item, withoutURLFailsWithBadURL) {
  item = AVPlayerItem::playerItemWithURL(std::nullopt);
  player = AVPlayer::playerWithPlayerItem(item);
  loop.runUntilIdle();
  ASSERT_TRUE(item->error());
  EXPECT_EQ(item->error()->domain, NSURLErrorDomain);
  EXPECT_EQ(item->error()->code, NSURLErrorBadURL);
}

TEST_F(Item, loadsOnlyWhenAPlayerTakesIt) {
  item = itemOf(programme);
  loop.advance(1s);
  EXPECT_THAT(media.logs(), IsEmpty());
  EXPECT_EQ(item->status(), AVPlayerItemStatusUnknown);
}

TEST_F(Item, knowsItsDurationWhenItSaysReady) {
  open();
  EXPECT_TRUE(CMTIME_IS_INVALID(item->duration()));
  loop.advance(50ms);
  EXPECT_THAT(diary->take(), ElementsAre("duration 60", "status 1", "playbackLikelyToKeepUp yes"));
  engine().setDuration(61);
  engine().setDuration(61);
  loop.runUntilIdle();
  EXPECT_THAT(diary->take(), ElementsAre("duration 61"));
}

TEST_F(Item, ofALoadedAssetKnowsItsDurationAtOnce) {
  const auto asset = std::make_shared<AVURLAsset>(NSURL::URLWithString(programme));
  asset->loadValuesAsynchronouslyForKeys({"duration"}, [] {});
  loop.advance(1s);
  item = AVPlayerItem::playerItemWithAsset(asset);
  EXPECT_EQ(text(item->duration()), "60");
  EXPECT_EQ(item->status(), AVPlayerItemStatusUnknown);
}

TEST_F(Item, ofALiveStreamHasAnIndefiniteDuration) {
  media.script(programme).live = true;
  openReady();
  EXPECT_TRUE(CMTIME_IS_INDEFINITE(item->duration()));
  EXPECT_TRUE(CMTIME_IS_INDEFINITE(item->asset()->duration()));
  player->play();
  loop.advance(3h);
  EXPECT_EQ(position(), "10800");
  EXPECT_THAT(diary->take(), ElementsAre("rate 1"));
}

TEST_F(Item, saysNothingAfterItsFailure) {
  openReady();
  tickEvery(1);
  player->play();
  loop.advance(2500ms);
  diary->take();
  engine().fail({AVFoundationErrorDomain, AVErrorDecodeFailed, "broken"});
  engine().stall();
  engine().setDuration(90);
  loop.advance(10s);
  EXPECT_THAT(diary->take(), ElementsAre("status 2"));
  EXPECT_EQ(item->error()->code, AVErrorDecodeFailed);
  EXPECT_EQ(position(), "2.5") << "stands where it broke";
  EXPECT_EQ(text(item->duration()), "60");
  EXPECT_EQ(media.aliveEngines(), 0);
}

TEST_F(Item, playsInOnePlayerOnce) {
  openReady();
  EXPECT_THROW(AVPlayer::playerWithPlayerItem(item), NSInternalInconsistencyException);
  const auto other = AVPlayer::playerWithPlayerItem(nullptr);
  EXPECT_THROW(other->replaceCurrentItemWithPlayerItem(item), NSInternalInconsistencyException);
  EXPECT_EQ(other->currentItem(), nullptr);
  EXPECT_EQ(player->currentItem(), item);
}

TEST_F(Item, keepsWhatItKnewAndFallsSilentWhenItsPlayerLetsGo) {
  openReady();
  player->play();
  loop.advance(4s);
  diary->take();
  engine().setDuration(90);
  player->replaceCurrentItemWithPlayerItem(nullptr);
  EXPECT_EQ(media.aliveEngines(), 0);
  loop.advance(5s);
  EXPECT_THAT(diary->take(), IsEmpty());
  EXPECT_EQ(text(item->currentTime()), "4");
  EXPECT_EQ(text(item->duration()), "60");
  ASSERT_EQ(item->loadedTimeRanges().size(), 1u);
  EXPECT_EQ(text(CMTimeRangeGetEnd(item->loadedTimeRanges()[0])), "34");
}

TEST_F(Item, tellsItsTimeOnAnyQueue) {
  openReady();
  player->play();
  std::vector<std::string> seen;
  const auto queue = dispatch_queue_create("aside");
  token = player->addPeriodicTimeObserver(seconds(1), queue, [&](CMTime) {
    EXPECT_FALSE(loop.isCurrent());
    seen.push_back(text(player->currentItem()->currentTime()));
  });
  loop.advance(2s);
  EXPECT_THAT(seen, ElementsAre("0", "1", "2"));
}

TEST_F(Item, carriesWhatTheHostSaysOfTheProgramme) {
  AVMutableMetadataItem title;
  title.setKeySpace(AVMetadataKeySpaceCommon);
  title.setKey(AVMetadataCommonKeyTitle);
  title.setLocale(NSLocale::currentLocale());
  title.setValue("A programme");
  AVMutableMetadataItem artwork = title;
  artwork.setKey(AVMetadataCommonKeyArtwork);
  artwork.setValue(std::vector<std::byte>{std::byte{1}});
  item = itemOf(programme);
  item->setExternalMetadata({title, artwork});

  const auto titles = AVMetadataItem::metadataItemsFromArray(item->externalMetadata(), AVMetadataCommonKeyTitle,
                                                             AVMetadataKeySpaceCommon);
  ASSERT_EQ(titles.size(), 1u);
  ASSERT_TRUE(titles[0].stringValue());
  EXPECT_EQ(*titles[0].stringValue(), "A programme");
  EXPECT_EQ(titles[0].dataValue(), nullptr);
  EXPECT_EQ(item->externalMetadata()[1].dataValue()->size(), 1u);
  EXPECT_THAT(AVMetadataItem::metadataItemsFromArray(item->externalMetadata(), AVMetadataCommonKeyTitle, "other"),
              IsEmpty());
}
