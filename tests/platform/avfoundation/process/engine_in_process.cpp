#include "platform/avfoundation/process/EngineChoice.h"
#include "platform/avfoundation/process/MediaProcesses.h"
#include "tests/platform/avfoundation/engine/EngineTest.h"

std::unique_ptr<MediaEngine> engineUnderTest(const MediaSource& source) {
  MediaProcesses::setProgram(YMR_MEDIA_PROGRAM);
  return makeMediaEngine(source);
}
