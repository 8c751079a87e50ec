#include "subtitles/core/ASBSubtitleNotes.h"

#include <gmock/gmock.h>

using namespace std::string_literals;
using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

namespace {

struct Looked {
  std::vector<std::string> file, first;  // notes on the file, and on its first cue
  std::vector<bool> shows;
  std::vector<std::size_t> lines;
  int others = 0;  // notes on the other cues
};

Looked look(const std::string& content) {
  const ASBSubtitleText text = subtitleTextOfBytes(content);
  const ASBSubtitleNotes notes(text);
  Looked looked{notes.notesOnFile(), {}, {}, {}};
  notes.forEach([&](const ASBNotedSubtitle& cue) {
    for (const auto& note : cue.notes) {
      if (looked.shows.empty()) looked.first.push_back(note.text);
      looked.others += !looked.shows.empty();
    }
    looked.shows.push_back(cue.shows);
    looked.lines.push_back(cue.line);
  });
  EXPECT_EQ(std::count(looked.shows.begin(), looked.shows.end(), true), static_cast<long>(notes.shownCount()));
  return looked;
}

// A cue of those times, in seconds or as they are to be written.
std::string cue(const std::string& start, const std::string& stop, const std::string& text = "A") {
  return "1\n" + start + " --> " + stop + "\n" + text + "\n\n";
}

TEST(SubtitleNotes, sayNothingOfAGoodFile) {
  const auto looked = look("1\n00:00:01,000 --> 00:00:04,000\nA <i>B</i>\n\n2\n00:00:04,000 --> 00:00:05,000\nC\n");
  EXPECT_THAT(looked.file, IsEmpty());
  EXPECT_THAT(looked.first, IsEmpty()) << "two that touch do not overlap";
  EXPECT_THAT(looked.shows, ElementsAre(true, true));
  EXPECT_THAT(looked.lines, ElementsAre(2, 6));
}

TEST(SubtitleNotes, sayWhatIsOddAboutACueAndWhetherItShows) {
  const std::string start = "00:00:01,000", stop = "00:00:04,000", good = cue(start, stop);
  const struct {
    std::string content;
    const char* note;
    bool shows;
  } rows[] = {
      {cue("00:00:01.500", stop), "full stop before its milliseconds", true},
      {cue(start, "00:00:04,5"), "not of three digits", true},
      {cue("01:30,000", "01:31,000"), "lacks a field and counts as 01:30:00,000", true},
      {cue(start, "never"), "'never' can't be read", false},
      {cue(start, stop + " X1:40"), "position hints", true},
      {cue("00:00:-1,000", stop), "has a sign", true},
      {"01:00:01,000 --> 01:00:02,000\nA", "hours of the start time are taken for it", true},
      {"stray\n" + good, "'stray 1' stands before the times", true},
      {good.substr(0, 10), "No '-->' follows", false},
      {cue(stop, start), "stops before it starts", false},
      {cue(start, stop, "") + good, "goes on into the next cue", true},
      {cue(start, stop, "{\\an8}A"), "Codes in braces", true},
      {cue(start, stop, "<i>A"), "<i> is not closed", true},
      {cue(start, stop, "1 < 2"), "begins no tag", true},
      {cue(start, stop, "A\u2028B"), "line separator", true},
      {cue("00:00:01,100", "00:00:01,900"), "at no full second", true},
      {good + cue("00:00:00,000", "00:00:04,000"), "hides it all the time", false},
      {good + cue("00:00:00,000", "00:00:02,000") + cue("00:00:02,000", stop), "and others hide it", false},
      {good + cue("00:00:02,000", "00:00:03,000"), "from 00:00:02,000 to 00:00:03,000 cue 1 in line 6", true},
  };
  for (const auto& row : rows) {
    const auto looked = look(row.content);
    EXPECT_THAT(looked.first, Contains(HasSubstr(row.note))) << row.content;
    EXPECT_EQ(looked.shows.at(0), row.shows) << row.content;
  }
}

TEST(SubtitleNotes, sayWhatIsOddAboutTheFile) {
  const std::pair<std::string, const char*> rows[] = {
      {"", "There is no cue"},
      {"\ufeff" + cue("00:00:01,000", "00:00:02,000"), "byte-order mark"},
      {"1\r00:00:01,000 --> 00:00:02,000\rA\r", "3 lines end with a bare CR"},
      {"1\r00:00:01,000 --> 00:00:02,000\nA\n", "1 line ends with a bare CR. Behind"},
      {std::string(400, '\1'), "no text but binary data"},
      {"WEBVTT\n\n00:01.000 --> 00:02.000\nA", "This is WebVTT"},
      {cue("00:00:02,000", "00:00:01,000"), "No cue ever shows"},
  };
  for (const auto& [content, note] : rows) EXPECT_THAT(look(content).file, Contains(HasSubstr(note))) << content;
}

TEST(SubtitleNotes, takeLineEndsForLostTextOnlyWhereTextIsLost) {
  const std::string file = "1#00:00:01,000 --> 00:00:02,000#A#B##2#00:00:02,000 --> 00:00:03,000#C#";
  for (const std::string end : {"\r\n", "\r\r\n", "\r\r\r\n"}) {
    std::string content;
    for (const char letter : file) content += letter == '#' ? end : std::string(1, letter);
    const auto looked = look(content);
    EXPECT_THAT(looked.file, IsEmpty()) << end.size();
    EXPECT_THAT(looked.first, IsEmpty()) << end.size();
    EXPECT_THAT(looked.shows, ElementsAre(true, true)) << end.size();
  }
  EXPECT_THAT(look(cue("00:00:01,000", "00:00:02,000", "A\rB\r")).first, ElementsAre(HasSubstr("next LF, 'B'")));
}

TEST(SubtitleNotes, sayOnceOfAFileThatItIsUTF16) {
  std::string content;  // whose marks between the times can be read nevertheless
  for (const char letter : cue("00:00:01,000", "00:00:02,000")) content += {letter, '\0'};
  const auto looked = look(content + "--> 1\nA\n\n--> 2\nB");
  EXPECT_THAT(looked.file, ElementsAre(HasSubstr("UTF-16 (little endian")));
  EXPECT_THAT(looked.first, IsEmpty());
  EXPECT_GT(looked.shows.size(), 1u);
  EXPECT_EQ(looked.others, 0);
}

TEST(SubtitleNotes, comeToASentenceForEveryKindThatManyCuesHave) {
  ASBNoteSummary summary;
  for (std::size_t i = 1; i <= 11; ++i) {
    ASBNoteList notes{{"no number", "A"}, {"a time", "start"}, {"a time", "stop"}};
    if (i % 2) notes.erase(notes.begin());
    summary.add(i * 4, notes);
  }
  EXPECT_THAT(summary.sentences(), ElementsAre("11 cues, the first ones in lines 4, 8, 12: a time."));
}

}  // namespace
