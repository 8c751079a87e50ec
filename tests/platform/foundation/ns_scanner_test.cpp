#include "platform/foundation/NSScanner.h"

#include <gmock/gmock.h>

using testing::Optional;

namespace {

TEST(Scanner, readsIntegersAndWhatDoesNotScanConsumesNothing) {
  using Limits = std::numeric_limits<std::int64_t>;
  const struct {
    std::string_view text;
    std::optional<std::int64_t> value;
    std::size_t locationAfterwards;
  } rows[] = {
      {" \t\r\n\u00a0\u2028\u300042x", 42, 14},
      {"+7", 7, 2},
      {"-0012", -12, 5},
      {"9223372036854775807", Limits::max(), 19},
      {"9223372036854775808", Limits::max(), 19},
      {"-9223372036854775808", Limits::min(), 20},
      {"-99999999999999999999999:", Limits::min(), 24},
      {"", std::nullopt, 0},
      {" -", std::nullopt, 0},
      {"- 5", std::nullopt, 0},
      {"\u0661", std::nullopt, 0},   // a digit, but not of ASCII
      {"\u200b1", std::nullopt, 0},  // no white space
  };
  for (const auto& row : rows) {
    NSScanner scanner(row.text);
    EXPECT_EQ(scanner.scanInteger(), row.value) << row.text;
    EXPECT_EQ(scanner.scanLocation(), row.locationAfterwards) << row.text;
  }
}

TEST(Scanner, takesWhatComesBeforeAStringOrASetAndSkipsOnlyWhatItIsToldTo) {
  const auto& newlines = NSCharacterSet::newlineCharacterSet();
  NSScanner scanner("  a b \n-->\u2028 c\u0085\v\fd --");
  EXPECT_FALSE(scanner.scanString("-->"));
  EXPECT_THAT(scanner.scanUpToString("-->"), Optional(std::string_view("a b \n")));
  EXPECT_EQ(scanner.scanUpToString("-->"), std::nullopt) << "it stands there";
  EXPECT_TRUE(scanner.scanString("-->"));
  EXPECT_THAT(scanner.scanUpToCharactersFromSet(newlines), Optional(std::string_view("c"))) << "of the next line";
  scanner.setCharactersToBeSkipped(nullptr);
  EXPECT_EQ(scanner.scanUpToCharactersFromSet(newlines), std::nullopt);
  EXPECT_THAT(scanner.scanCharactersFromSet(newlines), Optional(std::string_view("\u0085\v\f")));
  EXPECT_THAT(scanner.scanUpToString("-->"), Optional(std::string_view("d --"))) << "all that is left";
}

}  // namespace
