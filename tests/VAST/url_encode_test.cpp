#include <gtest/gtest.h>

#include "VAST/NSString_UrlEncode.h"

using namespace std::string_view_literals;

TEST(UrlEncode, escapesAllButTheUnreservedCharacters) {
  const struct {
    std::string_view text, encoded;
  } rows[] = {
      {"", ""},
      {"AZaz09-._~", "AZaz09-._~"},
      {"1 + 1", "1+%2B+1"},
      {"\xC3\xA9", "%C3%A9"},
      {"http://a?b%20=&", "http%3A%2F%2Fa%3Fb%2520%3D%26"},
      {"\x01\x7F\xFF", "%01%7F%FF"},
      {"before\0after"sv, "before"},
  };
  for (const auto& row : rows) EXPECT_EQ(urlencode(row.text), row.encoded) << row.text;
}
