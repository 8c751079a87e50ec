// The breaks of a programme as a host describes and files them.
#include <gmock/gmock.h>

#include "ads/YMRAdSchedule.h"
#include "platform/foundation/NSException.h"

using testing::ElementsAre;

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
  EXPECT_FALSE(copy->adTitle() || copy->adDescription());
  EXPECT_EQ(copy->description(), "<YMRAd: vastUrl=http://ads.example/vast.xml, offset=300, isPlayed=1, roll=Midroll>");
  EXPECT_EQ(YMRAd::initPreRollWithVastUrl(url)->roll(), YMRAdRollPre);
  EXPECT_EQ(YMRAd::initPostRollWithVastUrl({})->description(),
            "<YMRAd: vastUrl=(null), offset=0, isPlayed=0, roll=Postroll>");
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
  schedule.setAdLoadingText("Soon");
  schedule.setAdCountdownStrokeWidth(4);
  schedule.setAdCountdownTextColor(UIColor::redColor());
  const auto copy = schedule.copy();
  EXPECT_EQ(copy->preRolls(), schedule.preRolls());
  EXPECT_EQ(copy->midRolls(), schedule.midRolls());
  EXPECT_EQ(copy->postRolls(), schedule.postRolls());
  EXPECT_EQ(copy->midRollOffsets(), schedule.midRollOffsets());

  schedule.setAttrs();
  EXPECT_EQ(schedule.adCountdownStrokeWidth(), 10);
  EXPECT_EQ(schedule.adCountdownTextColor(), UIColor::colorWithWhite(1, 1));
  EXPECT_EQ(schedule.adLoadingText(), "Soon") << "texts are no part of the look";
  EXPECT_EQ(copy->adCountdownStrokeWidth(), 4);
  EXPECT_EQ(copy->adCountdownTextColor(), UIColor::redColor());
}
