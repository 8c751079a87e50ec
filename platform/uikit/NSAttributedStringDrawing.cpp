#include "platform/uikit/NSAttributedStringDrawing.h"

#include <QPainter>
#include <QRawFont>
#include <QTextBoundaryFinder>
#include <QTextLayout>
#include <algorithm>
#include <cmath>
#include <cstddef>
#include <iterator>
#include <limits>
#include <memory>
#include <utility>

#include "platform/uikit/GlyphDrawing.h"
#include "platform/uikit/QtValues.h"

namespace {

constexpr QChar ellipsis(0x2026);
// Longer texts are cut: no screen holds more, and laying text out takes time.
constexpr qsizetype charactersLimit = 4096;

// How a stretch of characters is drawn.
struct Look {
  qsizetype start;
  QFont font;
  QBrush filling;
  QPen outline;
  bool underline;
};

// The text as Qt lays it out: characters, the font of each stretch of them, and what is drawn of it.
struct Content {
  QString text;
  QList<QTextLayout::FormatRange> fonts;
  std::vector<Look> looks;
  QTextOption option;
};

// What a text has to fit into.
struct Room {
  double width;
  double height;
  int lines;  // 0: any number
};

struct Layout {
  std::unique_ptr<QTextLayout> lines;
  CGSize size;
  qsizetype length = 0;  // of the characters before the ellipsis
  // Of a text that doesn't fit: where the last line begins that does, and where the next one ends.
  bool fits = true;
  qsizetype lastLine = 0;
  qsizetype end = 0;
};

Look lookOf(qsizetype start, const NSTextAttributes& attributes, const NSStringDrawingContext& context) {
  const UIFont& font = attributes.font ? *attributes.font : context.font;
  const QColor color = toQColor(attributes.foregroundColor.value_or(context.color));
  Look look{start, toQFont(font), attributes.strokeWidth > 0 ? QBrush(Qt::NoBrush) : QBrush(color), Qt::NoPen,
            attributes.underline};
  if (attributes.strokeWidth != 0) {
    const QColor stroke = attributes.strokeColor ? toQColor(*attributes.strokeColor) : color;
    const double width = std::abs(attributes.strokeWidth) / 100 * font.pointSize;
    look.outline = QPen(stroke, width, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin);
  }
  return look;
}

// As many of the characters as there is room for, of a text that may be far longer.
QString charactersOf(const std::string& text, qsizetype room) {
  std::size_t bytes = std::min(text.size(), std::size_t(room) * 4);
  while (bytes > 0 && bytes < text.size() && (text[bytes] & 0xC0) == 0x80) --bytes;
  QString characters = QString::fromUtf8(text.data(), qsizetype(bytes));
  characters.remove(QChar('\r')).replace(QChar('\n'), QChar::LineSeparator);
  characters.truncate(room);
  return characters;
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

Content contentOf(const NSAttributedString& text, const NSStringDrawingContext& context) {
  Content content;
  for (const auto& run : text.runs) {
    if (content.text.size() >= charactersLimit) break;
    const QString characters = charactersOf(run.text, charactersLimit - content.text.size());
    if (characters.isEmpty()) continue;
    content.looks.push_back(lookOf(content.text.size(), run.attributes, context));
    const QFont& font = content.looks.back().font;
    if (content.fonts.isEmpty() || content.fonts.last().format.font() != font) {
      content.fonts.push_back({int(content.text.size()), 0, {}});
      content.fonts.last().format.setFont(font);
    }
    content.fonts.last().length += int(characters.size());
    content.text += characters;
  }
  content.option = optionOf(text, content.text, context);
  return content;
}

// Characters of the content, without what is drawn of them.
Content part(const Content& content, qsizetype from, qsizetype length) {
  Content some{content.text.mid(from, length), {}, {}, content.option};
  for (auto font : content.fonts) {
    const qsizetype start = std::max<qsizetype>(0, font.start - from);
    const qsizetype end = std::min(some.text.size(), font.start + font.length - from);
    font.start = int(start);
    font.length = int(end - start);
    if (font.length > 0 || (some.fonts.isEmpty() && end >= 0)) some.fonts.push_back(font);
  }
  return some;
}

// The same, and an ellipsis that looks like the last of them.
Content shortened(const Content& content, qsizetype from, qsizetype length) {
  while (length > 0 && content.text[from + length - 1].isSpace()) --length;
  Content shorter = part(content, from, length);
  shorter.text += ellipsis;
  if (!shorter.fonts.isEmpty()) shorter.fonts.last().length = int(shorter.text.size()) - shorter.fonts.last().start;
  return shorter;
}

// Breaks the content into lines, as far as there is room; for one at least.
Layout layOut(const Content& content, const Room& room) {
  Layout layout;
  layout.lines = std::make_unique<QTextLayout>(content.text, content.fonts.value(0).format.font());
  layout.length = content.text.size();
  layout.lines->setCacheEnabled(true);
  layout.lines->setTextOption(content.option);
  layout.lines->setFormats(content.fonts);
  layout.lines->beginLayout();
  int count = 0;
  for (QTextLine line = layout.lines->createLine(); line.isValid(); line = layout.lines->createLine()) {
    ++count;
    line.setLeadingIncluded(true);
    line.setLineWidth(room.width);
    line.setPosition({0, layout.size.height});
    const bool isTooMuch = room.lines > 0 && count > room.lines;
    if (isTooMuch || (count > 1 && layout.size.height + line.height() > room.height)) {
      layout.fits = false;
      layout.end = line.textStart() + line.textLength();
      break;
    }
    layout.lastLine = line.textStart();
    layout.size.height += line.height();
    layout.size.width = std::max(layout.size.width, line.naturalTextWidth());
  }
  layout.lines->endLayout();
  return layout;
}

// The content as far as there is room; of a long one, no more is laid out than about what is to be seen of it.
Layout layOutStart(const Content& content, const Room& room) {
  const double letter = 0.4 * content.fonts.first().format.font().pixelSize();  // a guess, mostly enough
  const double lines = room.lines > 0 ? room.lines : std::ceil(room.height / (2 * letter));
  const double guess = lines * (room.width / letter + 8);
  auto length = guess < double(charactersLimit) ? std::max<qsizetype>(1, qsizetype(guess)) : charactersLimit;
  for (; length < content.text.size(); length *= 4) {
    Layout layout = layOut(part(content, 0, length), room);
    if (!layout.fits) return layout;
  }
  return layOut(content, room);
}

// The last of the ordered `cuts` that `fits`; the first one is taken to fit.
template <typename Fits>
qsizetype lastThatFits(const std::vector<qsizetype>& cuts, Fits fits) {
  std::size_t good = 0;
  std::size_t bad = cuts.size();
  while (good + 1 < bad) {
    const std::size_t middle = (good + bad) / 2;
    (fits(cuts[middle]) ? good : bad) = middle;
  }
  return cuts[good];
}

// Where a text may be cut, from `from` to its end; the first is always `from`.
std::vector<qsizetype> cutsOf(const QString& text, qsizetype from) {
  QTextBoundaryFinder finder(QTextBoundaryFinder::Grapheme, text);
  finder.setPosition(from);
  std::vector<qsizetype> cuts{from};
  for (auto cut = finder.toNextBoundary(); cut >= 0; cut = finder.toNextBoundary()) cuts.push_back(cut);
  return cuts;
}

// The content as far as it fits, with an ellipsis where there is more. The cut is looked for in the last
// line, to which the first word of the next may lend some letters.
Layout fit(const Content& content, const Room& room) {
  Layout whole = layOutStart(content, room);
  if (whole.fits) return whole;
  const QString seen = content.text.left(whole.end);
  const auto cutAt = [&](qsizetype cut, const Room& where) {
    Layout layout = layOut(shortened(content, 0, cut), where);
    layout.length = cut;
    return layout;
  };
  const qsizetype cut = lastThatFits(cutsOf(seen, whole.lastLine), [&](qsizetype tried) {
    return layOut(shortened(content, whole.lastLine, tried - whole.lastLine), {room.width, room.height, 1}).fits;
  });
  Layout layout = cutAt(cut, room);
  if (layout.fits) return layout;
  // Some letters change with what stands before them, and some fonts are higher: then a cut further ahead.
  const qsizetype safe = lastThatFits(cutsOf(seen, 0), [&](qsizetype tried) { return cutAt(tried, room).fits; });
  return safe > 0 ? cutAt(safe, room) : cutAt(0, {room.width, std::numeric_limits<double>::infinity(), 1});
}

// Under the characters from `from` to `to`, as Qt has it: lower than the font says under plain letters.
void drawUnderline(QPainter& painter, const QTextLayout& lines, const Look& look, const QPointF& at, int from, int to) {
  const QRawFont font = QRawFont::fromFont(look.font);
  const bool isOutlined = look.outline.style() != Qt::NoPen;
  const double thickness = font.lineThickness();
  double below = font.underlinePosition();
  if (!isOutlined) below = std::min(std::ceil(below) + 0.5, std::max(below, font.descent() - 0.5)) - thickness / 2;
  painter.setPen(look.outline);
  painter.setBrush(look.filling);
  for (int i = 0; i < lines.lineCount(); ++i) {
    const QTextLine line = lines.lineAt(i);
    const int start = std::max(from, line.textStart());
    const int end = std::min(to, line.textStart() + line.textLength());
    if (start >= end) continue;
    const auto [left, right] = std::minmax({line.cursorToX(start), line.cursorToX(end)});
    painter.drawRect(QRectF(at.x() + left, at.y() + line.y() + line.ascent() + below, right - left, thickness));
  }
}

void draw(QPainter& painter, const Layout& layout, const std::vector<Look>& looks, const QPointF& at) {
  for (auto look = looks.begin(); look != looks.end(); ++look) {
    if (look->start > 0 && look->start >= layout.length) break;
    const auto next = std::next(look);
    const bool isLast = next == looks.end() || next->start >= layout.length;
    const auto from = int(look->start);
    const auto to = int(isLast ? layout.lines->text().size() : next->start);
    if (look->underline) drawUnderline(painter, *layout.lines, *look, at, from, to);
    for (const QGlyphRun& glyphs : layout.lines->glyphRuns(from, to - from)) {
      drawGlyphs(painter, glyphs, at, look->filling, look->outline);
    }
  }
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
  drawAttributedStrings(painter, {text}, rect, context);
}

void drawAttributedStrings(QPainter& painter, const std::vector<NSAttributedString>& layers, const CGRect& rect,
                           const NSStringDrawingContext& context) {
  painter.save();
  Content laidOut;
  Layout layout;
  for (const NSAttributedString& layer : layers) {
    Content content = contentOf(layer, context);
    if (content.text.isEmpty()) continue;
    const bool isSetAlike = content.text == laidOut.text && content.fonts == laidOut.fonts &&
                            content.option.alignment() == laidOut.option.alignment();
    // Half a point of room, so that a view of the text's own size never loses its last line to rounding.
    const Room room{rect.size.width, rect.size.height + 0.5, context.numberOfLines};
    if (!isSetAlike) layout = fit(content, room);
    const double top = rect.origin.y + std::round((rect.size.height - layout.size.height) / 2);
    draw(painter, layout, content.looks, QPointF(rect.origin.x, top));
    laidOut = std::move(content);
  }
  painter.restore();
}

CGSize sizeOfAttributedString(const NSAttributedString& text, double width, const NSStringDrawingContext& context) {
  Content content = contentOf(text, context);
  if (content.text.isEmpty()) return {};
  constexpr double lineWidthLimit = 1 << 20;  // of Qt's text lines
  content.option.setAlignment(Qt::AlignLeft);
  const Room room{std::min(width, lineWidthLimit), std::numeric_limits<double>::infinity(), context.numberOfLines};
  const Layout layout = fit(content, room);
  return {std::ceil(layout.size.width), std::ceil(layout.size.height)};
}
