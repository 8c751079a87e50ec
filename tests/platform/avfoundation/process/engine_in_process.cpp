#include "platform/avfoundation/process/MediaProcesses.h"
#include "platform/avfoundation/process/ProcessEngine.h"
#include "tests/platform/avfoundation/engine/EngineTest.h"

std::unique_ptr<MediaEngine> engineUnderTest(const MediaSource& source) {
  MediaProcesses::setProgram(YMR_MEDIA_PROGRAM);
  return std::make_unique<ProcessEngine>(source, &MediaProcesses::take);
}

bool isEngineInThisProcess() {
  return false;
}
