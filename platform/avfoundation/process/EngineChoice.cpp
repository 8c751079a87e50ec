#include "platform/avfoundation/process/EngineChoice.h"

#include "platform/avfoundation/process/MediaProcesses.h"
#include "platform/avfoundation/process/ProcessEngine.h"

std::unique_ptr<MediaEngine> makeMediaEngine(const MediaSource& source) {
  const bool isWanted = MediaEngineSettings::shared().process == MediaEngineSettings::Process::own;
  if (!isWanted || MediaEngine::hasFactory() || !MediaProcesses::areAvailable()) return MediaEngine::make(source);
  return std::make_unique<ProcessEngine>(source, &MediaProcesses::take);
}
