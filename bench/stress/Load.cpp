#include "bench/stress/Load.h"

#include <cstdio>
#include <filesystem>

#include "bench/stress/Belongings.h"
#include "platform/avfoundation/process/EngineChoice.h"

using namespace std::chrono_literals;

Load::Load(std::string samples, unsigned seed) : samples_(std::move(samples) + "/"), dice_(seed) {
  server.onOthers([this](const HTTPServer::Request& request) { return replyOf(request.path.substr(1)); });
  // The first item brings threads and a spare process that stay.
  Item first(*this, "@half.mp4");
  first.engine->load(kCMTimeZero);
  loop.runUntil([&] { return first.isTold(); }, 20s);
  loop.runUntil([] { return false; }, 1s);
  first.engine.reset();
  loop.runUntil([] { return false; }, 1s);
  before_ = Belongings::now();
}

NSURL Load::urlOf(const std::string& clip) const {
  return clip[0] == '@' ? *NSURL::URLWithString(server.url("/" + clip.substr(1)))
                        : NSURL::fileURLWithPath(samples_ + clip);
}

HTTPServer::Reply Load::replyOf(const std::string& name) const {
  const std::string ending = name.substr(name.rfind('.') + 1);
  const std::string type = ending == "m3u8"  ? "application/vnd.apple.mpegurl"
                           : ending == "ts"  ? "video/mp2t"
                           : ending == "vtt" ? "text/vtt"
                           : ending == "mkv" ? "video/x-matroska"
                                             : "video/mp4";
  return {.type = type, .file = samples_ + name};
}

std::size_t Load::sizeOf(const std::string& name) const {
  return std::filesystem::file_size(samples_ + name);
}

void Load::note(const std::string& what) {
  ++faults_;
  std::printf("fault: %s\n", what.c_str());
}

Load::Belongings Load::Belongings::now() {
  return {entriesOf("/proc/self/task"), entriesOf("/proc/self/fd"), std::ssize(children())};
}

void Load::comeToRest() {
  Belongings now{};
  // Workers stay, as many as there were items at once; connections that are kept come and go.
  constexpr std::ptrdiff_t workers = 12, connections = 4;
  const bool isAtRest = loop.runUntil(
      [&] {
        now = Belongings::now();
        return now.threads <= before_->threads + workers && now.descriptors <= before_->descriptors + connections &&
               now.processes <= 1;
      },
      30s);
  std::printf("at rest: threads %td -> %td, descriptors %td -> %td, processes %td -> %td\n", before_->threads,
              now.threads, before_->descriptors, now.descriptors, before_->processes, now.processes);
  if (!isAtRest) note("something stays");
}

Item::Item(Load& load, std::string name) : clip(std::move(name)), engine(makeMediaEngine({load.urlOf(clip)})) {
  MediaEngine::Events events;
  events.ready = [this] {
    isReady = true;
    if (atReady) atReady();
  };
  events.failed = [this](NSError error) { failure = std::move(error); };
  events.ended = [this] { hasEnded = true; };
  engine->setEvents(std::move(events));
}

double Item::age() const {
  return std::chrono::duration<double>(std::chrono::steady_clock::now() - began_).count();
}
