#pragma once

#include <optional>
#include <string_view>

#include "platform/Export.h"
#include "platform/uikit/values/NSAttributedString.h"

// The text of an HTML document with its look, read by Qt's importer. The bytes may be hostile: nothing is loaded, no
// image, style sheet, font or link, from disk or network; time is linear, and what is beyond 16 KiB is cut off. Any
// thread. It needs no application object and looks no font up.
//
// UTF-8; what is not gives replacement characters. Line breaks (`<br>`, `</br>`, paragraphs and other blocks) are "\n",
// none at the end. Runs differ from their neighbours and carry what the document says of them: font (family, weight,
// italic, and the pixels of a CSS size as points), foregroundColor, underline, and the alignment of the whole text.
// What it does not say is nil; a font of which it says a part has the interface's family and 17 points for the rest.
//
// Unknown elements vanish and leave their text; comments, script, style and title take theirs along. An angle that
// begins no element is text. Left out: images, the marks of lists, the columns of tables, style sheets and classes,
// strike-through, the look of links, the sizes of headings and of `<font size>`.
//
// A document without text has no runs. nil is for what can't be imported; at present everything can.
YMR_API std::optional<NSAttributedString> NSAttributedStringFromHTML(std::string_view html);
