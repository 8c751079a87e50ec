#include <gtest/gtest.h>

#include "VAST/NSString_UrlEncode.h"

using namespace std::string_view_literals;

TEST(UrlEncode, escapesAllButTheUnreservedCharacters) {
  const struct {
    std::string_view text, encoded;
  } rows[] = {
      {"", ""},
      {"AZaz09-._~", "AZaz09-._~"},
      {"one two", "one+two"},
      {"1+1", "1%2B1"},
      {"\xC3\xA9", "%C3%A9"},
      {"http://a.b/c?d=e&f", "http%3A%2F%2Fa.b%2Fc%3Fd%3De%26f"},
      {"\x01\x7F\xFF", "%01%7F%FF"},
      {"before\0after"sv, "before"},
  };
  for (const auto& row : rows) EXPECT_EQ(urlencode(row.text), row.encoded) << row.text;
}
