#include "platform/avfoundation/engine/MediaEngine.h"

#include <utility>

#include "platform/avfoundation/engine/GStreamerEngine.h"
#include "platform/foundation/MainThread.h"

namespace {
MediaEngine::Factory& factory() {
  static MediaEngine::Factory made;
  return made;
}
}  // namespace

MediaEngine::~MediaEngine() = default;

std::unique_ptr<MediaEngine> MediaEngine::make(const MediaSource& source) {
  YMR_ASSERT_MAIN_THREAD();
  if (const Factory made = factory()) return made(source);
  return std::make_unique<GStreamerEngine>(source);
}

void MediaEngine::setFactory(Factory made) {
  YMR_ASSERT_MAIN_THREAD();
  factory() = std::move(made);
}

bool MediaEngine::hasFactory() {
  return factory() != nullptr;
}

MediaEngineSettings& MediaEngineSettings::shared() {
  static MediaEngineSettings settings;
  return settings;
}
