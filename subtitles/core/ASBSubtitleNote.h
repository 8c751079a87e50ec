#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "platform/Export.h"

// One thing that is odd about a cue. A plain value.
struct ASBSubtitleNote {
  std::string_view kind;  // a few words, the same for every cue that is odd in this way; a literal
  std::string text;       // for people: what it is here, why the cue does not show, what to do; a sentence or two
};
using ASBNoteList = std::vector<ASBSubtitleNote>;

// What the notes on a long file come to, so that nobody need read them all. One thread; memory for the kinds only.
class YMR_API ASBNoteSummary {
 public:
  // The next cue of the file: the line of its times and its notes.
  void add(std::size_t line, const ASBNoteList& notes);
  // A sentence on every kind that more than ten cues have: how many, the lines of the first ones, and the kind. In the
  // order in which they came up.
  std::vector<std::string> sentences() const;

 private:
  struct Kind {
    std::string_view name;
    std::size_t cues = 0;
    std::vector<std::size_t> firstLines = {};
  };
  std::vector<Kind> kinds_;
};
