#include "subtitles/core/ASBSubtitleReader.h"

#include <utility>

#include "subtitles/core/ASBSubtitleSource.h"

std::vector<ASBSubtitle> subtitlesFromSRT(std::string_view content) {
  std::vector<ASBSubtitle> subtitles;
  ASBSubtitleSourceReader reader(content);
  while (auto source = reader.next()) subtitles.push_back(subtitleFromSource(*std::move(source)));
  return subtitles;
}

double timeFromString(std::string_view stamp) {
  return ASBTimeStamp(stamp).seconds();
}
