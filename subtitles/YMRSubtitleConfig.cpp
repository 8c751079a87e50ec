#include "subtitles/YMRSubtitleConfig.h"

YMRSubtitleConfig::YMRSubtitleConfig() : font_(UIFont::systemFontOfSize(50)) {}

std::shared_ptr<YMRSubtitleConfig> YMRSubtitleConfig::initWithSubtitles(
    std::optional<std::vector<YMRSubtitle>> subtitles) {
  if (!subtitles) return nullptr;
  auto config = std::make_shared<YMRSubtitleConfig>();
  config->subtitles_ = std::move(*subtitles);
  return config;
}
