// The breaks of a programme as a host describes and files them.
#include <gmock/gmock.h>

#include "ads/YMRAdSchedule.h"
#include "platform/foundation/NSException.h"

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

const auto url = NSURL::URLWithString("http://ads.example/vast.xml");

std::shared_ptr<YMRAd> midRoll(std::uint64_t offset) {
  return YMRAd::initMidRollWithVastUrl(url, offset);
}

}  // namespace

TEST(AdBreak, isWhatItsFactorySaysAndACopyDropsWhatWasShownInIt) {
  const auto ad = midRoll(300);
  ad->setIsPlayed(true);
  ad->setAdTitle("Soap");
  ad->setAdDescription("Very clean");
  const auto copy = ad->copy();
  EXPECT_EQ(copy->adTitle(), std::nullopt);
  EXPECT_EQ(copy->adDescription(), std::nullopt);
  copy->setIsPlayed(false);
  const struct {
    std::shared_ptr<YMRAd> ad;
    YMRAdRoll roll;
    std::string description;
  } rows[] = {
      {YMRAd::initPreRollWithVastUrl(url), YMRAdRollPre, "http://ads.example/vast.xml, offset=0, isPlayed=0, roll=Pre"},
      {YMRAd::initPostRollWithVastUrl({}), YMRAdRollPost, "(null), offset=0, isPlayed=0, roll=Post"},
      {ad, YMRAdRollMid, "http://ads.example/vast.xml, offset=300, isPlayed=1, roll=Mid"},
      {copy, YMRAdRollMid, "http://ads.example/vast.xml, offset=300, isPlayed=0, roll=Mid"},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(row.ad->roll(), row.roll);
    EXPECT_EQ(row.ad->description(), "<YMRAd: vastUrl=" + row.description + "roll>");
  }
}

TEST(AdSchedule, filesBreaksByTheirRollInTheOrderOfTheCalls) {
  YMRAdSchedule schedule;
  const auto pre1 = YMRAd::initPreRollWithVastUrl(url), pre2 = YMRAd::initPreRollWithVastUrl(url);
  const auto post1 = YMRAd::initPostRollWithVastUrl(url), post2 = YMRAd::initPostRollWithVastUrl(std::nullopt);
  const auto at300 = midRoll(300), at600 = midRoll(600), at450 = midRoll(450), again300 = midRoll(300);
  for (const auto& each : {post1, pre1, at300, pre2, at600, post2, at450, again300, post1}) schedule.addAdBreak(each);
  schedule.addAdBreak(nullptr);
  EXPECT_THROW(schedule.addAdBreak(midRoll(100)), NSRangeException) << "before the first";
  EXPECT_THAT(*schedule.preRolls(), ElementsAre(pre1, pre2));
  EXPECT_THAT(*schedule.postRolls(), ElementsAre(post1, post2, post1));
  EXPECT_THAT(*schedule.midRollOffsets(), ElementsAre(300, 450, 600));
  EXPECT_THAT(*schedule.midRolls(), ElementsAre(ElementsAre(at300, again300), ElementsAre(at450), ElementsAre(at600)));
  schedule.addMidRoll(midRoll(UINT64_MAX));  // unsigned, so not before it
  EXPECT_THAT(*schedule.midRollOffsets(), ElementsAre(300, 450, 600, UINT64_MAX));
}

TEST(AdSchedule, copiesShareTheirListsAndKeepTheirOwnLook) {
  YMRAdSchedule schedule;
  schedule.addAdBreak(YMRAd::initPreRollWithVastUrl(url));
  schedule.setAdLoadingText("Soon");
  schedule.setAdpodCountdownText("%d, %d/%d");
  schedule.setAdCountdownStrokeWidth(4);
  schedule.setAdCountdownFont(UIFont::boldSystemFontOfSize(20));
  schedule.setAdCountdownTextColor(UIColor::redColor());
  const auto copy = schedule.copy();
  EXPECT_EQ(copy->preRolls(), schedule.preRolls());
  EXPECT_EQ(copy->midRolls(), schedule.midRolls());
  EXPECT_EQ(copy->postRolls(), schedule.postRolls());
  EXPECT_EQ(copy->midRollOffsets(), schedule.midRollOffsets());

  schedule.setAttrs();
  EXPECT_EQ(schedule.adCountdownFont(), UIFont::systemFontOfSize(32));
  EXPECT_EQ(schedule.adCountdownTextColor(), UIColor::colorWithWhite(1, 1));
  EXPECT_EQ(schedule.adCountdownStrokeColor(), UIColor::colorWithWhite(0, 1));
  EXPECT_EQ(schedule.adCountdownStrokeWidth(), 10);
  EXPECT_EQ(schedule.adLoadingText(), "Soon") << "texts are no part of the look";
  EXPECT_EQ(copy->adCountdownStrokeWidth(), 4);
  EXPECT_EQ(copy->adCountdownFont(), UIFont::boldSystemFontOfSize(20));
  EXPECT_EQ(copy->adCountdownTextColor(), UIColor::redColor());
  EXPECT_EQ(copy->adpodCountdownText(), "%d, %d/%d");
}
