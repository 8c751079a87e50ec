#include "platform/avfoundation/layer/PictureGeometry.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace {

bool isTurnedSideways(const VideoFrame& frame) {
  return frame.rotation == 90 || frame.rotation == 270;
}

}  // namespace

QRectF pictureRect(const VideoFrame& frame, const QRectF& area, double density) {
  if (!frame.isValid() || area.isEmpty()) return {};
  const bool hasAspect = frame.pixelAspectNumerator > 0 && frame.pixelAspectDenominator > 0;
  double across = frame.width;
  double down = frame.height;
  if (hasAspect) across *= double(frame.pixelAspectNumerator) / frame.pixelAspectDenominator;
  if (isTurnedSideways(frame)) std::swap(across, down);

  const double scale = std::min(area.width() / across, area.height() / down);
  const auto pixels = [density](double points) { return std::round(points * density); };
  const double width = std::max(1.0, pixels(across * scale)) / density;
  const double height = std::max(1.0, pixels(down * scale)) / density;
  const double left = pixels(area.x() + (area.width() - width) / 2) / density;
  const double top = pixels(area.y() + (area.height() - height) / 2) / density;
  return {left, top, width, height};
}

QTransform picturePlacement(const VideoFrame& frame, const QRectF& rect) {
  double across = rect.width();
  double down = rect.height();
  if (isTurnedSideways(frame)) std::swap(across, down);
  QTransform placement;
  placement.translate(rect.center().x(), rect.center().y());
  placement.rotate(frame.rotation);
  placement.scale((frame.mirrored ? -across : across) / frame.width, down / frame.height);
  placement.translate(-frame.width / 2.0, -frame.height / 2.0);
  return placement;
}
