#include "platform/avfoundation/EngineSession.h"

#include <mutex>
#include <utility>

#include "platform/avfoundation/process/EngineChoice.h"
#include "platform/dispatch/RunLoop.h"
#include "platform/foundation/MainThread.h"

namespace {

// Lets go of the session where the engine is not on the stack.
void letGoLater(std::shared_ptr<EngineSession> session) {
  if (session.use_count() == 1) RunLoop::main().post([session = std::move(session)] {});
}

}  // namespace

// Holds the newest picture.
class EngineSession::PictureKeeper final : public VideoFrameSink {
 public:
  void present(VideoFrame frame) override {
    std::lock_guard lock(mutex_);
    std::swap(frame_, frame);
  }
  VideoFrame take() {
    std::lock_guard lock(mutex_);
    return std::exchange(frame_, {});
  }

 private:
  std::mutex mutex_;
  VideoFrame frame_;
};

std::shared_ptr<EngineSession> EngineSession::open(const MediaSource& source, const CMTime& start) {
  YMR_ASSERT_MAIN_THREAD();
  auto engine = makeMediaEngine(source);
  if (!engine) return nullptr;
  const std::shared_ptr<EngineSession> session(new EngineSession);
  session->engine_ = std::move(engine);
  session->engine_->setEvents(session->events());
  session->engine_->load(start);
  return session;
}

EngineSession::~EngineSession() {
  auto* loop = RunLoop::mainIfInstalled();
  if (!loop || loop->isCurrent()) {
    for (const auto& weak : listeners_) {
      if (const auto listener = weak.lock()) listener->engineWasLetGo();
    }
    return;
  }
  loop->post([engine = std::shared_ptr(std::move(engine_)), listeners = std::move(listeners_)] {
    for (const auto& weak : listeners) {
      if (const auto listener = weak.lock()) listener->engineWasLetGo();
    }
  });
}

void EngineSession::addListener(const std::shared_ptr<EngineListener>& listener) {
  listeners_.push_back(listener);
}

void EngineSession::keepPicture() {
  keeper_ = std::make_shared<PictureKeeper>();
  engine_->setFrameSink(keeper_);
}

void EngineSession::setFrameSink(std::shared_ptr<VideoFrameSink> sink) {
  const auto keeper = std::exchange(keeper_, nullptr);
  auto frame = keeper ? keeper->take() : VideoFrame();
  if (sink && frame.isValid()) sink->present(std::move(frame));
  engine_->setFrameSink(std::move(sink));
}

void EngineSession::seek(const CMTime& time, MediaEngine::SeekCompletion completion) {
  engine_->seek(time, [weak = weak_from_this(), completion = std::move(completion)](bool finished) {
    auto session = weak.lock();
    if (!session) return;
    completion(finished);
    letGoLater(std::move(session));
  });
}

template <typename Call>
void EngineSession::tell(const Call& call) {
  for (const auto snapshot = listeners_; const auto& weak : snapshot) {
    if (const auto listener = weak.lock()) call(*listener);
  }
}

MediaEngine::Events EngineSession::events() {
  // The session stays until everybody has been told, also when the first lets go of it.
  const auto telling = [weak = weak_from_this()](auto call) {
    return [weak, call](const auto&... arguments) {
      auto session = weak.lock();
      if (!session) return;
      session->tell([&](EngineListener& listener) { (listener.*call)(arguments...); });
      letGoLater(std::move(session));
    };
  };
  MediaEngine::Events events;
  events.ready = [weak = weak_from_this(), told = telling(&EngineListener::engineDidBecomeReady)] {
    if (const auto session = weak.lock()) session->isReady_ = true;
    told();
  };
  events.failed = telling(&EngineListener::engineDidFail);
  events.durationChanged = telling(&EngineListener::engineDurationDidChange);
  events.tracksChanged = telling(&EngineListener::engineTracksDidChange);
  events.jumped = telling(&EngineListener::engineDidJump);
  events.bufferingChanged = telling(&EngineListener::engineBufferingDidChange);
  events.ended = telling(&EngineListener::engineDidReachEnd);
  events.captionChanged = telling(&EngineListener::engineCaptionDidChange);
  return events;
}
