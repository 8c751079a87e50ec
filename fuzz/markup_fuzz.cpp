// Any bytes as HTML: nothing is loaded, nothing is printed, the text is within bounds, each run differs from its
// neighbour, and what has no markup comes through as it is.
#include <QTextDocument>
#include <cstdint>
#include <cstdlib>

#include "platform/foundation/UTF8.h"
#include "platform/uikit/NSHTMLImport.h"
#include "platform/uikit/TameHTML.h"

namespace {

void require(bool holds) {
  if (!holds) std::abort();
}

// Without white space and control characters, and without two that are line ends to Qt.
QString visible(QString text) {
  text.removeIf([](QChar character) {
    const bool isFrame = character.unicode() == 0xFDD0 || character.unicode() == 0xFDD1;
    return isFrame || character.isSpace() || character.category() == QChar::Other_Control;
  });
  return text;
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
  qInstallMessageHandler([](QtMsgType, const QMessageLogContext&, const QString&) { std::abort(); });
  QTextDocument::setDefaultResourceProvider([](const QUrl&) -> QVariant { std::abort(); });
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view html(reinterpret_cast<const char*>(data), size);
  const auto text = NSAttributedStringFromHTML(html);
  require(text.has_value());
  const std::string all = text->string();
  require(isUTF8(all) && all.size() <= 3 * htmlBytesLimit && !all.ends_with('\n'));
  for (std::size_t i = 0; i < text->runs.size(); ++i) {
    require(!text->runs[i].text.empty());
    require(i == 0 || text->runs[i].attributes != text->runs[i - 1].attributes);
  }
  if (html.find_first_of("<&") == html.npos)
    require(visible(QString::fromUtf8(html)) == visible(text->string().c_str()));
  return 0;
}
