#include "apps/ymrplay/Options.h"

#include <gmock/gmock.h>

#include <cstdlib>
#include <iomanip>
#include <sstream>

using testing::ElementsAre;

namespace {

// What came of a command line, and what was printed about it.
struct Parsed {
  std::optional<Options> options;
  int exitStatus = -1;
  std::string errors;
};

// Words of `line` are separated by blanks; one in double quotes may be empty or have blanks in it.
Parsed parse(const std::string& line) {
  std::vector<std::string> words{"program"};
  std::istringstream stream(line);
  for (std::string word; stream >> std::quoted(word);) words.push_back(word);
  std::vector<char*> argv;
  for (auto& word : words) argv.push_back(word.data());
  Parsed parsed;
  testing::internal::CaptureStderr();
  parsed.options = parseOptions(static_cast<int>(argv.size()), argv.data(), parsed.exitStatus);
  parsed.errors = testing::internal::GetCapturedStderr();
  return parsed;
}

}  // namespace

TEST(PlayOptions, takeTextsAsTheyAreAndBreaksInTheOrderInWhichTheyAreDue) {
  const auto parsed = parse(
      "--start -5 --snapshot 2=b=c.png --midroll 600=http://a.example/z?x=1 --midroll 90=http://a.example/y a.m3u8 "
      "--midroll 600=http://a.example/a --midroll 0=http://a.example/b --countdown-text %d! --pod-countdown-text \"\"");
  ASSERT_TRUE(parsed.options) << parsed.errors;
  const Options& options = *parsed.options;
  EXPECT_EQ(options.start, -5);
  EXPECT_EQ(options.snapshots.at(0).file, "b=c.png");
  EXPECT_EQ(options.countdownText + options.podCountdownText, "%d!");
  std::vector<std::string> midRolls;
  for (const auto& [seconds, tag] : options.midRolls) {
    midRolls.push_back(std::to_string(seconds) + " " + tag.absoluteString());
  }
  EXPECT_THAT(midRolls, ElementsAre("0 http://a.example/b", "90 http://a.example/y", "600 http://a.example/z?x=1",
                                    "600 http://a.example/a"));
}

TEST(PlayOptions, areHeadlessWhereThereIsNoDisplay) {
  for (const char* name : {"DISPLAY", "WAYLAND_DISPLAY", "QT_QPA_PLATFORM"}) unsetenv(name);
  EXPECT_TRUE(parse("a.mp4").options->headless);
  setenv("DISPLAY", ":0", 1);
  EXPECT_FALSE(parse("a.mp4").options->headless);
  EXPECT_TRUE(parse("a.mp4 --headless").options->headless);
  unsetenv("DISPLAY");
}

TEST(PlayOptions, sayWhatIsWrongAndEndWithTwo) {
  const std::pair<const char*, const char*> rows[] = {
      {"ftp://example.org/a.mp4", "only files, http and https"},
      {"\"http://exa mple/a.mp4\"", "is not an address"},
      {"a.mp4 --reachability-host \"\"", "needs a name"},
      {"a.mp4 --size 10x10", "64 to 8192"},
      {"a.mp4 --engine gpu", "process,host"},
      {"a.mp4 --key menu", "SECONDS=VALUE"},
      {"a.mp4 --key 1=jump", "no key 'jump'"},
      {"a.mp4 --key -1=menu", "at least 0"},
      {"a.mp4 --snapshot 1=", "nothing after"},
      {"a.mp4 --preroll tag.xml", "is not a URL"},
      {"a.mp4 --midroll 2.5=http://a.example/1", "whole seconds"},
      {"a.mp4 --midroll 4294967296=http://a.example/1", "no programme is that long"},
      {"a.mp4 --midroll 5=file:///tag.xml", "over http and https only"}};
  for (const auto& [line, complaint] : rows) {
    const auto parsed = parse(line);
    EXPECT_FALSE(parsed.options) << line;
    EXPECT_EQ(parsed.exitStatus, 2) << line;
    EXPECT_THAT(parsed.errors, testing::HasSubstr(complaint)) << line;
  }
}
