#include "platform/avkit/StyledCaption.h"

#include "platform/uikit/NSHTMLImport.h"
#include "platform/uikit/QtValues.h"

namespace {

// Beyond it a caption is a fault or an attack.
constexpr qsizetype captionLimit = 600;

NSAttributedString attributed(const MediaCaption& caption) {
  if (!caption.isMarkup) return NSAttributedString(caption.text, {});
  std::string html;
  for (const char character : caption.text) character == '\n' ? html += "<br>" : html += character;
  return NSAttributedStringFromHTML(html).value_or(NSAttributedString());
}

}  // namespace

QString styledText(const MediaCaption& caption) {
  QString styled;
  qsizetype room = captionLimit;
  for (const auto& [text, look] : attributed(caption).runs) {
    const QString characters = QString::fromStdString(text).left(room);
    room -= characters.size();
    QString part = characters.toHtmlEscaped().replace(QChar('\n'), "<br>");
    if (part.isEmpty()) break;
    if (look.font && look.font->italic) part = "<i>" + part + "</i>";
    if (look.font && look.font->weight >= UIFont::weightSemibold) part = "<b>" + part + "</b>";
    if (look.underline) part = "<u>" + part + "</u>";
    if (look.foregroundColor) {
      part = QString("<font color=\"%1\">%2</font>").arg(toQColor(*look.foregroundColor).name(), part);
    }
    styled += part;
  }
  return styled.trimmed();
}
