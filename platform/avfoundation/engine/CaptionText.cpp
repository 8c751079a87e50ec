#include "platform/avfoundation/engine/CaptionText.h"

#include <glib.h>

#include <memory>
#include <optional>

#include "platform/foundation/UTF8.h"

namespace {

void append(std::string& text, gunichar character) {
  char bytes[6];
  text.append(bytes, static_cast<std::size_t>(g_unichar_to_utf8(character, bytes)));
}

// What well-formed text without elements stands for; nil when it is not well-formed.
std::optional<std::string> unescaped(std::string_view escaped) {
  GMarkupParser parser{};
  parser.text = [](GMarkupParseContext*, const char* part, gsize length, gpointer all, GError**) {
    static_cast<std::string*>(all)->append(part, length);
  };
  std::string text;
  const std::unique_ptr<GMarkupParseContext, decltype(&g_markup_parse_context_free)> context(
      g_markup_parse_context_new(&parser, GMarkupParseFlags(0), &text, nullptr), &g_markup_parse_context_free);
  for (const std::string_view part : {std::string_view("<t>"), escaped, std::string_view("</t>")}) {
    if (!g_markup_parse_context_parse(context.get(), part.data(), gssize(part.size()), nullptr)) return std::nullopt;
  }
  return text;
}

}  // namespace

// The demuxer of Matroska escapes a track's texts until it has seen one with <i>, <b>, <u>, <s> or <span>: then other
// tags would be read out.
std::string captionFromMarkup(std::string_view markup) {
  if (markup.find('<') == markup.npos) {
    if (const auto text = unescaped(markup)) return tidyCaption(*text);
  }
  return tidyCaption(markup);
}

std::string captionFromScript(std::string_view event) {
  constexpr int fieldsBeforeText = 8;
  for (int field = 0; field < fieldsBeforeText; ++field) {
    const auto comma = event.find(',');
    if (comma == std::string_view::npos) return "";
    event.remove_prefix(comma + 1);
  }
  std::string text;
  bool inOverride = false;
  for (std::size_t i = 0; i < event.size(); ++i) {
    if (event[i] == '{') inOverride = true;
    const bool wasInOverride = inOverride;
    if (event[i] == '}') inOverride = false;
    if (wasInOverride) continue;
    if (event[i] == '\\' && i + 1 < event.size() && (event[i + 1] == 'N' || event[i + 1] == 'n')) {
      text += '\n';
      ++i;
    } else if (event[i] == '\\' && i + 1 < event.size() && event[i + 1] == 'h') {
      text += ' ';
      ++i;
    } else {
      text += event[i];
    }
  }
  return tidyCaption(text);
}

std::string tidyCaption(std::string_view text) {
  std::string tidy;
  for (std::size_t i = 0; i < text.size() && tidy.size() < captionBytesLimit;) {
    if (text[i] == '\r') {
      tidy += '\n';
      i += i + 1 < text.size() && text[i + 1] == '\n' ? 2 : 1;
      continue;
    }
    const UTF8Character character = firstUTF8Character(text.substr(i));
    const bool isControl = character.value < 0x20 || (character.value >= 0x7F && character.value < 0xA0);
    if (!isControl || character.value == '\n') {
      append(tidy, character.value);
    } else if (character.value == '\t') {
      tidy += ' ';
    }
    i += character.length;
  }
  const auto first = tidy.find_first_not_of(" \n");
  if (first == std::string::npos) return "";
  return tidy.substr(first, tidy.find_last_not_of(" \n") - first + 1);
}
