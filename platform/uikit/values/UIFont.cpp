#include "platform/uikit/values/UIFont.h"

#include <utility>

UIFont UIFont::systemFontOfSize(double pointSize, int weight) {
  return {"Noto Sans", pointSize, weight, false};
}

UIFont UIFont::boldSystemFontOfSize(double pointSize) {
  return systemFontOfSize(pointSize, weightBold);
}

UIFont UIFont::fontWithName(std::string familyName, double pointSize) {
  return {std::move(familyName), pointSize, weightRegular, false};
}

UIFont UIFont::fontWithSize(double size) const {
  UIFont font = *this;
  font.pointSize = size;
  return font;
}
