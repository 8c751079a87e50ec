#include "subtitles/core/ASBSubtitleNotes.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <utility>

#include "platform/foundation/NSCharacterSet.h"
#include "platform/foundation/NSString.h"
#include "subtitles/core/ASBSubtitleOddities.h"
#include "subtitles/core/ASBSubtitleSource.h"

namespace {

constexpr double halfAMillisecond = 0.0005;

std::size_t countOf(std::string_view text, char byte) {
  return static_cast<std::size_t>(std::count(text.begin(), text.end(), byte));
}

// Those that "\n" does not follow, perhaps behind more of them.
std::size_t countOfBareReturns(std::string_view text) {
  std::size_t count = 0;
  for (std::size_t at = 0; (at = text.find('\r', at)) != text.npos;) {
    const std::size_t end = std::min(text.find_first_not_of('\r', at), text.size());
    if (!text.substr(end).starts_with('\n')) count += end - at;
    at = end;
  }
  return count;
}

// What content without a time line is, as far as one can guess.
std::string kindOf(std::string_view content) {
  if (content.starts_with('{')) return "it may be MicroDVD's";
  for (const auto& [start, kind] :
       {std::pair("WEBVTT", "it is WebVTT"), std::pair("[Script Info]", "it is SubStation Alpha"),
        std::pair("<tt", "it is TTML"), std::pair("<?xml", "it is XML"), std::pair("<!", "it is a web page"),
        std::pair("<html", "it is a web page")}) {
    if (content.starts_with(start)) return kind;
  }
  return "it may be of another kind";
}

}  // namespace

