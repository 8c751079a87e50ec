#pragma once

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
