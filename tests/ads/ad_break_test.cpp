// One ad break as a host describes it.
#include <gmock/gmock.h>

#include "ads/YMRAd.h"

namespace {
const auto url = NSURL::URLWithString("http://ads.example/vast.xml");
}

TEST(AdBreak, isWhatItsFactorySays) {
  struct Row {
    std::shared_ptr<YMRAd> ad;
    YMRAdRoll roll;
    std::uint64_t offset;
    std::string description;
  };
  const std::vector<Row> table{
      {YMRAd::initPreRollWithVastUrl(url), YMRAdRollPre, 0,
       "<YMRAd: vastUrl=http://ads.example/vast.xml, offset=0, isPlayed=0, roll=Preroll>"},
      {YMRAd::initMidRollWithVastUrl(url, 300), YMRAdRollMid, 300,
       "<YMRAd: vastUrl=http://ads.example/vast.xml, offset=300, isPlayed=0, roll=Midroll>"},
      {YMRAd::initPostRollWithVastUrl(url), YMRAdRollPost, 0,
       "<YMRAd: vastUrl=http://ads.example/vast.xml, offset=0, isPlayed=0, roll=Postroll>"},
      {YMRAd::initMidRollWithVastUrl(std::nullopt, UINT64_MAX), YMRAdRollMid, UINT64_MAX,
       "<YMRAd: vastUrl=(null), offset=18446744073709551615, isPlayed=0, roll=Midroll>"},
  };
  for (const auto& row : table) {
    SCOPED_TRACE(row.description);
    EXPECT_EQ(row.ad->roll(), row.roll);
    EXPECT_EQ(row.ad->offset(), row.offset);
    EXPECT_FALSE(row.ad->isPlayed());
    EXPECT_EQ(row.ad->adTitle(), std::nullopt);
    EXPECT_EQ(row.ad->description(), row.description);
  }
}

TEST(AdBreak, anUnknownRollIsCalledAPostroll) {
  EXPECT_EQ(YMRAd::getNameFromRoll(YMRAdRollPre), "Preroll");
  EXPECT_EQ(YMRAd::getNameFromRoll(YMRAdRollMid), "Midroll");
  EXPECT_EQ(YMRAd::getNameFromRoll(YMRAdRollPost), "Postroll");
  EXPECT_EQ(YMRAd::getNameFromRoll(static_cast<YMRAdRoll>(5)), "Postroll");
}

TEST(AdBreak, aCopyKeepsTheBreakAndDropsWhatWasShownInIt) {
  const auto ad = YMRAd::initMidRollWithVastUrl(url, 30);
  ad->setIsPlayed(true);
  ad->setAdTitle("Soap");
  ad->setAdDescription("Very clean");
  const auto copy = ad->copy();
  EXPECT_EQ(copy->description(), ad->description());
  EXPECT_EQ(copy->vastUrl(), url);
  EXPECT_EQ(copy->adTitle(), std::nullopt);
  EXPECT_EQ(copy->adDescription(), std::nullopt);
  copy->setIsPlayed(false);
  EXPECT_TRUE(ad->isPlayed());
}
