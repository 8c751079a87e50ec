#include "subtitles/core/ASBSubtitleReader.h"

#include <gmock/gmock.h>

#include <chrono>
#include <limits>

using namespace std::string_literals;

void PrintTo(const ASBSubtitle& subtitle, std::ostream* out) {
  *out << subtitle.index << " [" << subtitle.startTime << ", " << subtitle.stopTime << "] "
       << testing::PrintToString(subtitle.text);
}

namespace {

using Cues = std::vector<ASBSubtitle>;

TEST(SRTReader, sumsTheFieldsOfATimeStamp) {
  constexpr double limit = 9223372036854775808.0;
  const std::pair<std::string, double> rows[] = {
      {"00:00:01,000", 1},
      {"01:02:03,004", 3723.004},
      {"00:00:01.500", 1},
      {"00:00:01,5", 1.005},
      {"00:75:00,000", 4500},
      {" 1 :\n2 3 ,\t4 X1:40", 3723.004},
      {"01:30,250", 5400.25},
      {"00:00:-1,500", -0.5},
      {"+1:+1:+1,+1", 3661.001},
      {"1:\u00a02", 3720},
      {"", 0},
      {"\ufeff1:00:00", 0},
      {"0:0:99999999999999999999", limit},
      {"99999999999999999999:0:0", limit * 3600},
      {"-99999999999999999999:0:0,-99999999999999999999", -limit * 3600 - limit / 1000},
  };
  for (const auto& [stamp, seconds] : rows) EXPECT_EQ(timeFromString(stamp), seconds) << stamp;
}

TEST(SRTReader, readsWhateverTheFileIsLike) {
  const std::string one = "1\n00:00:01,000 --> 00:00:02,000\n";
  const ASBSubtitle none{0, 0, 0, ""};
  const struct {
    const char* name;
    std::string content;
    Cues cues;
  } rows[] = {
      {"white space", " \n\t\r\n\u2003\u0085", {}},
      {"two cues", one + "A\n\n2\n00:00:03,000 --> 00:00:04,000\nB", {{1, 1, 2, "A"}, {2, 3, 4, "B"}}},
      {"CR LF",
       "1\r\n00:00:01,000 --> 00:00:02,000\r\nA\r\nB\r\n\r\n2\r\n0:0:3 --> 0:0:4\r\nC\r\n",
       {{1, 1, 2, "A\nB"}, {2, 3, 4, "C"}}},
      {"bare CR", "1\r00:00:01,000 --> 00:00:02,000\rA\rB\r\r2\r00:00:03,000 --> 00:00:04,000\rC", {{1, 1, 2, "A"}}},
      {"bare CR, then LF", one + "A\rlost\nB\n", {{1, 1, 2, "A\nB"}}},
      {"a line separator within a line", one + "A\u2028lost\nB\u0085\nC", {{1, 1, 2, "A\nB\nC"}}},
      {"blank lines before everything", "\n \n7\n\n\n00:00:01,000\n-->\n\n00:00:02,000 X1:1\n\n\nA", {{7, 1, 2, "A"}}},
      {"a stop time that is missing takes the next line", "1\n0:0:1 --> \nA\nB", {{1, 1, 0, "B"}}},
      {"no text: the next cue is its text", one + "\n2\n0:0:3 --> 0:0:4\nB", {{1, 1, 2, "2\n0:0:3 --> 0:0:4\nB"}}},
      {"spaces and tabs at the ends", one + " \t A  B\t\n \nC \u00a0", {{1, 1, 2, "A  B\n\nC \u00a0"}}},
      {"a first line of spaces", one + " \t\nA\n", {{1, 1, 2, "A"}}},
      {"a last line of spaces", one + "A\n  \n", {{1, 1, 2, "A\n"}}},
      {"one line end too many", one + "A\n\n", {{1, 1, 2, "A"}, none}},
      {"three too many", one + "A\r\n\r\n\r\n\r\n", {{1, 1, 2, "A"}, none}},
      {"lines of spaces at the end", one + "A\n\n \n\n", {{1, 1, 2, "A"}, none, none}},
      {"white space that is not trimmed at the end", one + "A\n\n\u00a0", {{1, 1, 2, "A"}, {0, 0, 0, "\u00a0"}}},
      {"no number", "01:00:01,000 --> 01:00:02,000\nA", {{1, 1, 3602, "A"}}},
      {"words for a number", "one\n0:0:1 --> 0:0:2\nA", {{0, 0, 2, "A"}}},
      {"a number too large",
       "99999999999999999999\n0:0:1 --> 0:0:2\nA",
       {{std::numeric_limits<std::int64_t>::max(), 1, 2, "A"}}},
      {"no arrow", "1\n00:00:01,000 00:00:02,000\nA\n\n2\n", {{1, 1, 0, ""}}},
      {"a number only", "5\n", {{5, 0, 0, ""}}},
      {"a second mark", "\ufeff1\n0:0:1 --> 0:0:2\nA", {{0, 0, 2, "A"}}},
      {"zero bytes", one + "A\0B\n"s + "\0"s, {{1, 1, 2, "A\0B\n\0"s}}},
  };
  for (const auto& row : rows) EXPECT_EQ(subtitlesFromSRT(row.content), row.cues) << row.name;
}

// Each would take hours if its beginning were looked at again for every cue or line.
TEST(SRTReader, readsLongFilesInLinearTime) {
  std::string tail = "1\n0:0:1 --> 0:0:2\nA\n", arrows;
  for (int i = 0; i < 100'000; ++i) tail += "\n \n", arrows += "-->1\nA\n\n";
  EXPECT_EQ(subtitlesFromSRT(tail).size(), 100'001u);
  EXPECT_EQ(subtitlesFromSRT(arrows).size(), 100'001u);
  EXPECT_EQ(subtitlesFromSRT("1\n0:0:1 --> 0:0:2\n" + std::string(4 << 20, 'x')).at(0).text.size(), 4u << 20);
}

}  // namespace
