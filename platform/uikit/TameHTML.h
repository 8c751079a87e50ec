#pragma once

#include <cstddef>
#include <string>
#include <string_view>

// Foreign HTML as a document that is safe to give to Qt's importer: one body of text, `<span style="…">` and `<br>`.
// What names something to load, costs time or memory beyond its length or makes Qt print warnings stays out: elements,
// attributes and declarations go by a list, and what is not on it vanishes. Text stays. Bytes of text go through as
// they are, entities included. Linear time; any thread.
//
// Kept: i, em, cite, dfn, var; b, strong; u, ins; font, span, body; br, also in its closing form; p, div, center,
// headings, lists, tables and other blocks as lines of their own. Attributes: style, align, color and face, and those
// of a span of Pango's: foreground, font_family, style, weight, underline. Declarations: color (by name or #rrggbb),
// font-size (px, pt), font-family (the first), font-style, font-weight, text-decoration, text-align. Comments, script,
// style and title vanish with what they hold. An angle that begins no tag, or one that is never closed, is text.
//
// The alignment is the whole text's: what is said before its first character counts.
std::string tameHTML(std::string_view html);

// Longer documents are cut: no screen holds more text.
inline constexpr std::size_t htmlBytesLimit = 16 * 1024;
// How deep elements stand in each other; what stands deeper changes nothing.
inline constexpr std::size_t htmlDepthLimit = 32;
