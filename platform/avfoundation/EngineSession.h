#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/avfoundation/engine/MediaEngine.h"

// Hears of one engine. See MediaEngine::Events.
class EngineListener {
 public:
  virtual ~EngineListener() = default;
  virtual void engineDidBecomeReady() {}
  virtual void engineDidFail(const NSError& /*error*/) {}
  virtual void engineDurationDidChange() {}
  virtual void engineTracksDidChange() {}
  virtual void engineDidJump() {}
  virtual void engineBufferingDidChange() {}
  virtual void engineDidReachEnd() {}
  virtual void engineCaptionDidChange(const std::optional<MediaCaption>& /*caption*/) {}
  // The engine goes, and nothing more comes.
  virtual void engineWasLetGo() {}
};

// One engine's life: opened by an asset, played by an item, heard by both. Main thread; whoever holds the last
// reference may let go of it on any thread and from inside anything that the engine reports: the engine then goes on
// the main queue, outside of its own calls.
class EngineSession : public std::enable_shared_from_this<EngineSession> {
 public:
  // Makes the engine and has it load, to begin at `start`; nil when the process has none to make.
  static std::shared_ptr<EngineSession> open(const MediaSource& source, const CMTime& start);
  EngineSession(const EngineSession&) = delete;
  EngineSession& operator=(const EngineSession&) = delete;
  ~EngineSession();

  // Listeners are held weakly and called in the order in which they came.
  void addListener(const std::shared_ptr<EngineListener>& listener);

  bool isReady() const { return isReady_; }
  MediaEngine& engine() const { return *engine_; }
  // Has the engine's pictures come as far as this process until somebody wants to see them: setFrameSink() then hands
  // over the newest one at once.
  void keepPicture();
  // As the engine's. To be used instead.
  void setFrameSink(std::shared_ptr<VideoFrameSink> sink);
  // As the engine's. To be used instead, so that the completion may let go of the session.
  void seek(const CMTime& time, MediaEngine::SeekCompletion completion);

 private:
  class PictureKeeper;
  EngineSession() = default;
  MediaEngine::Events events();
  template <typename Call>
  void tell(const Call& call);

  std::unique_ptr<MediaEngine> engine_;
  std::vector<std::weak_ptr<EngineListener>> listeners_;
  std::shared_ptr<PictureKeeper> keeper_;  // until there is another sink
  bool isReady_ = false;
};
