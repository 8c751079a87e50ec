#include <gmock/gmock.h>

#include "tests/apps/ymrplay/ParsedOptions.h"

using testing::ElementsAre;
using testing::HasSubstr;

TEST(PlayAdOptions, giveBreaksInTheOrderInWhichTheyAreDue) {
  const auto [options, status, said] = parseWords({"--preroll",
                                                   "http://a.example/1",
                                                   "--preroll",
                                                   "https://a.example/2",
                                                   "--midroll",
                                                   "600=http://a.example/z?x=1",
                                                   "--midroll",
                                                   "90=http://a.example/y",
                                                   "--midroll",
                                                   "600=http://a.example/a",
                                                   "--postroll",
                                                   "http://a.example/3",
                                                   "--midroll",
                                                   "0=http://a.example/b",
                                                   "--loading-text",
                                                   "Wait",
                                                   "--countdown-text",
                                                   "%d!",
                                                   "--pod-countdown-text",
                                                   "",
                                                   "--reachability-host",
                                                   "box.example",
                                                   "a.mp4"});
  ASSERT_TRUE(options) << said;
  ASSERT_EQ(options->preRolls.size(), 2u);
  EXPECT_EQ(options->preRolls[1].absoluteString(), "https://a.example/2");
  EXPECT_EQ(options->postRolls.size(), 1u);
  std::vector<std::string> midRolls;
  for (const auto& [seconds, tag] : options->midRolls) {
    midRolls.push_back(std::to_string(seconds) + " " + tag.absoluteString());
  }
  EXPECT_THAT(midRolls, ElementsAre("0 http://a.example/b", "90 http://a.example/y", "600 http://a.example/z?x=1",
                                    "600 http://a.example/a"));
  EXPECT_EQ(options->loadingText + options->countdownText + options->podCountdownText, "Wait%d!");
  EXPECT_EQ(options->reachabilityHost, "box.example");
}

TEST(PlayAdOptions, sayWhatIsWrongAndEndWithTwo) {
  const std::vector<std::pair<std::vector<std::string>, std::string>> cases{
      {{"--preroll", "tag.xml"}, "is not a URL"},
      {{"--preroll", "file:///etc/passwd"}, "over http and https only"},
      {{"--postroll", "ftp://a.example/1"}, "over http and https only"},
      {{"--postroll", ""}, "is not a URL"},
      {{"--preroll", "http://exa mple/"}, "is not a URL"},
      {{"--midroll", "http://a.example/1"}, "SECONDS=VALUE"},
      {{"--midroll", "soon=http://a.example/1"}, "SECONDS=VALUE"},
      {{"--midroll", "-1=http://a.example/1"}, "at least 0"},
      {{"--midroll", "=http://a.example/1"}, "SECONDS=VALUE"},
      {{"--midroll", "5="}, "nothing after"},
      {{"--midroll", "2.5=http://a.example/1"}, "whole seconds"},
      {{"--midroll", "4294967296=http://a.example/1"}, "no programme is that long"},
      {{"--midroll", "1e300=http://a.example/1"}, "no programme is that long"},
      {{"--midroll", "5=file:///tag.xml"}, "over http and https only"},
  };
  for (auto [words, expected] : cases) {
    words.push_back("a.mp4");
    const auto parsed = parseWords(words);
    EXPECT_FALSE(parsed.options) << testing::PrintToString(words);
    EXPECT_EQ(parsed.exitStatus, 2) << testing::PrintToString(words);
    EXPECT_THAT(parsed.said, HasSubstr(expected)) << testing::PrintToString(words);
  }
}
