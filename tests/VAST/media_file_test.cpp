#include "VAST/SKVASTMediaFile.h"

#include <gmock/gmock.h>

namespace {

using Text = std::optional<std::string>;
const Text nil;

TEST(SKVASTMediaFileTest, everyAttributeGoesWhereItBelongs) {
  const SKVASTMediaFile file("7", "progressive", "video/mp4", "500", "640", "360", "0", "true", "VPAID",
                             "http://ads.example/clip.mp4");
  EXPECT_EQ(*file.id_() + *file.delivery() + *file.type() + *file.apiFramework(), "7progressivevideo/mp4VPAID");
  EXPECT_EQ(file.bitrate(), 500);
  EXPECT_EQ(file.width(), 640);
  EXPECT_EQ(file.height(), 360);
  EXPECT_FALSE(file.scalable());
  EXPECT_TRUE(file.maintainAspectRatio());
  EXPECT_EQ(file.url()->absoluteString(), "http://ads.example/clip.mp4");

  const SKVASTMediaFile empty(nil, nil, nil, nil, nil, nil, nil, nil, nil, "clip.mp4");
  EXPECT_EQ(empty.type(), nil);
  EXPECT_EQ(empty.width(), 0);
  EXPECT_TRUE(empty.scalable());
  EXPECT_FALSE(empty.maintainAspectRatio());
  EXPECT_EQ(empty.url(), std::nullopt) << "not a URL";
}

TEST(SKVASTMediaFileTest, numbersAndSwitchesAreReadAsFarAsTheyMakeSense) {
  const struct {
    const char* text;
    std::int32_t number;
    bool isOn;
  } rows[] = {
      {"1080p", 1080, true},
      {" \t\n720 ", 720, true},
      {"-5", -5, true},
      {"", 0, false},
      {"12.9", 12, true},
      {"1e3", 1, true},
      {"0x10", 0, false},
      {"2147483648", 2147483647, true},
      {"\xC2\xA0"
       "8",
       8, true},
      {"-99999999999999999999", -2147483648, true},
      {"TRUE", 0, true},
      {"Yes", 0, true},
      {"007", 7, true},
      {"off", 0, false},
  };
  for (const auto& [text, number, isOn] : rows) {
    const SKVASTMediaFile file(nil, nil, nil, text, text, text, text, text, nil, nil);
    EXPECT_EQ(file.width(), number) << text;
    EXPECT_EQ(file.scalable(), isOn) << text;
    EXPECT_EQ(file.maintainAspectRatio(), isOn) << text;
  }
}

}  // namespace
