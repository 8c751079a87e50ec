// A host's countdown formats, and what hostile ones can't do.
#include <gmock/gmock.h>

#include "platform/foundation/NSString.h"

namespace {

TEST(StringWithFormat, writesWholeNumbersAndLeavesEverythingElseAsWritten) {
  const struct {
    std::string format, text;  // with the arguments -7, 2 and 30
  } rows[] = {
      {"Ad", "Ad"},
      {"%d of %d: %d", "-7 of 2: 30"},
      {"%i%u%ld%%", "-7230%"},
      {"%lld %hhd %zu", "-7 2 30"},
      {"%3$d s, %2$d", "30 s, 2"},
      {"%2$d %d %2$d %d", "2 -7 2 2"},
      {"%3d|%-3d|%03d", " -7|2  |030"},
      {"%04d|%+d|% d", "-007|+2| 30"},
      {"%.3d|%5.2d|%-05d.", "-007|   02|30   ."},
      {"%3$64d", std::string(62, ' ') + "30"},
      {"\xff%d\xc3", "\xff-7\xc3"},
      {std::string("%d\0%d", 5), std::string("-7\0"
                                             "2",
                                             4)},
      {"%s %d", "%s -7"},
      {"%n%@%p%f%c%x%S%ls", "%n%@%p%f%c%x%S%ls"},
      {"%*d|%.*d|%1$*2$d", "%*d|%.*d|%1$*2$d"},
      {"%d %d %d %d %d", "-7 2 30 %d %d"},
      {"%4$d %0$d %99999999999999999999$d", "%4$d %0$d %99999999999999999999$d"},
      {"%65d %.65d %99999999999999999999d", "%65d %.65d %99999999999999999999d"},
      {"%", "%"},
      {"%ll", "%ll"},
      {"%5%d", "%5-7"},
      {"%lhd %Lf %'d", "%lhd %Lf %'d"},
  };
  for (const auto& [format, text] : rows) EXPECT_EQ(stringWithFormat(format, {-7, 2, 30}), text) << format;
}

TEST(StringWithFormat, numbersAtTheLimitsAndHugeFormatsAreFine) {
  EXPECT_EQ(stringWithFormat("%d %+d", {INT64_MIN, INT64_MAX}), "-9223372036854775808 +9223372036854775807");
  EXPECT_EQ(stringWithFormat("%.0d%d", {0, 0}), "0");
  EXPECT_EQ(stringWithFormat("%d", {}), "%d");
  std::string huge;
  for (int i = 0; i < 1'000'000; ++i) huge += "%9";
  EXPECT_EQ(stringWithFormat(huge, {1}), huge);
}

}  // namespace
