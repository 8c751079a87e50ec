#pragma once

#include <memory>
#include <optional>
#include <vector>

#include "platform/Export.h"
#include "platform/uikit/UILabel.h"

// A label whose letters have an outline, so that they can be read over any picture. Main thread.
//
// It draws its text twice: outlined and filled in the stroke colour, and over that the letters in the foreground
// colour. Text with a look of its own keeps its italics, its bold and its underlines in both, and a colour that is not
// the body's in the second: the body's is textColor() or foregroundColor(), and is drawn in the foreground colour. The
// font's family and size are always the label's.
//
// The three attribute objects behind it are made at the first drawing of a text, from the colours, the width,
// the font and the alignment of that moment, and kept: what is set later has no effect until they are set to nil.
class YMR_API YMROutlinedLabel : public UILabel {
  Q_OBJECT
 public:
  // Plain: one line, naturally aligned.
  static std::shared_ptr<YMROutlinedLabel> init();
  // Centred, of any number of lines.
  explicit YMROutlinedLabel(const CGRect& frame);
  // The same, for interface files.
  explicit YMROutlinedLabel(QQuickItem* parent = nullptr);
  ~YMROutlinedLabel() override;

  // In hundredths of the font's size, half of it outside the letters; 1 at first.
  double strokeWidth() const { return strokeWidth_; }
  void setStrokeWidth(double width) { strokeWidth_ = width; }
  // Black at first.
  const UIColor& strokeColor() const { return strokeColor_; }
  void setStrokeColor(const UIColor& color) { strokeColor_ = color; }
  // White at first.
  const UIColor& foregroundColor() const { return foregroundColor_; }
  void setForegroundColor(const UIColor& color) { foregroundColor_ = color; }
  // The foreground colour; textColor() stays what it was.
  void setTextColor(const UIColor& color) override { setForegroundColor(color); }

  // nil before the first drawing of a text. Setting one draws the label again, and that drawing makes those that are
  // nil.
  const std::optional<NSParagraphStyle>& paragraphStyle() const { return paragraphStyle_; }
  void setParagraphStyle(std::optional<NSParagraphStyle> style);
  const std::optional<NSTextAttributes>& backgroundAttributes() const { return backgroundAttributes_; }
  void setBackgroundAttributes(std::optional<NSTextAttributes> attributes);
  const std::optional<NSTextAttributes>& foregroundAttributes() const { return foregroundAttributes_; }
  void setForegroundAttributes(std::optional<NSTextAttributes> attributes);

  // Keeps the look of its runs for later drawings, too.
  void setAttributedText(std::optional<NSAttributedString> text) override;
  // Afterwards attributedText() is the text as its outline was drawn, with backgroundAttributes() throughout.
  void drawTextInRect(QPainter& painter, const CGRect& rect) override;

 protected:
  std::optional<NSAttributedString> drawnText() const override;
  double contentMargin() const override;

 private:
  void commonInit();
  // The text with these attributes, each run slanted, heavier and underlined where it was set so.
  NSAttributedString inTheLookOf(const NSTextAttributes& attributes) const;
  bool isOfTheBody(const std::optional<UIColor>& color) const;

  std::vector<NSAttributedString::Run> runs_;  // as they were set, whatever drawing has set since
  double strokeWidth_ = 1;
  UIColor strokeColor_ = UIColor::blackColor();
  UIColor foregroundColor_ = UIColor::whiteColor();
  std::optional<NSParagraphStyle> paragraphStyle_;
  std::optional<NSTextAttributes> backgroundAttributes_;
  std::optional<NSTextAttributes> foregroundAttributes_;
};
