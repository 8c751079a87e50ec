// The look of a label as CSS, for texts with markup.
#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdio>

#include "subtitles/ASBPlayerSubtitling.h"

namespace {

unsigned byteOf(double component) {
  return static_cast<unsigned>(std::lround(std::clamp(component, 0.0, 1.0) * 255));
}

// Six decimals, with a point in every locale.
std::string fixed(double value) {
  char digits[400];
  const auto end = std::to_chars(digits, digits + sizeof digits, value, std::chars_format::fixed, 6).ptr;
  return {digits, end};
}

}  // namespace

void ASBPlayerSubtitling::computeStyle() {
  if (!label_) return;
  cssStyle_ = "color: " + cssValueForColor(label_->textColor()) + "; font-size: " + fixed(label_->font().pointSize) +
              "px; font-family: " + label_->font().familyName +
              "; text-align: " + cssValueForTextAlignment(label_->textAlignment());
}

// Subtitles that are aligned naturally are centred: nothing else looks natural under a picture.
std::string ASBPlayerSubtitling::cssValueForTextAlignment(NSTextAlignment alignment) {
  switch (alignment) {
    case NSTextAlignmentCenter:
    case NSTextAlignmentNatural:
      return "center";
    case NSTextAlignmentRight:
      return "right";
    case NSTextAlignmentJustified:
      return "justify";
    case NSTextAlignmentLeft:
      break;
  }
  return "left";
}

std::string ASBPlayerSubtitling::cssValueForColor(const UIColor& color) {
  char text[8];
  std::snprintf(text, sizeof text, "#%02X%02X%02X", byteOf(color.red), byteOf(color.green), byteOf(color.blue));
  return text;
}
