#include "subtitles/core/ASBSubtitleOddities.h"

#include <algorithm>
#include <array>

#include "platform/foundation/NSString.h"
#include "platform/foundation/UTF8.h"
#include "subtitles/core/ASBSubtitleNotes.h"

namespace {

using namespace std::string_literals;

constexpr std::string_view form = "hh:mm:ss,mmm";
constexpr std::string_view byteOrderMark = "\xEF\xBB\xBF";

std::string_view trimmed(std::string_view text) {
  return stringByTrimmingCharactersInSet(text, NSCharacterSet::whitespaceAndNewlineCharacterSet());
}

bool isDigit(char byte) {
  return byte >= '0' && byte <= '9';
}

// `name` is "start time" or "stop time".
class TimeNotes {
 public:
  TimeNotes(std::string_view name, std::string_view text, ASBNoteList& notes)
      : name_(name), text_(trimmed(text)), stamp_(text_), notes_(notes) {}

  void add(bool hasHours) const {
    const bool hasNumbers = stamp_.hour.number || stamp_.minute.number || stamp_.second.number;
    if (text_.empty()) {
      say("a time is missing",
          "is missing and counts as 0: write " + std::string(form) + " --> " + std::string(form) + ".");
    } else if (!hasNumbers && !stamp_.millisecond.number) {
      say("a time can't be read", quoted(text_) + " can't be read and counts as 0: write " + std::string(form) + ".");
    } else {
      addFields(hasHours);
      addValues();
    }
  }

 private:
  void say(std::string_view kind, const std::string& predicate) const {
    notes_.push_back({kind, "The " + std::string(name_) + " " + predicate});
  }

  std::string value() const { return timeStampOfSeconds(stamp_.seconds()); }

  void addFields(bool hasHours) const {
    const std::string_view rest = stamp_.rest;
    const bool marksFraction = rest.size() > 1 && !isDigit(rest[0]) && isDigit(rest[1]) && !stamp_.millisecond.number;
    const std::string count = "counts as " + value();
    if (marksFraction && stamp_.second.number) {
      say("no comma before the milliseconds, which are lost",
          quoted(text_) + " has " + (rest[0] == '.' ? "a full stop" : quoted(rest.substr(0, 1))) +
              " before its milliseconds, which are lost, so that it " + count + ": write a comma.");
    } else if (!stamp_.second.number || (hasHours && !stamp_.hour.number)) {
      say("a time lacks a field", quoted(text_) + " lacks a field and " + count + ": write " + std::string(form) + ".");
    } else if (stamp_.millisecond.text.size() != 3) {
      say("milliseconds are not of three digits",
          quoted(text_) + " has " +
              (stamp_.millisecond.number ? "milliseconds that are not of three digits; they are counted, not a fraction"
                                         : "no milliseconds"s) +
              ", and it " + count + ": write " + std::string(form) + ".");
    }
    if (rest.empty() || marksFraction) return;
    notes_.push_back({"something behind a time is passed over", quoted(rest) + " behind the " + std::string(name_) +
                                                                    " is passed over: position hints have no effect."});
  }

  void addValues() const {
    const auto isOff = [](const ASBTimeStamp::Field& field) { return field.number.value_or(0) > 59; };
    const std::string_view read = text_.substr(0, text_.size() - stamp_.rest.size());
    if (read.find_first_of("+-") != read.npos) {
      say("a time has a sign", quoted(text_) + " has a sign, which holds for its one field only; it counts as " +
                                   value() + ": leave it out.");
    }
    if (isOff(stamp_.minute) || isOff(stamp_.second)) {
      say("more than 59 minutes or seconds",
          quoted(text_) + " has more than 59 minutes or seconds and counts as " + value() + ": check it.");
    }
    if (stamp_.seconds() >= 100 * 3600)
      say("a time is later than any programme lasts", quoted(text_) + " is later than any programme lasts: check it.");
  }

  const std::string_view name_, text_;
  const ASBTimeStamp stamp_;
  ASBNoteList& notes_;
};

// Tags of the kinds that are closed: those that are open at the end, and whether a "<" is no tag at all.
struct Markup {
  explicit Markup(std::string_view text) {
    for (std::size_t at; (at = text.find('<')) != text.npos;) {
      text.remove_prefix(at + 1);
      const bool closes = text.starts_with('/');
      if (closes) text.remove_prefix(1);
      std::string name;
      while (name.size() < 8 && name.size() < text.size()) {
        const char letter = lowercaseASCII(text[name.size()]);
        if (letter < 'a' || letter > 'z') break;
        name += letter;
      }
      const std::size_t end = text.find_first_of("<>");
      hasStray |= name.empty() || end == text.npos || text[end] == '<';
      const auto kind = std::find(kinds.begin(), kinds.end(), name);
      if (kind == kinds.end()) continue;
      int& count = open[static_cast<std::size_t>(kind - kinds.begin())];
      count = std::max(0, count + (closes ? -1 : 1));
    }
  }

