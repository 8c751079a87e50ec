#include "ads/records/SKVASTMediaFile.h"

#include <gmock/gmock.h>

#include <map>

namespace {

using Text = std::optional<std::string>;
const Text nil;

SKVASTMediaFile withNumbers(const Text& text) {
  return {nil, nil, nil, text, text, text, nil, nil, nil, nil};
}
SKVASTMediaFile withSwitches(const Text& text) {
  return {nil, nil, nil, nil, nil, nil, text, text, nil, nil};
}

TEST(SKVASTMediaFileTest, everyAttributeGoesWhereItBelongs) {
  const SKVASTMediaFile file("7", "progressive", "video/mp4", "500", "640", "360", "0", "true", "VPAID",
                             "http://ads.example/clip.mp4");
  EXPECT_EQ(file.id_(), "7");
  EXPECT_EQ(file.delivery(), "progressive");
  EXPECT_EQ(file.type(), "video/mp4");
  EXPECT_EQ(file.bitrate(), 500);
  EXPECT_EQ(file.width(), 640);
  EXPECT_EQ(file.height(), 360);
  EXPECT_FALSE(file.scalable());
  EXPECT_TRUE(file.maintainAspectRatio());
  EXPECT_EQ(file.apiFramework(), "VPAID");
  EXPECT_EQ(file.url()->absoluteString(), "http://ads.example/clip.mp4");

  const SKVASTMediaFile empty(nil, nil, nil, nil, nil, nil, nil, nil, nil, "clip.mp4");
  EXPECT_EQ(empty.type(), nil);
  EXPECT_EQ(empty.width(), 0);
  EXPECT_TRUE(empty.scalable());
  EXPECT_FALSE(empty.maintainAspectRatio());
  EXPECT_EQ(empty.url(), std::nullopt) << "not a URL";
}

TEST(SKVASTMediaFileTest, numbersAreReadAsFarAsTheyMakeSense) {
  for (const auto& [text, expected] : std::map<std::string, std::int32_t>{{"0", 0},
                                                                          {"1080p", 1080},
                                                                          {" \t\n720 ", 720},
                                                                          {"+5", 5},
                                                                          {"-5", -5},
                                                                          {"", 0},
                                                                          {"-", 0},
                                                                          {"abc", 0},
                                                                          {"12.9", 12},
                                                                          {"1e3", 1},
                                                                          {"0x10", 0},
                                                                          {"- 5", 0},
                                                                          {"2147483648", 2147483647},
                                                                          {"\xC2\xA0"
                                                                           "8",
                                                                           8},
                                                                          {"-99999999999999999999", -2147483648},
                                                                          {"99999999999999999999999999", 2147483647}}) {
    const SKVASTMediaFile file = withNumbers(text);
    EXPECT_EQ(file.bitrate(), expected) << text;
    EXPECT_EQ(file.width(), expected) << text;
    EXPECT_EQ(file.height(), expected) << text;
  }
}

TEST(SKVASTMediaFileTest, switchesAreReadByTheirFirstTellingCharacter) {
  for (const char* yes : {"true", "TRUE", "t", "yes", "Y", "1", "9", "007", " 1", "+1", "-1", "yellow", "2.5"}) {
    EXPECT_TRUE(withSwitches(yes).scalable()) << yes;
    EXPECT_TRUE(withSwitches(yes).maintainAspectRatio()) << yes;
  }
  for (const char* no : {"false", "no", "0", "000", "", " ", "+", "off", "n1", "x1", "-0"}) {
    EXPECT_FALSE(withSwitches(no).scalable()) << no;
    EXPECT_FALSE(withSwitches(no).maintainAspectRatio()) << no;
  }
}

}  // namespace
