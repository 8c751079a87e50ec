#include "apps/ymrsrt/TextView.h"

#include <algorithm>
#include <string>

#include "apps/shared/Printable.h"

namespace {

void printNote(std::string_view note, std::ostream& out) {
  out << "  ! " << printable(note) << '\n';
}

void printCue(const ASBNotedSubtitle& cue, std::ostream& out) {
  const ASBSubtitle& subtitle = cue.subtitle;
  out << "\nCue " << subtitle.index << "  " << timeStampOfSeconds(subtitle.startTime) << " to "
      << timeStampOfSeconds(subtitle.stopTime) << (cue.shows ? "" : "  DOES NOT SHOW") << "  (line " << cue.line
      << ")\n";
  std::string_view text = subtitle.text;
  while (!text.empty()) {
    const std::string_view line = text.substr(0, text.find('\n'));
    out << "    " << printableLines(line) << '\n';
    text.remove_prefix(std::min(line.size() + 1, text.size()));
  }
  for (const auto& note : cue.notes) printNote(note.text, out);
}

std::string counted(std::size_t count) {
  return (count == 0 ? "no" : std::to_string(count)) + (count == 1 ? " cue" : " cues");
}

// What the file is read as, where that is not what it is.
std::string_view disguiseOf(ASBSubtitleKind kind) {
  switch (kind) {
    case ASBSubtitleKind::webVTT:
      return "WebVTT, taken for SRT: ";
    case ASBSubtitleKind::utf16:
      return "UTF-16, taken for UTF-8: ";
    case ASBSubtitleKind::binary:
      return "no text, taken for SRT: ";
    case ASBSubtitleKind::subRip:
      break;
  }
  return "";
}

std::string showing(std::size_t shown, std::size_t all) {
  if (all == 0) return "";
  if (all == 1) return shown == 1 ? ", which shows" : ", which does NOT show";
  if (shown == 0) return ", NONE shows";
  if (shown == all) return ", all of them show";
  return ", " + std::to_string(shown) + (shown == 1 ? " of them shows" : " of them show");
}

}  // namespace

void printText(std::string_view source, const ASBSubtitleNotes& notes, std::ostream& out) {
  out << printable(source) << ": " << disguiseOf(notes.kind()) << counted(notes.count())
      << showing(notes.shownCount(), notes.count()) << '\n';
  for (const auto& note : notes.notesOnFile()) printNote(note, out);
  ASBNoteSummary summary;
  std::size_t odd = 0;
  notes.forEach([&](const ASBNotedSubtitle& cue) {
    summary.add(cue.line, cue.notes);
    odd += !cue.notes.empty();
    printCue(cue, out);
  });
  if (odd > 0) out << "\nSomething is odd about " << counted(odd) << ", marked with !\n";
  for (const auto& sentence : summary.sentences()) out << "  " << sentence << '\n';
}
