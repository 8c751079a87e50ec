// A host's countdown formats, and what hostile ones can't do.
#include <gmock/gmock.h>

#include "platform/foundation/NSString.h"

namespace {

TEST(StringWithFormat, writesWholeNumbersAndLeavesEverythingElseAsWritten) {
  const struct {
    std::string format, text;  // with the arguments -7, 2 and 30
  } rows[] = {
      {"Ad", "Ad"},
      {"%d of %d: %d%%", "-7 of 2: 30%"},
      {"%3$d s, %2$d", "30 s, 2"},
      {"%2$d %d %2$d %d", "2 -7 2 2"},
      {"%3d|%03d|%2$03d|%04d", " -7|002|002|0030"},
      {"%04d|%1d", "-007|2"},
      {"%3$64d", std::string(62, ' ') + "30"},
      {"\xff%d\xc3", "\xff-7\xc3"},
      {std::string("%d\0%d", 5), std::string("-7\0"
                                             "2",
                                             4)},
      {"%s %d", "%s -7"},
      {"%n%@%p%f%c%x%S%ls%ld%i%u", "%n%@%p%f%c%x%S%ls%ld%i%u"},
      {"%*d|%.*d|%1$*2$d|%.3d|%-3d|%+d|% d|%'d", "%*d|%.*d|%1$*2$d|%.3d|%-3d|%+d|% d|%'d"},
      {"%d %d %d %d %d", "-7 2 30 %d %d"},
      {"%4$d %0$d %99999999999999999999$d", "%4$d %0$d %99999999999999999999$d"},
      {"%65d %99999999999999999999d", "%65d %99999999999999999999d"},
      {"%", "%"},
      {"%5%d", "%5-7"},
  };
  for (const auto& [format, text] : rows) EXPECT_EQ(stringWithFormat(format, {-7, 2, 30}), text) << format;
}

TEST(StringWithFormat, numbersAtTheLimitsAndHugeFormatsAreFine) {
  EXPECT_EQ(stringWithFormat("%021d", {INT64_MIN}), "-09223372036854775808");
  EXPECT_EQ(stringWithFormat("%d", {}), "%d");
  std::string huge;
  for (int i = 0; i < 1'000'000; ++i) huge += "%9";
  EXPECT_EQ(stringWithFormat(huge, {1}), huge);
}

}  // namespace
