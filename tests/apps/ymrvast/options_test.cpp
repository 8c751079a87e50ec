#include "apps/ymrvast/Options.h"

#include "tests/apps/CommandLine.h"

namespace {

Parsed<Options> parse(const std::string& line) {
  return parseLine(&parseOptions, line);
}

}  // namespace

TEST(VastOptions, tellURLsFilesAndStandardInputApart) {
  const auto url = parse("HTTPS://ads.test/tag?a=b");
  ASSERT_TRUE(url.options) << url.errors;
  EXPECT_EQ(url.options->url->scheme(), "https");
  EXPECT_EQ(url.options->source, "HTTPS://ads.test/tag?a=b");

  const auto file =
      parse("dir/http:tag.xml --json --validate --screen 1280x720 --reachability-host 127.0.0.1 --log none");
  ASSERT_TRUE(file.options) << file.errors;
  EXPECT_FALSE(file.options->url || file.options->readsStandardInput());
  EXPECT_TRUE(file.options->json && file.options->validate);
  EXPECT_EQ(file.options->screenWidth * 10'000 + file.options->screenHeight, 12'800'720);
  EXPECT_EQ(file.options->reachabilityHost, "127.0.0.1");
  EXPECT_EQ(file.options->logLevel, 0);
}

TEST(VastOptions, sayWhatIsWrongAndEndWithTwo) {
  expectComplaints(&parseOptions, {{"", "SOURCE is required"},
                                   {"\"\"", "SOURCE"},
                                   {"a.xml b.xml", "b.xml"},
                                   {"ftp://ads.test/tag", "only http and https"},
                                   {"\"http://ads test/\"", "is not a URL"},
                                   {"a.xml --nonsense", "--nonsense"},
                                   {"a.xml --screen 1280", "WxH"},
                                   {"a.xml --screen 0x720", "WxH"},
                                   {"a.xml --screen 1280x720p", "WxH"},
                                   {"a.xml --screen 10000x10000", "WxH"},
                                   {"a.xml --log loud", "--log"}});
}
