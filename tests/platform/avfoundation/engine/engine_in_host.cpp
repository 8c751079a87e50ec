#include "platform/avfoundation/process/EngineChoice.h"
#include "tests/platform/avfoundation/engine/EngineTest.h"

std::unique_ptr<MediaEngine> engineUnderTest(const MediaSource& source) {
  MediaEngineSettings::shared().process = MediaEngineSettings::Process::host;
  return makeMediaEngine(source);
}
