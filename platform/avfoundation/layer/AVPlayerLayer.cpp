#include "platform/avfoundation/layer/AVPlayerLayer.h"

#include <map>
#include <utility>

#include "platform/avfoundation/AVPlayer.h"
#include "platform/avfoundation/layer/PictureItem.h"
#include "platform/foundation/MainThread.h"

namespace {

// Which layer has a player's pictures. Never destroyed: layers may be static.
std::map<const AVPlayer*, AVPlayerLayer*>& layersOfPlayers() {
  static auto* layers = new std::map<const AVPlayer*, AVPlayerLayer*>;
  return *layers;
}

}  // namespace

std::shared_ptr<AVPlayerLayer> AVPlayerLayer::playerLayerWithPlayer(const std::shared_ptr<AVPlayer>& player) {
  std::shared_ptr<AVPlayerLayer> layer(new AVPlayerLayer(std::make_unique<PictureItem>()));
  layer->setPlayer(player);
  return layer;
}

AVPlayerLayer::AVPlayerLayer(std::unique_ptr<PictureItem> picture)
    : CALayer(std::move(picture)), picture_(static_cast<PictureItem*>(item())) {
  picture_->setPictureChanged([this] { didChangeValueForKey("readyForDisplay"); });
}

AVPlayerLayer::~AVPlayerLayer() {
  picture_->setPictureChanged({});
  letGo();
}

void AVPlayerLayer::setPlayer(const std::shared_ptr<AVPlayer>& player) {
  YMR_ASSERT_MAIN_THREAD();
  if (player == player_) return;
  const auto former = letGo();
  player_ = player;
  std::shared_ptr<FrameSlot> slot;
  if (player) {
    AVPlayerLayer*& layer = layersOfPlayers()[player.get()];
    if (layer) layer->picture_->setSlot(nullptr);
    layer = this;
    slot = std::make_shared<FrameSlot>();
  }
  picture_->setSlot(slot);
  if (player) player->setFrameSink(std::move(slot));
}

std::shared_ptr<AVPlayer> AVPlayerLayer::letGo() {
  const auto former = std::exchange(player_, nullptr);
  const auto place = layersOfPlayers().find(former.get());
  if (place != layersOfPlayers().end() && place->second == this) {
    layersOfPlayers().erase(place);
    former->setFrameSink(nullptr);
  }
  return former;
}

void AVPlayerLayer::keepPicture() {
  YMR_ASSERT_MAIN_THREAD();
  letGo();
}

bool AVPlayerLayer::isReadyForDisplay() const {
  return picture_->hasPicture();
}

void AVPlayerLayer::setPicturePresented(std::function<void(const CMTime&)> presented) {
  YMR_ASSERT_MAIN_THREAD();
  picture_->setPicturePresented(std::move(presented));
}

std::any AVPlayerLayer::valueForKey(std::string_view key) const {
  if (key == "readyForDisplay") return isReadyForDisplay();
  return CALayer::valueForKey(key);
}
