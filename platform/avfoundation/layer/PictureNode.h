#pragma once

#include <QRectF>
#include <QSGNode>

#include "platform/avfoundation/engine/VideoFrame.h"

class QQuickWindow;

// What a player's layer has in the scene: the picture and black around it. On the scene graph's thread.
class PictureNode {
 public:
  // The kind that the window's way of drawing needs.
  static PictureNode* make(QQuickWindow& window);
  virtual ~PictureNode() = default;

  virtual QSGNode* node() = 0;
  // Shows `frame` (an invalid one: black) in `rect` of `area`, all in points. `isNew`: not the frame of the last call.
  virtual void show(const VideoFrame& frame, bool isNew, const QRectF& area, const QRectF& rect) = 0;
};
