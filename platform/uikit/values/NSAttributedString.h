#pragma once

#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "platform/uikit/values/UIColor.h"
#include "platform/uikit/values/UIFont.h"

// The platform's numbers. Natural: left, or right where the text is written from right to left.
enum NSTextAlignment {
  NSTextAlignmentLeft = 0,
  NSTextAlignmentCenter = 1,
  NSTextAlignmentRight = 2,
  NSTextAlignmentJustified = 3,
  NSTextAlignmentNatural = 4,
};

// How a whole text is set.
struct NSParagraphStyle {
  NSTextAlignment alignment = NSTextAlignmentNatural;
  friend bool operator==(const NSParagraphStyle&, const NSParagraphStyle&) = default;
};

// How a run of text looks. What is nil is taken from whoever draws it.
struct NSTextAttributes {
  std::optional<UIFont> font = std::nullopt;
  std::optional<UIColor> foregroundColor = std::nullopt;
  std::optional<UIColor> strokeColor = std::nullopt;  // nil: the foreground colour
  // Width of the outline in hundredths of the font's size. Positive: the outline only; negative: outline and filling;
  // 0: the filling only.
  double strokeWidth = 0;
  bool underline = false;
  std::optional<NSParagraphStyle> paragraphStyle = std::nullopt;
  friend bool operator==(const NSTextAttributes&, const NSTextAttributes&) = default;
};

// Text in runs of one look each. A plain value; any thread. Text is UTF-8 and breaks lines at "\n".
struct NSAttributedString {
  struct Run {
    std::string text;
    NSTextAttributes attributes;
    friend bool operator==(const Run&, const Run&) = default;
  };
  std::vector<Run> runs;

  NSAttributedString() = default;
  NSAttributedString(std::string text, NSTextAttributes attributes) {
    runs.push_back({std::move(text), std::move(attributes)});
  }

  std::string string() const {
    std::string all;
    for (const Run& run : runs) all += run.text;
    return all;
  }
  friend bool operator==(const NSAttributedString&, const NSAttributedString&) = default;
};
