#pragma once

#include <optional>
#include <string>

#include "platform/uikit/NSAttributedStringDrawing.h"
#include "platform/uikit/UIView.h"
#include "platform/uikit/values/NSAttributedString.h"

// Text. Drawn once and kept as a texture; drawn again only when the text, its look or the view's size changes.
//
// Kept from the platform: numberOfLines 1 at first, 0 for as many as it takes; the last line ends in an ellipsis where
// the text is longer; text is centred vertically. Left out: shrinking, shadows, line break modes, highlights.
class YMR_API UILabel : public UIView {
  Q_OBJECT
  Q_PROPERTY(double preferredMaxLayoutWidth READ preferredMaxLayoutWidth WRITE setPreferredMaxLayoutWidth)
  // The size that the text asks for.
  Q_PROPERTY(QSizeF contentSize READ qmlContentSize NOTIFY contentSizeChanged)

 public:
  explicit UILabel(QQuickItem* parent = nullptr);
  explicit UILabel(const CGRect& frame);
  ~UILabel() override;

  // nil when there is none. Setting it drops the attributed text, and the other way round.
  std::optional<std::string> text() const;
  void setText(std::optional<std::string> text);
  // The text with its look; of a plain text, in the label's font and colour.
  std::optional<NSAttributedString> attributedText() const;
  virtual void setAttributedText(std::optional<NSAttributedString> text);

  const UIFont& font() const { return font_; }
  void setFont(const UIFont& font);
  const UIColor& textColor() const { return textColor_; }
  virtual void setTextColor(const UIColor& color);
  NSTextAlignment textAlignment() const { return alignment_; }
  void setTextAlignment(NSTextAlignment alignment);
  int numberOfLines() const { return numberOfLines_; }
  void setNumberOfLines(int lines);
  // Where a text of several lines wraps when constraints leave the width open, in points. 0: at nine tenths of the
  // screen's width, so that no line runs off the picture.
  double preferredMaxLayoutWidth() const { return preferredMaxLayoutWidth_; }
  void setPreferredMaxLayoutWidth(double width);

  CGSize intrinsicContentSize() const override;
  double intrinsicHeightForWidth(double width) const override;

  // Draws the text into `rect`. Subclasses draw around it or instead of it; what they set on the label meanwhile does
  // not draw it again.
  virtual void drawTextInRect(QPainter& painter, const CGRect& rect);

  QSizeF qmlContentSize() const;

 Q_SIGNALS:
  void contentSizeChanged();

 protected:
  // What is laid out and measured; nil for nothing.
  virtual std::optional<NSAttributedString> drawnText() const { return text_; }
  NSStringDrawingContext drawingContext() const;
  double contentMargin() const override;
  void drawRect(QPainter& painter, const CGRect& rect) override;

 private:
  void changed();

  std::optional<NSAttributedString> text_;  // runs without attributes for a plain text
  UIFont font_ = UIFont::systemFontOfSize(17);
  UIColor textColor_ = UIColor::whiteColor();
  NSTextAlignment alignment_ = NSTextAlignmentNatural;
  int numberOfLines_ = 1;
  double preferredMaxLayoutWidth_ = 0;
  bool drawing_ = false;
};
