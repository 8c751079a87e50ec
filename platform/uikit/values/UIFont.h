#pragma once

#include <string>

#include "platform/Export.h"

// A typeface at a size. A plain value; any thread. What it looks like is decided where text is drawn: a family that the
// machine lacks falls back to one that it has.
struct YMR_API UIFont {
  // Weights, 100 (thin) to 900 (black).
  static constexpr int weightRegular = 400;
  static constexpr int weightMedium = 500;
  static constexpr int weightSemibold = 600;
  static constexpr int weightBold = 700;

  std::string familyName;
  double pointSize = 17;  // of the em, in points of the screen
  int weight = weightRegular;
  bool italic = false;

  // The interface's own typeface.
  static UIFont systemFontOfSize(double pointSize, int weight = weightRegular);
  friend bool operator==(const UIFont&, const UIFont&) = default;
};
