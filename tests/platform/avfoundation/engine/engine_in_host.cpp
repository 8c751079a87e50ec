#include "tests/platform/avfoundation/engine/EngineTest.h"

std::unique_ptr<MediaEngine> engineUnderTest(const MediaSource& source) {
  return MediaEngine::make(source);
}

bool isEngineInThisProcess() {
  return true;
}
