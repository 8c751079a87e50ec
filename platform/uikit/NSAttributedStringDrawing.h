#pragma once

#include "platform/Export.h"
#include "platform/uikit/values/CGGeometry.h"
#include "platform/uikit/values/NSAttributedString.h"

class QPainter;

// How a text is set where it does not say so itself.
struct NSStringDrawingContext {
  UIFont font = UIFont::systemFontOfSize(17);
  UIColor color = UIColor::whiteColor();
  NSTextAlignment alignment = NSTextAlignmentNatural;
  int numberOfLines = 0;  // 0: as many as it takes
};

// Draws the text into `rect`: wrapped at its width, centred vertically, the last line that fits ending in an ellipsis
// where there is more. Main thread.
YMR_API void drawAttributedString(QPainter& painter, const NSAttributedString& text, const CGRect& rect,
                                  const NSStringDrawingContext& context);
// The same characters in several looks, one above the other; what they share is laid out once.
YMR_API void drawAttributedStrings(QPainter& painter, const std::vector<NSAttributedString>& layers, const CGRect& rect,
                                   const NSStringDrawingContext& context);
// The size that it takes, in whole points, when wrapped at `width`.
YMR_API CGSize sizeOfAttributedString(const NSAttributedString& text, double width,
                                      const NSStringDrawingContext& context);
