#include "platform/avfoundation/process/EngineChoice.h"

#include "platform/avfoundation/process/FetchedSource.h"
#include "platform/avfoundation/process/MediaProcesses.h"
#include "platform/avfoundation/process/ProcessEngine.h"

namespace {
bool isProcessWanted() {
  return MediaEngineSettings::shared().process == MediaEngineSettings::Process::own && MediaProcesses::areAvailable();
}
}  // namespace

void prepareMediaEngine() {
  if (!MediaEngine::hasFactory() && isProcessWanted()) MediaProcesses::prepareSpare();
}

std::unique_ptr<MediaEngine> makeMediaEngine(const MediaSource& source) {
  if (MediaEngine::hasFactory() || source.bytes) return MediaEngine::make(source);
  const auto fetch = [source] { return fetcherOf(source); };
  if (!isProcessWanted()) {
    if (source.purpose == MediaPurpose::advertisement) return MediaEngine::make(withBytes(source, fetcherOf(source)));
    // It looks for playlists, finds no process and goes on with an engine in this one.
    return std::make_unique<ProcessEngine>(
        source, [] { return std::shared_ptr<MediaPeer>(); }, fetch);
  }
  // The process loads its libraries while the server answers.
  if (source.url.isHTTP()) MediaProcesses::prepareSpare();
  return std::make_unique<ProcessEngine>(source, &MediaProcesses::take, fetch);
}
