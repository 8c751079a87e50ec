#pragma once

#include <memory>

#include "apps/ymr-media/HostSocket.h"
#include "apps/ymr-media/PictureSender.h"
#include "platform/avfoundation/engine/GStreamerEngine.h"
#include "platform/avfoundation/process/SharedPosition.h"

// Runs one engine as the host says and tells the host all that it does. Main thread.
class MediaService {
 public:
  // Of what to play, at most one: the file, which is kept open, and which the engine opens once more by its number; or
  // the bytes.
  MediaService(HostSocket& host, std::shared_ptr<PictureSender> pictures, const wire::Load& load,
               std::unique_ptr<SharedPosition> position, Descriptor file, std::shared_ptr<MediaBytes> bytes);
  MediaService(const MediaService&) = delete;
  MediaService& operator=(const MediaService&) = delete;

  void hear(const wire::ToProcess& message);

 private:
  MediaEngine::Events events();
  void hear(const wire::SetRate& message);
  void hear(const wire::Seek& message);
  void hear(const wire::SelectLegible& message);
  void hear(const wire::SetMuted& message);
  void hear(const wire::SetSink& message);
  void sendFacts(bool isNewDuration, bool areNewTracks);
  void sendBuffering();
  // Writes where the engine is, and again soon: the sooner the less it is known how it goes on. The heart beats with
  // it, but not while the engine's threads stand still: to the host that is the same as a process that does nothing.
  void writePosition();

  HostSocket& host_;
  const std::shared_ptr<PictureSender> pictures_;
  const std::unique_ptr<SharedPosition> position_;
  const Descriptor file_;
  std::unique_ptr<GStreamerEngine> engine_;
  double rate_ = 0;
  SharedPosition::State written_;
  RunLoop::TimerToken timer_ = 0;
};
