#pragma once

#include <string>

// The text of a legible track that is due, as the media has it. A plain value.
struct MediaCaption {
  std::string text;  // UTF-8, lines parted by line feeds, no other control characters; not empty
  // HTML: what stands in angles says how the text looks, entities stand for characters. Else every character is itself.
  bool isMarkup = false;
  friend bool operator==(const MediaCaption&, const MediaCaption&) = default;
};
