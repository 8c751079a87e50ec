#include "subtitles/core/ASBSubtitleNotes.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>

#include "platform/foundation/NSCharacterSet.h"
#include "subtitles/core/ASBSubtitleOddities.h"
#include "subtitles/core/ASBSubtitleSource.h"

namespace {

constexpr double halfAMillisecond = 0.0005;

std::size_t countOf(std::string_view text, char byte) {
  return static_cast<std::size_t>(std::count(text.begin(), text.end(), byte));
}

std::size_t countOfBareReturns(std::string_view text) {
  std::size_t count = 0;
  for (std::size_t at = 0; (at = text.find('\r', at)) != text.npos; ++at)
    count += !text.substr(at + 1).starts_with('\n');
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
  std::array<char, 64> text{};
  const double milliseconds = std::round(std::abs(seconds) * 1000);
  if (milliseconds > 1e15) {
    std::snprintf(text.data(), text.size(), "%g s", seconds);
  } else {
    const auto whole = static_cast<long long>(milliseconds);
    std::snprintf(text.data(), text.size(), "%s%02lld:%02lld:%02lld,%03lld", seconds < 0 && whole ? "-" : "",
                  whole / 3'600'000, whole / 60'000 % 60, whole / 1000 % 60, whole % 1000);
  }
  return text.data();
}

ASBSubtitleNotes::ASBSubtitleNotes(const ASBSubtitleText& text) : text_(text) {
  std::vector<bool> hasText;
  std::size_t counted = 0, line = 1;
  ASBSubtitleSourceReader reader(text_.content);
  while (auto source = reader.next()) {
    line += countOf(std::string_view(text_.content).substr(counted, source->location - counted), '\n');
    counted = source->location;
    const ASBSubtitle subtitle = subtitleFromSource(*std::move(source));
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
  if (countOf(content, '\0') * 4 > content.size()) {
    notes.push_back("Much of the file is zero bytes: it looks like UTF-16. Save it as UTF-8.");
  } else if (content.find("-->") == content.npos) {
    notes.push_back("There is no time line, 'hh:mm:ss,mmm --> hh:mm:ss,mmm', so this is no SRT; " + kindOf(content) +
                    ".");
  } else if (content.starts_with("WEBVTT")) {
    notes.push_back("This is WebVTT and not SRT: number the cues, and write commas before the milliseconds.");
  }
  if (const std::size_t bare = countOfBareReturns(content); bare > 0) {
    notes.push_back(
        std::to_string(bare) + (bare == 1 ? " line ends" : " lines end") +
        " with a bare CR, behind which all is lost up to the next LF; where all lines do, only the first cue "
        "is left. Save the file with LF or CR LF at the ends of its lines.");
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

void ASBSubtitleNotes::noteTimes(std::size_t cue, const ASBSubtitle& subtitle, std::vector<std::string>& notes) const {
  const double start = subtitle.startTime, stop = subtitle.stopTime;
  if (stop < start) {
    notes.push_back("It stops before it starts, so it never shows: check its times.");
    return;
  }
  if (stop < 0) {
    notes.push_back("It is over before the programme starts, so it never shows: check its times.");
    return;
  }
  if (start < 0) notes.push_back("It starts before the programme does, at " + timeStampOfSeconds(start) + ".");
  if (subtitle.text.empty()) return;

  const auto& share = shares_[cue];
  const auto cover = timeline_.firstCover(cue, start, stop);
  const double hidden = stop - std::max(start, 0.0) - share.seconds;
  if (cover && (share.seconds == 0 || hidden > halfAMillisecond)) {
    if (share.seconds == 0) {
      const bool isAlone = cover->from <= std::max(start, 0.0) && cover->to > stop;
      notes.push_back("It never shows: " + nameOf(cover->cue) + (isAlone ? "" : " and others") +
                      (isAlone ? " hides it all the time." : " hide it all the time.") +
                      " Change their times, or join the texts.");
    } else {
      notes.push_back("It is hidden for a part of its time: from " + timeStampOfSeconds(cover->from) + " to " +
                      timeStampOfSeconds(cover->to) + " " + nameOf(cover->cue) +
                      " shows in its place. Change their times, or join the texts.");
    }
  }
  if (share.seconds > 0 && !share.onFullSecond) {
    notes.push_back(
        "It shows at no full second. The player looks once a second, at the full one, and so misses it unless "
        "a seek ends here: let it show for a second.");
  }
}

void ASBSubtitleNotes::forEach(const std::function<void(const ASBNotedSubtitle&)>& use) const {
  ASBSubtitleSourceReader reader(text_.content);
  for (std::size_t cue = 0; auto source = reader.next(); ++cue) {
    ASBNotedSubtitle noted;
    noted.line = names_[cue].line;
    noted.shows = shares_[cue].seconds > 0;
    if (isTrail(*source)) {
      noted.notes.push_back(
          "The empty lines at the end of the file make this cue, which hides others at 0 s only: end the file with one "
          "line end.");
      noted.subtitle = subtitleFromSource(*std::move(source));
    } else {
      noteNumber(*source, noted.notes);
      ::noteTimes(*source, noted.notes);
      noteText(*source, noted.notes);
      noted.subtitle = subtitleFromSource(*std::move(source));
      noteTimes(cue, noted.subtitle, noted.notes);
    }
    use(noted);
  }
}
