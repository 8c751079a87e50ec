#pragma once

#include <QRectF>
#include <QTransform>

#include "platform/avfoundation/engine/VideoFrame.h"

// Where a picture goes in an area: centred, as large as possible in its own shape (pixel aspect and rotation applied),
// edges on whole pixels. Pure functions.

// `area` and the result in points; `density` is pixels a point. Empty for an invalid frame or an empty area.
QRectF pictureRect(const VideoFrame& frame, const QRectF& area, double density);

// Takes the pixels of the stored picture (0, 0 to width, height) to where they go in `rect`: mirrored, then turned.
QTransform picturePlacement(const VideoFrame& frame, const QRectF& rect);
