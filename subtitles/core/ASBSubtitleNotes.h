#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/Export.h"
#include "subtitles/core/ASBSubtitle.h"
#include "subtitles/core/ASBSubtitleKind.h"
#include "subtitles/core/ASBSubtitleNote.h"
#include "subtitles/core/ASBSubtitleText.h"
#include "subtitles/core/ASBSubtitleTimeline.h"

// One cue as the player reads it, with what whoever prepares the file should know.
struct ASBNotedSubtitle {
  ASBSubtitle subtitle;
  std::size_t line = 0;  // of its times in the file, from 1
  bool shows = false;    // whether its text is on the screen at some time from 0 s on
  ASBNoteList notes;
};

// Tells what is odd about a file of subtitles. The player itself never asks.
//
// One thread. The text must outlive it. Time n log n, memory for the times only, so cues are handed out one by one.
class YMR_API ASBSubtitleNotes {
 public:
  explicit ASBSubtitleNotes(const ASBSubtitleText& text);

  // What the text looks like, guessed.
  ASBSubtitleKind kind() const { return kind_; }
  // On the file as a whole; empty when nothing is odd, and for a text that could not be read.
  std::vector<std::string> notesOnFile() const;
  std::size_t count() const { return shares_.size(); }
  // How many show.
  std::size_t shownCount() const { return shownCount_; }
  // In the order of the file, the same as subtitlesFromSRT() gives. Where the file is no text, or looks like UTF-16,
  // that is all there is to say, and the cues have no notes.
  void forEach(const std::function<void(const ASBNotedSubtitle&)>& use) const;

 private:
  struct Named {  // how a note on another cue names this one
    std::int64_t index;
    std::size_t line;
    double startTime, stopTime;
  };

  std::string nameOf(std::size_t cue) const;
  void noteShowing(std::size_t cue, const ASBSubtitle& subtitle, ASBNoteList& notes) const;

  const ASBSubtitleText& text_;
  const ASBSubtitleKind kind_;
  ASBSubtitleTimeline timeline_;
  std::vector<ASBSubtitleTimeline::Share> shares_;
  std::vector<Named> names_;
  std::size_t shownCount_ = 0;
};

// Seconds as a time stamp of SRT, "00:00:01,500", to the nearest millisecond.
YMR_API std::string timeStampOfSeconds(double seconds);
