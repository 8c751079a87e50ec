#include "platform/uikit/NSAttributedStringDrawing.h"

#include <QFontMetricsF>
#include <QPainter>
#include <QTextBoundaryFinder>
#include <QTextLayout>
#include <cmath>

#include "platform/uikit/QtValues.h"

namespace {

constexpr QChar ellipsis(0x2026);
// Longer texts are cut: no screen holds more, and laying text out takes time.
constexpr qsizetype maximumLength = 4096;

// The text as Qt lays it out: characters, and the look of each stretch of them.
struct Content {
  QString text;
  QList<QTextLayout::FormatRange> looks;
};

struct Layout {
  std::unique_ptr<QTextLayout> lines;
  CGSize size;
};

QTextCharFormat formatOf(const NSTextAttributes& attributes, const NSStringDrawingContext& context) {
  const UIFont& font = attributes.font ? *attributes.font : context.font;
  const QColor color = toQColor(attributes.foregroundColor.value_or(context.color));
  QTextCharFormat format;
  format.setFont(toQFont(font));
  format.setForeground(attributes.strokeWidth > 0 ? QBrush(Qt::NoBrush) : QBrush(color));
  if (attributes.strokeWidth != 0) {
    const QColor stroke = attributes.strokeColor ? toQColor(*attributes.strokeColor) : color;
    const double width = std::abs(attributes.strokeWidth) / 100 * font.pointSize;
    format.setTextOutline(QPen(stroke, width, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
  }
  format.setFontUnderline(attributes.underline);
  return format;
}

Content contentOf(const NSAttributedString& text, const NSStringDrawingContext& context) {
  Content content;
  for (const auto& run : text.runs) {
    QString characters = QString::fromStdString(run.text);
    characters.remove(QChar('\r')).replace(QChar('\n'), QChar::LineSeparator);
    characters.truncate(maximumLength - content.text.size());
    if (characters.isEmpty()) continue;
    content.looks.push_back({int(content.text.size()), int(characters.size()), formatOf(run.attributes, context)});
    content.text += characters;
  }
  return content;
}

QTextOption optionOf(const NSAttributedString& text, const QString& characters, const NSStringDrawingContext& context) {
  NSTextAlignment alignment = context.alignment;
  if (!text.runs.empty() && text.runs.front().attributes.paragraphStyle) {
    alignment = text.runs.front().attributes.paragraphStyle->alignment;
  }
  if (alignment == NSTextAlignmentNatural) {
    alignment = characters.isRightToLeft() ? NSTextAlignmentRight : NSTextAlignmentLeft;
  }
  QTextOption option;
  option.setWrapMode(QTextOption::WrapAtWordBoundaryOrAnywhere);
  option.setAlignment(alignment == NSTextAlignmentCenter      ? Qt::AlignHCenter
                      : alignment == NSTextAlignmentRight     ? Qt::AlignRight | Qt::AlignAbsolute
                      : alignment == NSTextAlignmentJustified ? Qt::AlignJustify
                                                              : Qt::AlignLeft | Qt::AlignAbsolute);
  return option;
}

// Breaks the content into lines at `width`; nothing when there are more than `maximumLines` or they are higher than
// `height`.
std::optional<Layout> layOut(const Content& content, const QTextOption& option, const NSStringDrawingContext& context,
                             double width, int maximumLines, double height) {
  Layout layout{std::make_unique<QTextLayout>(content.text, toQFont(context.font)), {}};
  layout.lines->setCacheEnabled(true);
  layout.lines->setTextOption(option);
  layout.lines->setFormats(content.looks);
  layout.lines->beginLayout();
  int count = 0;
  for (QTextLine line = layout.lines->createLine(); line.isValid(); line = layout.lines->createLine()) {
    const bool isTooMuch = ++count > maximumLines && maximumLines > 0;
    line.setLeadingIncluded(true);
    line.setLineWidth(width);
    line.setPosition({0, layout.size.height});
    if (isTooMuch || (count > 1 && layout.size.height + line.height() > height)) return std::nullopt;
    layout.size.height += line.height();
    layout.size.width = std::max(layout.size.width, line.naturalTextWidth());
  }
  layout.lines->endLayout();
  return layout;
}

// The first `length` characters and an ellipsis that looks like the last of them.
Content shortened(const Content& content, qsizetype length) {
  Content shorter = content;
  while (length > 0 && content.text[length - 1].isSpace()) --length;
  shorter.text = content.text.left(length) + ellipsis;
  shorter.looks.removeIf([length](const auto& look) { return look.start > 0 && look.start >= length; });
  shorter.looks.last().length = int(shorter.text.size()) - shorter.looks.last().start;
  return shorter;
}

// The content as far as it fits, from the whole of it downwards.
Layout fit(const Content& content, const QTextOption& option, const NSStringDrawingContext& context, double width,
           double height) {
  if (auto whole = layOut(content, option, context, width, context.numberOfLines, height)) return std::move(*whole);
  QTextBoundaryFinder finder(QTextBoundaryFinder::Grapheme, content.text);
  std::vector<qsizetype> cuts;
  for (auto cut = finder.toNextBoundary(); cut >= 0; cut = finder.toNextBoundary()) cuts.push_back(cut);
  std::size_t fits = 0;
  std::size_t fails = cuts.size();
  auto best = layOut(shortened(content, 0), option, context, width, 1, std::numeric_limits<double>::infinity());
  while (fits + 1 < fails) {
    const std::size_t middle = (fits + fails) / 2;
    auto layout = layOut(shortened(content, cuts[middle]), option, context, width, context.numberOfLines, height);
    (layout ? fits : fails) = middle;
    if (layout) best = std::move(layout);
  }
  return std::move(*best);
}

}  // namespace

QFont toQFont(const UIFont& font) {
  QFont result;
  result.setFamilies({QString::fromStdString(font.familyName), "Noto Sans", "DejaVu Sans"});
  result.setPixelSize(std::clamp(int(std::lround(font.pointSize)), 1, 1000));
  result.setWeight(QFont::Weight(std::clamp(font.weight, 1, 1000)));
  result.setItalic(font.italic);
  result.setHintingPreference(QFont::PreferNoHinting);
  return result;
}

void drawAttributedString(QPainter& painter, const NSAttributedString& text, const CGRect& rect,
                          const NSStringDrawingContext& context) {
  const Content content = contentOf(text, context);
  if (content.text.isEmpty()) return;
  // Half a point of room, so that a view of the text's own size never loses its last line to rounding.
  const Layout layout =
      fit(content, optionOf(text, content.text, context), context, rect.size.width, rect.size.height + 0.5);
  const double top = rect.origin.y + std::round((rect.size.height - layout.size.height) / 2);
  layout.lines->draw(&painter, QPointF(rect.origin.x, top));
}

CGSize sizeOfAttributedString(const NSAttributedString& text, double width, const NSStringDrawingContext& context) {
  const Content content = contentOf(text, context);
  if (content.text.isEmpty()) return {};
  constexpr double widest = 1 << 20;  // of Qt's text lines
  QTextOption option = optionOf(text, content.text, context);
  option.setAlignment(Qt::AlignLeft);
  const Layout layout = fit(content, option, context, std::min(width, widest), std::numeric_limits<double>::infinity());
  return {std::ceil(layout.size.width), std::ceil(layout.size.height)};
}
