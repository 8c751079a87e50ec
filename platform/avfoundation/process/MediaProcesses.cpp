#include "platform/avfoundation/process/MediaProcesses.h"

#include <dlfcn.h>
#include <glib.h>

#include <filesystem>

#include "platform/foundation/MainThread.h"

namespace {

// The item that has just begun goes first.
constexpr auto spareDelay = std::chrono::milliseconds(300);

struct State {
  std::shared_ptr<MediaProcess> spare;
  std::optional<std::string> program;
  bool isBroken = false;
  bool hasWorked = false;
  RunLoop::TimerToken timer = 0;  // of a spare that is to be started
};

State& state() {
  static auto* state = new State;  // lasts as long as the host: the processes end with its sockets
  return *state;
}

}  // namespace

std::string MediaProcesses::program() {
  if (state().program) return *state().program;
  Dl_info place{};
  if (!dladdr(reinterpret_cast<void*>(&MediaProcesses::program), &place) || !place.dli_fname) return "";
  std::error_code error;
  const auto library = std::filesystem::canonical(place.dli_fname, error);
  if (error) return "";
  for (const char* beside : {"ymr/ymr-media", "apps/ymr-media/ymr-media"}) {
    auto candidate = library.parent_path() / beside;
    if (std::filesystem::is_regular_file(candidate, error)) return candidate;
  }
  return "";
}

void MediaProcesses::setProgram(std::optional<std::string> program) {
  endSpare();
  state().program = std::move(program);
  state().isBroken = state().hasWorked = false;
}

bool MediaProcesses::areAvailable() {
  return !state().isBroken;
}

void MediaProcesses::noteFailure(const std::string& reason) {
  YMR_ASSERT_MAIN_THREAD();
  if (state().isBroken) return;
  state().isBroken = !state().hasWorked;
  g_log("ymr", G_LOG_LEVEL_CRITICAL,
        "ymr-media can't be started (%s): what none has begun with is decoded in this process", reason.c_str());
}

void MediaProcesses::noteSuccess() {
  state().hasWorked = true;
}

std::shared_ptr<MediaPeer> MediaProcesses::take() {
  YMR_ASSERT_MAIN_THREAD();
  if (state().isBroken) return nullptr;
  // One that was set on a loop which has gone never comes, and cancelling it does nothing.
  if (state().timer) RunLoop::main().cancel(state().timer);
  state().timer = RunLoop::main().schedule(spareDelay, [] {
    state().timer = 0;
    prepareSpare();
  });
  if (auto spare = std::exchange(state().spare, nullptr); spare && spare->isAlive()) {
    if (!spare->isStopped()) return spare;
    spare->end();
  }
  std::string failure;
  const std::string path = program();
  auto started = path.empty() ? nullptr : MediaProcess::start(path, failure);
  if (!started) noteFailure(path.empty() ? "it is not in ymr/ beside the library" : failure);
  return started;
}

void MediaProcesses::prepareSpare() {
  YMR_ASSERT_MAIN_THREAD();
  if (state().isBroken || (state().spare && state().spare->isAlive())) return;
  std::string failure;
  if (const std::string path = program(); !path.empty()) state().spare = MediaProcess::start(path, failure);
}

void MediaProcesses::endSpare() {
  if (const auto spare = std::exchange(state().spare, nullptr)) spare->end();
}
