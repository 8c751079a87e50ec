#include "subtitles/core/ASBSubtitleSource.h"

#include <utility>

std::optional<ASBSubtitleSource> ASBSubtitleSourceReader::next() {
  // Before the first cue this skips white space; after the text of one nothing is skipped any more.
  if (scanner_.isAtEnd()) return std::nullopt;
  ASBSubtitleSource source;
  source.location = scanner_.scanLocation();
  scanner_.setCharactersToBeSkipped(&NSCharacterSet::whitespaceAndNewlineCharacterSet());
  source.index = scanner_.scanInteger();
  source.startTime = scanner_.scanUpToString("-->").value_or("");
  source.hasArrow = scanner_.scanString("-->");
  if (source.hasArrow) source.location = scanner_.scanLocation();
  source.stopTime = scanner_.scanUpToCharactersFromSet(NSCharacterSet::newlineCharacterSet()).value_or("");
  scanner_.setCharactersToBeSkipped(nullptr);
  scanner_.scanCharactersFromSet(NSCharacterSet::newlineCharacterSet());
  readText(source);
  return source;
}

void ASBSubtitleSourceReader::readText(ASBSubtitleSource& source) {
  static const NSCharacterSet spaces = NSCharacterSet::characterSetWithCharactersInString(" \t");
  while (const auto line = scanner_.scanUpToCharactersFromSet(NSCharacterSet::newlineCharacterSet())) {
    if (!source.text.empty()) source.text += '\n';
    source.text += stringByTrimmingCharactersInSet(*line, spaces);
    const auto passedOver = scanner_.scanUpToString("\n").value_or("");
    const bool isText =
        lengthOfCharactersInSet(passedOver, NSCharacterSet::whitespaceAndNewlineCharacterSet()) < passedOver.size();
    if (source.lost.empty() && isText) source.lost = passedOver;
    scanner_.scanString("\n");
  }
}

ASBSubtitle subtitleFromSource(ASBSubtitleSource source) {
  return {source.index.value_or(0), ASBTimeStamp(source.startTime).seconds(), ASBTimeStamp(source.stopTime).seconds(),
          std::move(source.text)};
}

ASBTimeStamp::ASBTimeStamp(std::string_view stamp) {
  NSScanner scanner(stamp);
  const auto scan = [&](Field& field) {
    field.number = scanner.scanInteger();
    if (!field.number) return;
    const std::string_view read = stamp.substr(0, scanner.scanLocation());
    field.text = read.substr(read.find_last_not_of("0123456789") + 1);
  };
  scan(hour);
  scanner.scanString(":");
  scan(minute);
  scanner.scanString(":");
  scan(second);
  scanner.scanString(",");
  scan(millisecond);
  rest = stamp.substr(scanner.scanLocation());
  rest.remove_prefix(lengthOfCharactersInSet(rest, NSCharacterSet::whitespaceAndNewlineCharacterSet()));
}

double ASBTimeStamp::seconds() const {
  const auto value = [](const Field& field) { return static_cast<double>(field.number.value_or(0)); };
  return value(hour) * 3600 + value(minute) * 60 + value(second) + value(millisecond) / 1000;
}
