#include "VAST/SKVASTMediaFile.h"

#include <gtest/gtest.h>

namespace {

const std::optional<std::string> nil;

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
