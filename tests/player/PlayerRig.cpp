#include "tests/player/PlayerRig.h"

#include <gmock/gmock.h>

#include <QGuiApplication>

#include "tests/player/states/RecordingHub.h"

namespace {

// Views need the application object, once for the whole program.
class Application : public testing::Environment {
 public:
  void SetUp() override { application_ = std::make_unique<QGuiApplication>(argc_, argv_); }
  void TearDown() override { application_ = nullptr; }

 private:
  int argc_ = 1;
  char name_[5] = "test";
  char* argv_[2] = {name_, nullptr};
  std::unique_ptr<QGuiApplication> application_;
};
[[maybe_unused]] const auto* application = testing::AddGlobalTestEnvironment(new Application);

}  // namespace

PlayerRig::PlayerRig() : player(std::make_unique<YMRVideoPlayer>()) {
  media.script(film).duration = 60;
  player->setDelegate(host.delegate);
}

std::shared_ptr<YMRMediaItem> PlayerRig::item(const std::string& url) {
  return YMRMediaItem::itemWithUrl(NSURL::URLWithString(url));
}

void PlayerRig::playFilm(std::int64_t startPosition) {
  player->playWithMediaItem(item(), startPosition);
  EXPECT_TRUE(loop.advanceUntil([this] { return hub().vodPlayer() && hub().vodPlayer()->rate() == 1; }, 5s));
}

std::string PlayerRig::state() {
  return RecordingHub::nameOf(*hub().playerState());
}
