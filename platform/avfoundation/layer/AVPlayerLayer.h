#pragma once

#include <functional>
#include <memory>

#include "platform/avfoundation/engine/VideoFrame.h"
#include "platform/uikit/CALayer.h"

class AVPlayer;
class PictureItem;

// Shows a player's pictures: as large as the frame allows, in their own shape (pixel aspect, rotation and mirroring
// applied), on black. Main thread.
//
// Opaque black where there is no picture: without a player, before its first picture, and as soon as the player is
// replaced. Pictures go to the screen without being copied where the software scene graph paints, and are uploaded
// where the GPU does.
//
// Kept from the platform: gravity resize-aspect (the only one), readyForDisplay (key-value observable,
// "readyForDisplay").
class YMR_API AVPlayerLayer : public CALayer {
 public:
  static std::shared_ptr<AVPlayerLayer> playerLayerWithPlayer(const std::shared_ptr<AVPlayer>& player);
  ~AVPlayerLayer() override;

  // nil for none. A player shows its pictures in one layer, the last one that it was given to.
  const std::shared_ptr<AVPlayer>& player() const { return player_; }
  void setPlayer(const std::shared_ptr<AVPlayer>& player);

  // Parts from the player and goes on showing its last picture, until it gets another player.
  void keepPicture();

  // True from the player's first picture on.
  bool isReadyForDisplay() const;

  // Called on the main thread after a picture of the player that was not shown before has come to the screen, with its
  // media time. For measuring; empty takes it back.
  void setPicturePresented(std::function<void(const CMTime&)> presented);

 protected:
  std::any valueForKey(std::string_view key) const override;

 private:
  explicit AVPlayerLayer(std::unique_ptr<PictureItem> picture);
  // Takes the player's pictures back when this layer has them; returns the player.
  std::shared_ptr<AVPlayer> letGo();

  PictureItem* picture_;
  std::shared_ptr<AVPlayer> player_;
};
