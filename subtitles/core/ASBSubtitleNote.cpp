#include "subtitles/core/ASBSubtitleNote.h"

#include <algorithm>

namespace {

constexpr std::size_t fewCues = 10;
constexpr std::size_t linesTold = 3;

}  // namespace

void ASBNoteSummary::add(std::size_t line, const ASBNoteList& notes) {
  for (auto note = notes.begin(); note != notes.end(); ++note) {
    const auto isSame = [note](const auto& other) { return other.kind == note->kind; };
    if (std::any_of(notes.begin(), note, isSame)) continue;  // of start and stop time, for one
    auto kind =
        std::find_if(kinds_.begin(), kinds_.end(), [note](const Kind& known) { return known.name == note->kind; });
    if (kind == kinds_.end()) kind = kinds_.insert(kind, {note->kind});
    ++kind->cues;
    if (kind->firstLines.size() < linesTold) kind->firstLines.push_back(line);
  }
}

std::vector<std::string> ASBNoteSummary::sentences() const {
  std::vector<std::string> sentences;
  for (const Kind& kind : kinds_) {
    if (kind.cues <= fewCues) continue;
    std::string lines;
    for (const std::size_t line : kind.firstLines) lines += (lines.empty() ? "" : ", ") + std::to_string(line);
    sentences.push_back(std::to_string(kind.cues) + " cues, the first ones in lines " + lines + ": " +
                        std::string(kind.name) + ".");
  }
  return sentences;
}
