#pragma once

#include <algorithm>

// Points, sizes and rectangles in points: a point is one pixel of a screen of usual density, more on a denser one. The
// origin is the upper left corner. Plain values; any thread.

struct CGPoint {
  double x = 0;
  double y = 0;
  friend bool operator==(const CGPoint&, const CGPoint&) = default;
};

struct CGSize {
  double width = 0;
  double height = 0;
  friend bool operator==(const CGSize&, const CGSize&) = default;
};

struct CGRect {
  CGPoint origin;
  CGSize size;
  friend bool operator==(const CGRect&, const CGRect&) = default;
};

inline constexpr CGRect CGRectZero{};

constexpr CGRect CGRectMake(double x, double y, double width, double height) {
  return {{x, y}, {width, height}};
}
constexpr double CGRectGetMaxX(const CGRect& rect) {
  return rect.origin.x + rect.size.width;
}
constexpr double CGRectGetMaxY(const CGRect& rect) {
  return rect.origin.y + rect.size.height;
}
// Smaller by dx on the left and on the right and by dy above and below; never smaller than nothing.
constexpr CGRect CGRectInset(const CGRect& rect, double dx, double dy) {
  return {{rect.origin.x + dx, rect.origin.y + dy},
          {std::max(0.0, rect.size.width - 2 * dx), std::max(0.0, rect.size.height - 2 * dy)}};
}
