#include "apps/ymr-media/MediaService.h"

#include <algorithm>
#include <utility>

namespace {

// How long a written position is left as it is: while it moves, as its extrapolation is as good; while it ought to move
// and does not yet; and while it stands, for the heart's sake.
constexpr auto movingInterval = std::chrono::milliseconds(100);
constexpr auto changingInterval = std::chrono::milliseconds(15);
constexpr auto standingInterval = std::chrono::milliseconds(400);

std::int64_t placeOf(const CMTime& time) {
  return CMTIME_IS_NUMERIC(time) ? CMTimeConvertScale(time, 1'000'000'000).value : INT64_MAX;
}

MediaSource sourceOf(const wire::Load& load, const Descriptor& file, std::shared_ptr<MediaBytes> bytes) {
  MediaSource source{NSURL::URLWithString(load.url).value_or(NSURL::fileURLWithPath("/"))};
  source.purpose = load.purpose;
  if (file) source.descriptor = file.get();
  source.bytes = std::move(bytes);
  source.areSegments = load.areSegments;
  source.isWithoutTexts = load.isWithoutTexts;
  source.hasBegun = load.hasBegun;
  return source;
}

}  // namespace

MediaService::MediaService(HostSocket& host, std::shared_ptr<PictureSender> pictures, const wire::Load& load,
                           std::unique_ptr<SharedPosition> position, Descriptor file, std::shared_ptr<MediaBytes> bytes)
    : host_(host), pictures_(std::move(pictures)), position_(std::move(position)), file_(std::move(file)) {
  MediaEngineSettings::shared() = load.settings;
  engine_ = std::make_unique<GStreamerEngine>(sourceOf(load, file_, std::move(bytes)));
  engine_->setEvents(events());
  writePosition();  // before the first byte is read: from now on its end is the media's fault
  engine_->load(load.start);
  writePosition();
}

MediaEngine::Events MediaService::events() {
  MediaEngine::Events events;
  events.ready = [this] {
    sendFacts(false, false);
    sendBuffering();
    writePosition();
    host_.send(wire::Ready{});
  };
  events.failed = [this](const NSError& error) {
    writePosition();
    host_.send(wire::Failed{error});
  };
  events.durationChanged = [this] {
    writePosition();
    sendFacts(true, false);
  };
  events.tracksChanged = [this] { sendFacts(false, true); };
  events.bufferingChanged = [this] {
    writePosition();
    sendBuffering();
  };
  events.ended = [this] {
    writePosition();
    host_.send(wire::Ended{});
  };
  events.captionChanged = [this](std::optional<MediaCaption> caption) {
    host_.send(wire::Caption{std::move(caption)});
  };
  return events;
}

void MediaService::sendFacts(bool isNewDuration, bool areNewTracks) {
  host_.send(wire::Facts{isNewDuration, areNewTracks, engine_->duration(), engine_->isLive(), engine_->tracks()});
}

void MediaService::sendBuffering() {
  host_.send(wire::Buffering{engine_->isBufferEmpty(), engine_->isLikelyToKeepUp(), engine_->bufferedRanges()});
}

void MediaService::hear(const wire::ToProcess& message) {
  std::visit(
      [this](const auto& said) {
        if constexpr (requires { hear(said); }) hear(said);
      },
      message);
}

void MediaService::hear(const wire::SetRate& message) {
  rate_ = message.rate;
  engine_->setRate(rate_);
  written_.moves = false;
  writePosition();
}

void MediaService::hear(const wire::Seek& message) {
  engine_->seek(message.time, [this, number = message.number](bool finished) {
    writePosition();
    host_.send(wire::SeekDone{number, finished});
  });
  written_.seek = message.number;
  ++written_.jumps;
  written_.time = placeOf(engine_->position());  // to jump there is not to move
  written_.moves = false;
  writePosition();
}

void MediaService::hear(const wire::SelectLegible& message) {
  engine_->selectLegibleTrack(message.identifier);
}

void MediaService::hear(const wire::SetMuted& message) {
  engine_->setMuted(message.muted);
}

void MediaService::hear(const wire::SetSink& message) {
  pictures_->setNumber(message.number);
  engine_->setFrameSink(message.isWanted ? pictures_ : nullptr);
}

// The engine does not say whether time runs; two looks do.
void MediaService::writePosition() {
  const auto before = written_;
  written_.time = placeOf(engine_->position());
  written_.at = RunLoop::main().now();
  const std::int64_t moved = written_.time - before.time;
  written_.moves = rate_ != 0 && moved > (written_.at - before.at).count() / 2;
  if (moved < 0 && written_.seek == before.seek) ++written_.jumps;
  const CMTime duration = engine_->duration();
  written_.end = CMTIME_IS_NUMERIC(duration) ? std::max(placeOf(duration), written_.time) : INT64_MAX;
  position_->write(written_);
  if (engine_->hasMoved()) position_->beat();
  const bool isSteady = written_.moves || (rate_ == 0 && moved == 0) || engine_->isBufferEmpty();
  if (timer_) RunLoop::main().cancel(timer_);
  timer_ = RunLoop::main().schedule(!isSteady        ? changingInterval
                                    : written_.moves ? movingInterval
                                                     : standingInterval,
                                    [this] {
                                      timer_ = 0;
                                      writePosition();
                                    });
}