  static constexpr std::array<std::string_view, 5> kinds{"i", "b", "u", "s", "font"};
  std::array<int, kinds.size()> open{};
  bool hasStray = false;
};

void noteMarkup(std::string_view text, ASBNoteList& notes) {
  const Markup markup(text);
  for (std::size_t i = 0; i < markup.kinds.size(); ++i) {
    const std::string name(markup.kinds[i]);
    if (markup.open[i] > 0)
      notes.push_back({"a tag is not closed", "<" + name + "> is not closed: write </" + name + "> behind it."});
  }
  if (markup.hasStray) {
    notes.push_back(
        {"a '<' begins no tag", "A '<' that begins no tag makes markup of the text: write &lt; in its place."});
  }
}

void noteLost(std::string_view lost, ASBNoteList& notes) {
  const bool isReturn = lost.starts_with('\r');
  notes.push_back({"text is lost behind the end of a line",
                   "A text line ends with "s + (isReturn ? "a bare CR" : "a line separator that is no LF") +
                       "; what follows is lost up to the next LF, " + quoted(lost) +
                       " for one: save the file with LF or CR LF at the ends of its lines."});
}

}  // namespace

std::string quoted(std::string_view text) {
  constexpr std::size_t quotedBytesLimit = 40;  // bytes, about
  std::string result = "'";
  bool spaced = true;
  for (text = trimmed(text); !text.empty() && result.size() < quotedBytesLimit;) {
    const std::string_view character = text.substr(0, firstUTF8Character(text).length);
    const bool isSpace =
        NSCharacterSet::whitespaceAndNewlineCharacterSet().characterIsMember(firstUTF8Character(text).value);
    if (!isSpace) result += character;
    if (isSpace && !spaced) result += ' ';
    spaced = isSpace;
    text.remove_prefix(character.size());
  }
  return result + (text.empty() ? "'" : "...'");
}

bool isTrail(const ASBSubtitleSource& source) {
  return !source.index && source.startTime.empty() && !source.hasArrow && source.text.empty();
}

void noteNumber(const ASBSubtitleSource& source, ASBNoteList& notes) {
  const std::string_view start = source.startTime;
  const std::size_t lastLine = start.find_last_of("\r\n", trimmed(start).size());
  if (start.find(byteOrderMark) != start.npos) {
    notes.push_back(
        {"a byte-order mark stands within the file",
         "A byte-order mark (U+FEFF) stands within the file, so the number and the start time can't be read: "
         "remove it. Files that were joined have one each."});
  } else if (source.hasArrow && lastLine != start.npos) {
    notes.push_back(
        {"something stray stands before the times",
         quoted(start.substr(0, lastLine)) +
             " stands before the times, where only a number should, and spoils the start time: a text ends at its "
             "first empty line. Remove that line, or what is stray."});
  } else if (start.starts_with(':')) {
    notes.push_back({"no number, for which the hours are taken",
                     "There is no number, so the hours of the start time are taken for it, and it counts as " +
                         timeStampOfSeconds(ASBTimeStamp(start).seconds()) +
                         ": put a line with a number before the times."});
  } else if (!source.index) {
    notes.push_back({"no number", "There is no number: put a line with one before the times."});
  }
}

void noteTimes(const ASBSubtitleSource& source, ASBNoteList& notes) {
  if (!source.hasArrow) {
    notes.push_back(
        {"no '-->'", "No '-->' follows, so that all that is left of the file is taken for its start time: write " +
                         std::string(form) + " --> " + std::string(form) + "."});
    return;
  }
  TimeNotes("start time", source.startTime, notes).add(!source.startTime.starts_with(':'));
  TimeNotes("stop time", source.stopTime, notes).add(true);
}

void noteText(const ASBSubtitleSource& source, ASBNoteList& notes) {
  constexpr int linesLimit = 4;
  const std::string& text = source.text;
  if (text.empty()) {
    notes.push_back({"no text", "It has no text, and hides what stands above it in the file for its time."});
  }
  if (text.find("-->") != text.npos) {
    notes.push_back(
        {"the text goes on into the next cue",
         "Its text goes on into the next cue: put an empty line between them, and text under every time line."});
  } else if (std::count(text.begin(), text.end(), '\n') >= linesLimit) {
    notes.push_back({"more than four lines", "Its text has more than four lines, which cover the picture."});
  }
  if (!source.lost.empty()) noteLost(source.lost, notes);
  if (text.find('<') != text.npos) noteMarkup(text, notes);
  if (text.find("{\\") != text.npos)
    notes.push_back({"codes in braces", "Codes in braces, as in {\\an8}, are shown as they stand: remove them."});
  const auto isControl = [](unsigned char byte) {
    return (byte < 0x20 && byte != '\n' && byte != '\t') || byte == 0x7f;
  };
  if (std::any_of(text.begin(), text.end(), isControl)) {
    notes.push_back({"control characters", "Its text has control characters, zero bytes perhaps: remove them."});
  }
}
