// What keeping in step with a player costs: prints the CPU microseconds of a frame, everything that a frame causes
// counted, for an ASBPlayerScrubbing with neither labels nor a delegate, as the player has it, and for one that tells a
// delegate. The media is scripted and time is virtual, so that nothing else is counted.
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <ctime>
#include <vector>

#include "platform/dispatch/VirtualRunLoop.h"
#include "subtitles/ASBPlayerScrubbing.h"
#include "tests/support/ScriptedMediaEngine.h"

using namespace std::chrono_literals;

namespace {

struct Delegate final : ASBPlayerScrubbingDelegate {
  void playerScrubbingDidUpdateTime(const std::shared_ptr<ASBPlayerScrubbing>&) override { ++refreshes; }
  int refreshes = 0;
};

// CPU microseconds of 1,000 s; without `scrubbing` of the playing alone.
double cost(const std::shared_ptr<ASBPlayerScrubbing>& scrubbing) {
  VirtualRunLoop loop;
  ScriptedMedia media;
  media.otherwise().duration = 2'000;
  const auto player = AVPlayer::playerWithPlayerItem(
      AVPlayerItem::playerItemWithURL(NSURL::URLWithString("http://films.example/film.mp4")));
  if (scrubbing) scrubbing->setPlayer(player);
  loop.advance(1s);
  player->play();
  loop.advance(1s);
  const std::clock_t began = std::clock();
  loop.advance(1'000s);
  const double ticks = static_cast<double>(std::clock() - began);
  if (scrubbing) scrubbing->setPlayer(nullptr);
  return ticks * 1e6 / CLOCKS_PER_SEC;
}

double ofAFrame(const std::shared_ptr<Delegate>& delegate) {
  constexpr double frames = 25 * 1'000;
  std::vector<double> rounds;
  for (int i = 0; i < 5; ++i) {
    const auto scrubbing = std::make_shared<ASBPlayerScrubbing>();
    scrubbing->setDelegate(delegate);
    rounds.push_back((cost(scrubbing) - cost(nullptr)) / frames);
  }
  std::sort(rounds.begin(), rounds.end());
  return rounds[rounds.size() / 2];
}

}  // namespace

int main() {
  const auto delegate = std::make_shared<Delegate>();
  const double alone = ofAFrame(nullptr), told = ofAFrame(delegate);
  if (delegate->refreshes < 5 * 25 * 1'000) {
    std::fputs("the frames were not told of\n", stderr);
    return 1;
  }
  std::printf("%.2f %.2f\n", alone, told);
  return 0;
}
