#include <gmock/gmock.h>

#include <cstdlib>

#include "tests/apps/ymrplay/ParsedOptions.h"

using testing::HasSubstr;

TEST(PlayOptions, takeEverythingAtOnce) {
  const auto [options, status, said] = parseWords({"--title",
                                                   "T",
                                                   "--description",
                                                   "D",
                                                   "--artwork",
                                                   "a.png",
                                                   "--start",
                                                   "-5",
                                                   "--headless",
                                                   "--size",
                                                   "1280x720",
                                                   "--events",
                                                   "--snapshot",
                                                   "1.5=a.png",
                                                   "--snapshot",
                                                   "2=b=c.png",
                                                   "--key",
                                                   "0=playpause",
                                                   "--key",
                                                   "3=menu",
                                                   "--log",
                                                   "debug",
                                                   "http://example.org/a.m3u8"});
  ASSERT_TRUE(options) << said;
  EXPECT_EQ(options->media->absoluteString(), "http://example.org/a.m3u8");
  EXPECT_EQ(options->start, -5);
  EXPECT_TRUE(options->artwork->isFileURL());
  EXPECT_EQ(options->size->width * 10000 + options->size->height, 12800720);
  ASSERT_EQ(options->snapshots.size(), 2u);
  EXPECT_EQ(options->snapshots[0].seconds, 1.5);
  EXPECT_EQ(options->snapshots[1].file, "b=c.png");
  ASSERT_EQ(options->keys.size(), 2u);
  EXPECT_EQ(options->keys[1].name, "menu");
  EXPECT_EQ(options->logLevel, 4);
}

TEST(PlayOptions, areHeadlessWhereThereIsNoDisplay) {
  for (const char* name : {"DISPLAY", "WAYLAND_DISPLAY", "QT_QPA_PLATFORM"}) unsetenv(name);
  EXPECT_TRUE(parseWords({"a.mp4"}).options->headless);
  setenv("DISPLAY", ":0", 1);
  EXPECT_FALSE(parseWords({"a.mp4"}).options->headless);
  EXPECT_TRUE(parseWords({"a.mp4", "--headless"}).options->headless);
  unsetenv("DISPLAY");
}

TEST(PlayOptions, sayWhatIsWrongAndEndWithTwo) {
  const std::vector<std::pair<std::vector<std::string>, std::string>> cases{
      {{}, "MEDIA is required"},
      {{""}, "MEDIA"},
      {{"a.mp4", "b.mp4"}, "b.mp4"},
      {{"ftp://example.org/a.mp4"}, "only files, http and https"},
      {{"http://exa mple/a.mp4"}, "is not an address"},
      {{"a.mp4", "--nonsense"}, "--nonsense"},
      {{"a.mp4", "--start", "soon"}, "--start"},
      {{"a.mp4", "--start", "1.5"}, "--start"},
      {{"a.mp4", "--size", "1280"}, "WxH"},
      {{"a.mp4", "--size", "10x10"}, "64 to 8192"},
      {{"a.mp4", "--size", "1280x720x3"}, "WxH"},
      {{"a.mp4", "--key", "menu"}, "SECONDS=VALUE"},
      {{"a.mp4", "--key", "1=jump"}, "no key 'jump'"},
      {{"a.mp4", "--key", "-1=menu"}, "at least 0"},
      {{"a.mp4", "--key", "nan=menu"}, "SECONDS=VALUE"},
      {{"a.mp4", "--snapshot", "1="}, "nothing after"},
      {{"a.mp4", "--log", "loud"}, "--log"},
  };
  for (const auto& [words, expected] : cases) {
    const auto parsed = parseWords(words);
    EXPECT_FALSE(parsed.options) << testing::PrintToString(words);
    EXPECT_EQ(parsed.exitStatus, 2) << testing::PrintToString(words);
    EXPECT_THAT(parsed.said, HasSubstr(expected)) << testing::PrintToString(words);
  }
}

TEST(PlayOptions, helpNamesEveryOptionAndEndsWithZero) {
  const auto help = parseWords({"--help"});
  EXPECT_EQ(help.exitStatus, 0);
  for (const char* option :
       {"--title", "--description", "--artwork", "--start", "--headless", "--size", "--events", "--snapshot", "--key",
        "--log", "--preroll", "--midroll", "--postroll", "--loading-text", "--countdown-text", "--pod-countdown-text",
        "--reachability-host", "--version", "Exit status"}) {
    EXPECT_THAT(help.said, HasSubstr(option));
  }
  const auto version = parseWords({"--version"});
  EXPECT_EQ(version.exitStatus, 0);
  EXPECT_THAT(version.said, HasSubstr("ymrplay 0."));
}
