#pragma once

#include <QColor>
#include <QFont>
#include <algorithm>

#include "platform/uikit/values/UIColor.h"
#include "platform/uikit/values/UIFont.h"

// Plain values as Qt's.

inline QColor toQColor(const UIColor& color) {
  const auto component = [](double value) { return static_cast<float>(std::clamp(value, 0.0, 1.0)); };
  return QColor::fromRgbF(component(color.red), component(color.green), component(color.blue), component(color.alpha));
}

inline UIColor toUIColor(const QColor& color) {
  return {color.redF(), color.greenF(), color.blueF(), color.alphaF()};
}

// With the families to fall back to, and without hinting, which large type does not need and which would move letters.
QFont toQFont(const UIFont& font);
