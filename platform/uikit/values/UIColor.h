#pragma once

// A colour: red, green, blue and opacity, each 0 to 1. A plain value; any thread.
struct UIColor {
  double red = 0;
  double green = 0;
  double blue = 0;
  double alpha = 0;

  static constexpr UIColor colorWithRed(double red, double green, double blue, double alpha) {
    return {red, green, blue, alpha};
  }
  static constexpr UIColor colorWithWhite(double white, double alpha) { return {white, white, white, alpha}; }
  static constexpr UIColor blackColor() { return colorWithWhite(0, 1); }
  static constexpr UIColor whiteColor() { return colorWithWhite(1, 1); }
  static constexpr UIColor lightGrayColor() { return colorWithWhite(2.0 / 3, 1); }
  static constexpr UIColor redColor() { return {1, 0, 0, 1}; }
  static constexpr UIColor greenColor() { return {0, 1, 0, 1}; }
  static constexpr UIColor blueColor() { return {0, 0, 1, 1}; }

  // The same colour with another opacity.
  constexpr UIColor colorWithAlphaComponent(double opacity) const { return {red, green, blue, opacity}; }
  friend bool operator==(const UIColor&, const UIColor&) = default;
};
