#include "apps/ymrvast/Options.h"

#include <gmock/gmock.h>

using testing::HasSubstr;

namespace {

struct Parsed {
  std::optional<Options> options;
  int exitStatus = -1;
  std::string output;
  std::string errors;
};

Parsed parse(std::vector<std::string> words) {
  words.insert(words.begin(), "ymrvast");
  std::vector<char*> argv;
  for (auto& word : words) argv.push_back(word.data());
  Parsed parsed;
  testing::internal::CaptureStdout();
  testing::internal::CaptureStderr();
  parsed.options = parseOptions(static_cast<int>(argv.size()), argv.data(), parsed.exitStatus);
  parsed.output = testing::internal::GetCapturedStdout();
  parsed.errors = testing::internal::GetCapturedStderr();
  return parsed;
}

}  // namespace

TEST(VastOptions, tellURLsFilesAndStandardInputApart) {
  const auto url = parse({"HTTPS://ads.test/tag?a=b"});
  ASSERT_TRUE(url.options) << url.errors;
  EXPECT_EQ(url.options->url->scheme(), "https");
  EXPECT_EQ(url.options->source, "HTTPS://ads.test/tag?a=b");
  EXPECT_EQ(url.options->screenWidth, 1920);
  EXPECT_EQ(url.options->screenHeight, 1080);
  EXPECT_EQ(url.options->logLevel, 1);
  EXPECT_FALSE(url.options->json || url.options->validate);

  const auto file = parse({"dir/http:tag.xml", "--json", "--validate", "--screen", "1280x720", "--reachability-host",
                           "127.0.0.1", "--log", "none"});
  ASSERT_TRUE(file.options) << file.errors;
  EXPECT_FALSE(file.options->url || file.options->readsStandardInput());
  EXPECT_TRUE(file.options->json && file.options->validate);
  EXPECT_EQ(file.options->screenWidth * 10'000 + file.options->screenHeight, 12'800'720);
  EXPECT_EQ(file.options->reachabilityHost, "127.0.0.1");
  EXPECT_EQ(file.options->logLevel, 0);

  EXPECT_TRUE(parse({"--json", "-"}).options->readsStandardInput());
}

TEST(VastOptions, sayWhatIsWrongAndEndWithTwo) {
  const std::vector<std::pair<std::vector<std::string>, std::string>> cases{
      {{}, "SOURCE is required"},
      {{""}, "SOURCE"},
      {{"a.xml", "b.xml"}, "b.xml"},
      {{"ftp://ads.test/tag"}, "only http and https"},
      {{"file:///tag.xml"}, "only http and https"},
      {{"http://ads test/"}, "is not a URL"},
      {{"http://"}, "is not a URL"},
      {{"a.xml", "--nonsense"}, "--nonsense"},
      {{"a.xml", "--screen", "1280"}, "WxH"},
      {{"a.xml", "--screen", "0x720"}, "WxH"},
      {{"a.xml", "--screen", "1280x720p"}, "WxH"},
      {{"a.xml", "--screen", "10000x10000"}, "WxH"},
      {{"a.xml", "--log", "loud"}, "--log"},
  };
  for (const auto& [words, expected] : cases) {
    const auto parsed = parse(words);
    EXPECT_FALSE(parsed.options) << testing::PrintToString(words);
    EXPECT_EQ(parsed.exitStatus, 2) << testing::PrintToString(words);
    EXPECT_THAT(parsed.errors, HasSubstr(expected)) << testing::PrintToString(words);
  }
}

TEST(VastOptions, helpNamesEveryOptionAndEndsWithZero) {
  const auto help = parse({"--help"});
  EXPECT_EQ(help.exitStatus, 0);
  for (const char* option :
       {"--json", "--validate", "--screen", "--reachability-host", "--log", "--version", "Exit status"}) {
    EXPECT_THAT(help.output, HasSubstr(option));
  }
  const auto version = parse({"--version"});
  EXPECT_EQ(version.exitStatus, 0);
  EXPECT_THAT(version.output, HasSubstr("ymrvast 0."));
}
