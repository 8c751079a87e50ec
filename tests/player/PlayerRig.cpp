#include "tests/player/PlayerRig.h"

#include <typeinfo>

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
  const auto& state = *hub().playerState();
  const std::string_view name = typeid(state).name();
  return std::string(name.substr(name.find("State") + 5));
}
