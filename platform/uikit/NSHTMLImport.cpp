#include "platform/uikit/NSHTMLImport.h"

#include <QTextBlock>
#include <QTextDocument>
#include <utility>

#include "platform/uikit/QtValues.h"
#include "platform/uikit/TameHTML.h"

namespace {

// Gives nothing to who asks for a file or a URL, whatever a host has set for documents of its own.
class LonelyDocument final : public QTextDocument {
 public:
  LonelyDocument() {
    setUndoRedoEnabled(false);
    setResourceProvider([](const QUrl&) { return QVariant(); });
  }

 protected:
  QVariant loadResource(int, const QUrl&) override { return {}; }
};

std::optional<UIFont> fontOf(const QTextCharFormat& format) {
  UIFont font = UIFont::systemFontOfSize(17);
  bool isSaid = false;
  const auto says = [&](QTextFormat::Property property) {
    const bool has = format.hasProperty(property);
    isSaid = isSaid || has;
    return has;
  };
  if (says(QTextFormat::FontFamilies)) font.familyName = format.fontFamilies().toStringList().value(0).toStdString();
  if (says(QTextFormat::FontPointSize)) font.pointSize = format.fontPointSize();
  if (says(QTextFormat::FontWeight)) font.weight = format.fontWeight();
  if (says(QTextFormat::FontItalic)) font.italic = format.fontItalic();
  return isSaid ? std::optional(font) : std::nullopt;
}

std::optional<NSParagraphStyle> paragraphOf(const QTextBlockFormat& format) {
  if (!format.hasProperty(QTextFormat::BlockAlignment)) return std::nullopt;
  const Qt::Alignment alignment = format.alignment();
  return NSParagraphStyle{alignment & Qt::AlignHCenter   ? NSTextAlignmentCenter
                          : alignment & Qt::AlignRight   ? NSTextAlignmentRight
                          : alignment & Qt::AlignJustify ? NSTextAlignmentJustified
                                                         : NSTextAlignmentLeft};
}

// The document's text as it is read: line ends as ours, without the blanks before them, and no control characters.
class Runs {
 public:
  void add(const QString& characters, const NSTextAttributes& look) {
    QString line;
    for (const QChar character : characters) {
      if (character == QChar::LineSeparator || character == QChar::ParagraphSeparator) {
        append(std::exchange(line, {}).toStdString(), look);
        addLineEnd(look);
      } else if (character.category() != QChar::Other_Control) {
        line += character;
      }
    }
    append(line.toStdString(), look);
  }

  void addLineEnd(const NSTextAttributes& look) {
    trim(" ");
    append("\n", look);
  }

  NSAttributedString take() {
    trim(" \n");
    return std::move(text_);
  }

 private:
  void append(const std::string& characters, const NSTextAttributes& look) {
    if (characters.empty()) return;
    if (text_.runs.empty() || text_.runs.back().attributes != look) text_.runs.push_back({"", look});
    text_.runs.back().text += characters;
  }

  void trim(std::string_view blanks) {
    while (!text_.runs.empty()) {
      std::string& last = text_.runs.back().text;
      last.resize(last.find_last_not_of(blanks) + 1);
      if (!last.empty()) return;
      text_.runs.pop_back();
    }
  }

  NSAttributedString text_;
};

}  // namespace

std::optional<NSAttributedString> NSAttributedStringFromHTML(std::string_view html) {
  LonelyDocument document;
  document.setHtml(QString::fromUtf8(tameHTML(html)));
  Runs runs;
  for (QTextBlock block = document.begin(); block.isValid(); block = block.next()) {
    NSTextAttributes look;
    look.paragraphStyle = paragraphOf(block.blockFormat());
    for (auto each = block.begin(); !each.atEnd(); ++each) {
      const QTextCharFormat format = each.fragment().charFormat();
      look.font = fontOf(format);
      look.foregroundColor.reset();
      if (format.hasProperty(QTextFormat::ForegroundBrush))
        look.foregroundColor = toUIColor(format.foreground().color());
      look.underline = format.fontUnderline();
      runs.add(each.fragment().text(), look);
    }
    runs.addLineEnd(look);
  }
  return runs.take();
}
