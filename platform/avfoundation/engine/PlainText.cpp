#include "platform/avfoundation/engine/PlainText.h"

#include <glib.h>

#include <charconv>

#include "platform/foundation/UTF8.h"

namespace {

void append(std::string& text, gunichar character) {
  char bytes[6];
  text.append(bytes, static_cast<std::size_t>(g_unichar_to_utf8(character, bytes)));
}

// Resolves the entity that `markup` begins with; returns its length, or 0 when it is none.
std::size_t appendEntity(std::string& text, std::string_view markup) {
  constexpr std::size_t longest = 10;
  const auto end = markup.substr(0, longest).find(';');
  if (end == std::string_view::npos || end < 2) return 0;
  const std::string_view name = markup.substr(1, end - 1);
  if (name[0] == '#') {
    const bool isHexadecimal = name.size() > 1 && (name[1] == 'x' || name[1] == 'X');
    const std::string_view digits = name.substr(isHexadecimal ? 2 : 1);
    unsigned value = 0;
    const auto [rest, failure] =
        std::from_chars(digits.data(), digits.data() + digits.size(), value, isHexadecimal ? 16 : 10);
    if (failure != std::errc() || rest != digits.data() + digits.size() || !g_unichar_validate(value)) return 0;
    append(text, value);
    return end + 1;
  }
  struct Entity {
    std::string_view name;
    gunichar character;
  };
  constexpr Entity entities[] = {{"amp", '&'}, {"lt", '<'}, {"gt", '>'}, {"quot", '"'}, {"apos", '\''}, {"nbsp", 0xA0}};
  for (const Entity& entity : entities) {
    if (entity.name != name) continue;
    append(text, entity.character);
    return end + 1;
  }
  return 0;
}

bool isLineBreakTag(std::string_view tag) {
  return tag.size() >= 2 && (tag[0] == 'b' || tag[0] == 'B') && (tag[1] == 'r' || tag[1] == 'R') &&
         (tag.size() == 2 || !g_ascii_isalnum(tag[2]));
}

}  // namespace

std::string plainTextFromMarkup(std::string_view markup) {
  std::string text;
  auto nextTagEnd = markup.find('>');
  for (std::size_t i = 0; i < markup.size();) {
    if (markup[i] == '<') {
      if (nextTagEnd != std::string_view::npos && nextTagEnd < i) nextTagEnd = markup.find('>', i);
      // An angle that is never closed, or that no tag follows, is text.
      const bool startsTag = i + 1 < markup.size() && (g_ascii_isalpha(markup[i + 1]) || markup[i + 1] == '/');
      if (startsTag && nextTagEnd != std::string_view::npos) {
        if (isLineBreakTag(markup.substr(i + 1, nextTagEnd - i - 1))) text += '\n';
        i = nextTagEnd + 1;
        continue;
      }
    } else if (markup[i] == '&') {
      if (const auto length = appendEntity(text, markup.substr(i))) {
        i += length;
        continue;
      }
    }
    text += markup[i++];
  }
  return tidyPlainText(text);
}

std::string plainTextFromScript(std::string_view event) {
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
  return tidyPlainText(text);
}

std::string tidyPlainText(std::string_view text) {
  std::string tidy;
  for (std::size_t i = 0; i < text.size() && tidy.size() < maximumCaptionLength;) {
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
