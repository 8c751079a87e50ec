// Any bytes as a file of subtitles: what is read keeps to the rules of a cue's text, the look-up agrees with going
// through the cues one by one, and so does what the notes say of who shows.
#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <limits>

#include "platform/foundation/UTF8.h"
#include "subtitles/core/ASBSubtitleList.h"
#include "subtitles/core/ASBSubtitleNotes.h"
#include "subtitles/core/ASBSubtitleReader.h"

namespace {

void require(bool holds) {
  if (!holds) std::abort();
}

bool isSpace(char byte) {
  return byte == ' ' || byte == '\t';
}

void checkText(std::string_view text, std::string_view content) {
  require(isUTF8(text) && text.size() <= content.size());
  // Apart from "\n", what ends a line is in no text.
  for (const std::string_view end : {"\r", "\v", "\f", "\u0085", "\u2028", "\u2029"})
    require(text.find(end) == text.npos);
  require(!text.starts_with('\n'));
  while (!text.empty()) {
    const std::string_view line = text.substr(0, text.find('\n'));
    require(line.empty() || (!isSpace(line.front()) && !isSpace(line.back())));
    require(content.find(line) != content.npos);
    text.remove_prefix(std::min(line.size() + 1, text.size()));
  }
}

const ASBSubtitle* lastOneAt(double time, const std::vector<ASBSubtitle>& subtitles) {
  const ASBSubtitle* last = nullptr;
  for (const auto& subtitle : subtitles) {
    if (subtitle.startTime <= time && subtitle.stopTime >= time) last = &subtitle;
  }
  return last;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string bytes(reinterpret_cast<const char*>(data), size);
  require(std::isfinite(timeFromString(bytes)));
  subtitlesFromSRT(bytes);  // also of text that is not UTF-8
  const ASBSubtitleText text = subtitleTextOfBytes(bytes);
  require(text.error.has_value() == !isUTF8(bytes));
  if (text.error) return 0;

  const ASBSubtitleList list(subtitlesFromSRT(text.content));
  const auto& subtitles = list.subtitles();
  require(subtitles.size() <= text.content.size());
  std::vector<double> times{0};
  for (const auto& subtitle : subtitles) {
    require(std::isfinite(subtitle.startTime) && std::isfinite(subtitle.stopTime));
    checkText(subtitle.text, text.content);
    for (const double time : {subtitle.startTime, subtitle.stopTime}) {
      times.push_back(time);
      times.push_back(std::nextafter(time, std::numeric_limits<double>::infinity()));
    }
  }
  if (times.size() > 256) times.resize(256);
  std::vector<bool> shows(subtitles.size());
  for (const double time : times) {
    const ASBSubtitle* const found = list.lastSubtitleAtTime(time);
    require(found == lastOneAt(time, subtitles));
    if (found && time >= 0 && !found->text.empty()) shows[static_cast<std::size_t>(found - subtitles.data())] = true;
  }

  const ASBSubtitleNotes notes(text);
  require(notes.count() == subtitles.size());
  const auto onFile = notes.notesOnFile();
  for (const auto& note : onFile) require(isUTF8(note));
  const bool isText = notes.kind() == ASBSubtitleKind::subRip || notes.kind() == ASBSubtitleKind::webVTT;
  ASBNoteSummary summary;
  std::size_t number = 0, shown = 0, line = 1;
  notes.forEach([&](const ASBNotedSubtitle& cue) {
    require(cue.subtitle == subtitles.at(number));
    require(times.size() == 256 ? cue.shows || !shows[number] : cue.shows == shows[number]);
    // What does not show has a reason, the file's or its own.
    require(cue.shows || !(isText ? cue.notes.empty() : onFile.empty()));
    for (const auto& note : cue.notes) require(isUTF8(note.text) && !note.kind.empty());
    summary.add(cue.line, cue.notes);
    require(cue.line >= line);
    line = cue.line;
    shown += cue.shows;
    ++number;
  });
  require(number == notes.count() && shown == notes.shownCount());
  for (const auto& sentence : summary.sentences()) require(isUTF8(sentence));
  return 0;
}