std::string timeStampOfSeconds(double seconds) {
  const double milliseconds = std::round(std::abs(seconds) * 1000);
  if (milliseconds > 1e15) {
    std::array<char, 32> text{};
    const auto end = std::to_chars(text.begin(), text.end(), seconds, std::chars_format::general, 6).ptr;
    return std::string(text.begin(), end) + " s";
  }
  const auto whole = static_cast<std::int64_t>(milliseconds);
  return (seconds < 0 && whole ? "-" : "") +
         stringWithFormat("%02d:%02d:%02d,%03d",
                          {whole / 3'600'000, whole / 60'000 % 60, whole / 1000 % 60, whole % 1000});
}

ASBSubtitleNotes::ASBSubtitleNotes(const ASBSubtitleText& text) : text_(text), kind_(kindOfContent(text.content)) {
  std::vector<bool> hasText;
  std::size_t counted = 0, line = 1;
  ASBSubtitleSourceReader reader(text_.content);
  while (auto source = reader.next()) {
    line += countOf(std::string_view(text_.content).substr(counted, source->location - counted), '\n');
    counted = source->location;
    const ASBSubtitle subtitle = subtitleFromSource(std::move(*source));
    timeline_.add(subtitle.startTime, subtitle.stopTime);
    names_.push_back({subtitle.index, line, subtitle.startTime, subtitle.stopTime});
    hasText.push_back(!subtitle.text.empty());
  }
  shares_ = timeline_.shares();
  for (std::size_t i = 0; i < shares_.size(); ++i) {
    if (!hasText[i]) shares_[i] = {};
    shownCount_ += shares_[i].seconds > 0;
  }
}

std::vector<std::string> ASBSubtitleNotes::notesOnFile() const {
  const std::string_view content = text_.content;
  std::vector<std::string> notes;
  if (text_.error) return notes;
  if (text_.hadByteOrderMark)
    notes.push_back("The file begins with a byte-order mark, which is passed over: it may stay.");
  if (count() == 0) {
    notes.push_back("There is no cue: the file is empty or holds white space only.");
    return notes;
  }
  if (kind_ == ASBSubtitleKind::binary) {
    notes.push_back("This is no text but binary data, of which the player makes nothing: choose another file.");
    return notes;
  }
  if (kind_ == ASBSubtitleKind::utf16) {
    notes.push_back(
        "This looks like UTF-16 (" + std::string(endianOfUTF16(content)) +
        ", without a byte-order mark). The player reads UTF-8 and makes nothing of such text: save it as UTF-8.");
    return notes;
  }
  if (countOf(content, '\0') * 4 > content.size()) {
    notes.push_back("Much of the file is zero bytes, as when it was not copied to its end: get it once more.");
  }
  if (content.find("-->") == content.npos) {
    notes.push_back("There is no time line, 'hh:mm:ss,mmm --> hh:mm:ss,mmm', so this is no SRT; " + kindOf(content) +
                    ".");
  } else if (kind_ == ASBSubtitleKind::webVTT) {
    notes.push_back(
        "This is WebVTT and not SRT. The player takes it for SRT all the same, and times come out wrong: the cue "
        "behind the header, a comment or a name starts at 0; milliseconds behind a full stop are lost; where there are "
        "no hours, minutes count as hours and seconds as minutes; and where no number stands above the times, the "
        "first field of the start time is taken for it. Convert the file to SRT: most editors of subtitles do, and so "
        "does ffmpeg.");
  }
  if (const std::size_t bare = countOfBareReturns(content); bare > 0) {
    notes.push_back(
        std::to_string(bare) + (bare == 1 ? " line ends" : " lines end") +
        " with a bare CR. Behind a line of text that does, all is lost up to the next LF" +
        (content.find('\n') == content.npos ? ", and there is none, so that only the first cue is left." : ".") +
        " Save the file with LF or CR LF at the ends of its lines.");
  }
  if (shownCount_ == 0) notes.push_back("No cue ever shows.");
  return notes;
}

std::string ASBSubtitleNotes::nameOf(std::size_t cue) const {
  const Named& named = names_[cue];
  return "cue " + std::to_string(named.index) + " in line " + std::to_string(named.line) + " (" +
         timeStampOfSeconds(named.startTime) + " to " + timeStampOfSeconds(named.stopTime) +
         "), which stands later in the file,";
}

void ASBSubtitleNotes::noteShowing(std::size_t cue, const ASBSubtitle& subtitle, ASBNoteList& notes) const {
  const double start = subtitle.startTime, stop = subtitle.stopTime;
  if (stop < start) {
    notes.push_back({"stops before it starts", "It stops before it starts, so it never shows: check its times."});
    return;
  }
  if (stop < 0) {
    notes.push_back({"over before the programme starts",
                     "It is over before the programme starts, so it never shows: check its times."});
    return;
  }
  if (start < 0) {
    notes.push_back(
        {"starts before the programme", "It starts before the programme does, at " + timeStampOfSeconds(start) + "."});
  }
  if (subtitle.text.empty()) return;

  const auto& share = shares_[cue];
  const auto cover = timeline_.firstCover(cue, start, stop);
  const double hidden = stop - std::max(start, 0.0) - share.seconds;
  if (cover && (share.seconds == 0 || hidden > halfAMillisecond)) {
    if (share.seconds == 0) {
      const bool isAlone = cover->from <= std::max(start, 0.0) && cover->to > stop;
      notes.push_back({"hidden all the time", "It never shows: " + nameOf(cover->cue) + (isAlone ? "" : " and others") +
                                                  (isAlone ? " hides it all the time." : " hide it all the time.") +
                                                  " Change their times, or join the texts."});
    } else {
      notes.push_back({"hidden for a part of the time",
                       "It is hidden for a part of its time: from " + timeStampOfSeconds(cover->from) + " to " +
                           timeStampOfSeconds(cover->to) + " " + nameOf(cover->cue) +
                           " shows in its place. Change their times, or join the texts."});
    }
  }
  if (share.seconds > 0 && !share.onFullSecond) {
    notes.push_back(
        {"shows at no full second",
         "It shows at no full second. The player looks once a second, at the full one, and so misses it unless "
         "a seek ends here: let it show for a second."});
  }
}

void ASBSubtitleNotes::forEach(const std::function<void(const ASBNotedSubtitle&)>& use) const {
  const bool isText = kind_ != ASBSubtitleKind::binary && kind_ != ASBSubtitleKind::utf16;
  ASBSubtitleSourceReader reader(text_.content);
  for (std::size_t cue = 0; auto source = reader.next(); ++cue) {
    ASBNotedSubtitle noted;
    noted.line = names_[cue].line;
    noted.shows = shares_[cue].seconds > 0;
    const bool trails = isTrail(*source);
    if (isText && !trails) {
      noteNumber(*source, noted.notes);
      noteTimes(*source, noted.notes);
      noteText(*source, noted.notes);
    }
    noted.subtitle = subtitleFromSource(std::move(*source));
    if (isText && trails) {
      noted.notes.push_back({"empty lines at the end",
                             "The empty lines at the end of the file make this cue, which hides others at 0 s only: "
                             "end the file with one "
                             "line end."});
    } else if (isText) {
      noteShowing(cue, noted.subtitle, noted.notes);
    }
    use(noted);
  }
}
