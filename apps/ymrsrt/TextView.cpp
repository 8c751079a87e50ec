#include "apps/ymrsrt/TextView.h"

#include <string>

#include "apps/shared/Printable.h"

namespace {

void printNotes(const std::vector<std::string>& notes, std::ostream& out) {
  for (const auto& note : notes) out << "  ! " << printable(note) << '\n';
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
  printNotes(cue.notes, out);
}

std::string counted(std::size_t count) {
  return std::to_string(count) + (count == 1 ? " cue" : " cues");
}

}  // namespace

void printText(std::string_view source, const ASBSubtitleNotes& notes, std::ostream& out) {
  out << printable(source) << ": " << counted(notes.count()) << ", ";
  if (notes.shownCount() == 0) {
    out << "NONE shows\n";
  } else if (notes.shownCount() == notes.count()) {
    out << "all of them show\n";
  } else {
    out << notes.shownCount() << " of them show\n";
  }
  printNotes(notes.notesOnFile(), out);
  std::size_t odd = 0;
  notes.forEach([&](const ASBNotedSubtitle& cue) {
    odd += !cue.notes.empty();
    printCue(cue, out);
  });
  if (odd > 0) out << "\nSomething is odd about " << counted(odd) << ", marked with !\n";
}
