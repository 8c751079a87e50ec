#include "platform/uikit/TameHTML.h"

#include <QColor>
#include <algorithm>
#include <charconv>
#include <utility>
#include <vector>

namespace {

constexpr std::string_view space = " \t\n\r\f";

constexpr bool isLetter(char character) {
  return (character >= 'a' && character <= 'z') || (character >= 'A' && character <= 'Z');
}

std::string lowered(std::string_view text) {
  std::string lower(text);
  for (char& character : lower) {
    if (isLetter(character)) character |= 0x20;
  }
  return lower;
}

std::string_view trimmed(std::string_view text) {
  const auto first = text.find_first_not_of(space);
  return first == text.npos ? std::string_view() : text.substr(first, text.find_last_not_of(space) - first + 1);
}

enum class Place { inLine, block, cell };
struct Element {
  std::string_view name;
  Place place;
  std::string_view style;
};
constexpr std::string_view italic = "font-style:italic;";
constexpr std::string_view bold = "font-weight:bold;";
constexpr std::string_view underlined = "text-decoration:underline;";
constexpr Element elements[] = {
    {"i", Place::inLine, italic},     {"em", Place::inLine, italic},    {"cite", Place::inLine, italic},
    {"dfn", Place::inLine, italic},   {"var", Place::inLine, italic},   {"b", Place::inLine, bold},
    {"strong", Place::inLine, bold},  {"u", Place::inLine, underlined}, {"ins", Place::inLine, underlined},
    {"font", Place::inLine, ""},      {"span", Place::inLine, ""},      {"body", Place::block, ""},
    {"p", Place::block, ""},          {"div", Place::block, ""},        {"center", Place::block, ""},
    {"blockquote", Place::block, ""}, {"pre", Place::block, ""},        {"hr", Place::block, ""},
    {"h1", Place::block, bold},       {"h2", Place::block, bold},       {"h3", Place::block, bold},
    {"h4", Place::block, bold},       {"h5", Place::block, bold},       {"h6", Place::block, bold},
    {"ul", Place::block, ""},         {"ol", Place::block, ""},         {"li", Place::block, ""},
    {"dl", Place::block, ""},         {"dt", Place::block, ""},         {"dd", Place::block, ""},
    {"table", Place::block, ""},      {"caption", Place::block, ""},    {"tr", Place::block, ""},
    {"td", Place::cell, ""},          {"th", Place::cell, bold},
};
constexpr std::string_view hidden[] = {"script", "style", "title"};

// Declarations as Qt reads them, from what somebody wrote.
class Look {
 public:
  explicit Look(std::string_view style) : style_(style) {}

  void takeAttribute(std::string_view name, std::string_view value) {
    if (name == "style" && value.find(':') != value.npos) return takeDeclarations(value);
    constexpr std::pair<std::string_view, std::string_view> properties[] = {
        {"color", "color"},        {"foreground", "color"},          {"fgcolor", "color"},
        {"face", "font-family"},   {"font_family", "font-family"},   {"style", "font-style"},
        {"weight", "font-weight"}, {"underline", "text-decoration"}, {"align", "text-align"},
    };
    for (const auto& [attribute, property] : properties) {
      if (attribute == name) return take(property, value);
    }
  }

  // What Qt is to be told; empty for nothing.
  const std::string& style() const { return style_; }
  // By Qt's name for it; empty when the document names none.
  const std::string& alignment() const { return alignment_; }

 private:
  void takeDeclarations(std::string_view all) {
    while (!all.empty()) {
      const std::string_view one = all.substr(0, all.find(';'));
      all.remove_prefix(std::min(all.size(), one.size() + 1));
      if (const auto colon = one.find(':'); colon != one.npos) {
        take(lowered(trimmed(one.substr(0, colon))), trimmed(one.substr(colon + 1)));
      }
    }
  }

  void take(std::string_view property, std::string_view value) {
    if (property == "font-family") return takeFamily(value);
    const std::string word = lowered(value);
    if (property == "color") return takeColor(word);
    if (property == "font-size") return takeSize(word);
    if (property == "font-weight") return takeWeight(word);
    if (property == "font-style" && (word == "italic" || word == "oblique" || word == "normal")) {
      style_ += "font-style:" + word + ";";
    } else if (property == "text-decoration") {
      const bool isNone = word == "none";
      const bool isUnder = word.find("underline") != word.npos || word == "single" || word == "double" || word == "low";
      if (isNone || isUnder) style_ += std::string("text-decoration:") + (isNone ? "none;" : "underline;");
    } else if (property == "text-align" &&
               (word == "left" || word == "center" || word == "right" || word == "justify")) {
      alignment_ = word;
    }
  }

  void takeColor(std::string_view word) {
    // Six digits without a "#", or with several, are wrong but common.
    const auto digits = word.substr(std::min(word.size(), word.find_first_not_of('#')));
    const bool areDigits = digits.find_first_not_of("0123456789abcdef") == digits.npos;
    if (areDigits && (digits.size() == 6 || (digits.size() == 3 && digits != word))) {
      style_.append("color:#").append(digits).append(";");
    } else if (const QColor color(std::ranges::all_of(word, isLetter) ? QLatin1String(word) : QLatin1String());
               color.alpha() == 255 && color.isValid()) {
      style_.append("color:").append(color.name().toStdString()).append(";");
    }
  }

  // Qt reads fractions of points but not of pixels, so pixels are called points here.
  void takeSize(std::string_view word) {
    double size = 0;
    const auto [end, failure] = std::from_chars(word.data(), word.data() + word.size(), size);
    const std::string_view unit = trimmed(word.substr(static_cast<std::size_t>(end - word.data())));
    if (unit == "pt") size *= 4.0 / 3;
    if (failure != std::errc() || (unit != "px" && unit != "pt") || !(size >= 1 && size <= 10000)) return;
    char digits[32];
    const auto written = std::to_chars(std::begin(digits), std::end(digits), size, std::chars_format::fixed, 6);
    style_.append("font-size:").append(digits, written.ptr).append("pt;");
  }

  void takeWeight(std::string_view word) {
    int weight = 0;
    const auto [end, failure] = std::from_chars(word.data(), word.data() + word.size(), weight);
    if (word == "normal") {
      weight = 400;
    } else if (word == "bold" || word == "bolder") {
      weight = 700;
    } else if (failure != std::errc() || end != word.data() + word.size()) {
      return;
    }
    if (weight >= 1 && weight <= 1000) style_ += "font-weight:" + std::to_string(weight) + ";";
  }

  void takeFamily(std::string_view value) {
    std::string_view first = trimmed(value.substr(0, value.find(',')));
    if (first.size() > 1 && (first.front() == '\'' || first.front() == '"')) first = first.substr(1, first.size() - 2);
    constexpr std::size_t familyLimit = 127;  // bytes
    if (first.empty() || first.size() > familyLimit || first.find_first_of("\"'&<>\\;{}") != first.npos) return;
    style_.append("font-family:'").append(first).append("';");
  }

  std::string style_;
  std::string alignment_;
};

// Takes the attributes out of what stands in a tag behind its name.
Look lookOf(const Element& element, std::string_view attributes) {
  Look look(element.style);
  if (element.name == "center") look.takeAttribute("align", "center");
  for (;;) {
    attributes.remove_prefix(std::min(attributes.size(), attributes.find_first_not_of(" \t\n\r\f/")));
    if (attributes.empty()) return look;
    const std::string_view name = attributes.substr(0, attributes.find_first_of(" \t\n\r\f=", 1));
    attributes.remove_prefix(name.size());
    attributes.remove_prefix(std::min(attributes.size(), attributes.find_first_not_of(space)));
    if (attributes.empty() || attributes.front() != '=') continue;
    attributes.remove_prefix(std::min(attributes.size(), attributes.find_first_not_of(space, 1)));
    if (attributes.empty()) return look;
    const char quote = attributes.front();
    const bool isQuoted = quote == '"' || quote == '\'';
    if (isQuoted) attributes.remove_prefix(1);
    const std::string_view value =
        attributes.substr(0, isQuoted ? attributes.find(quote) : attributes.find_first_of(space));
    attributes.remove_prefix(std::min(attributes.size(), value.size() + (isQuoted ? 1 : 0)));
    look.takeAttribute(lowered(name), trimmed(value));
  }
}

class Tamer {
 public:
  explicit Tamer(std::string_view html) : html_(html) {}

  std::string document() {
    while (position_ < html_.size()) {
      const auto angle = std::min(html_.find('<', position_), html_.size());
      addText(html_.substr(position_, angle - position_));
      position_ = angle;
      if (angle < html_.size() && !readTag()) {
        addText("&lt;");
        ++position_;
      }
    }
    const std::string alignment = alignment_.empty() ? "" : " align=\"" + alignment_ + "\"";
    return "<body" + alignment + ">" + body_ + "</body>";
  }

 private:
  // Reads the tag, comment or instruction that stands here; false when the angle begins none.
  bool readTag() {
    const std::string_view rest = html_.substr(position_);
    if (rest.starts_with("<!--") && commentsEnd_) {
      const auto end = html_.find("-->", position_ + 4);
      commentsEnd_ = end != html_.npos;
      if (commentsEnd_) {
        position_ = end + 3;
        return true;
      }
    }
    const bool closes = rest.size() > 1 && rest[1] == '/';
    const std::size_t begin = closes ? 2 : 1;
    const char first = begin < rest.size() ? rest[begin] : ' ';
    if (!isLetter(first) && (closes || (first != '!' && first != '?'))) return false;
    const auto end = rest.find_first_of("<>", begin);
    if (end == rest.npos || rest[end] == '<') return false;
    position_ += end + 1;
    if (!isLetter(first)) return true;
    const std::string_view inside = rest.substr(begin, end - begin);
    const std::string_view name = inside.substr(0, inside.find_first_of(" \t\n\r\f/"));
    constexpr std::size_t tagNameLimit = 10;  // no known one is longer
    if (name.size() <= tagNameLimit) handleTag(lowered(name), inside.substr(name.size()), closes);
    return true;
  }

  void handleTag(const std::string& name, std::string_view attributes, bool closes) {
    if (name == "br") return breakLine();
    if (std::ranges::find(hidden, name) != std::end(hidden)) {
      if (!closes) skipTo(name);
      return;
    }
    const auto* element = std::ranges::find(elements, name, &Element::name);
    if (element == std::end(elements)) return;
    if (element->place == Place::block) breakIsDue_ = lineHasText_;
    if (element->place == Place::cell) body_ += ' ';
    if (closes || name == "p") close(*element);  // paragraphs hold none
    if (!closes) open(*element, lookOf(*element, attributes));
  }

  void open(const Element& element, const Look& look) {
    if (!hasText_ && !look.alignment().empty()) alignment_ = look.alignment();
    const bool isStyled = !look.style().empty();
    if ((!isStyled && element.place != Place::inLine) || open_.size() == htmlDepthLimit) return;
    open_.push_back(&element);
    body_ += "<span style=\"" + look.style() + "\">";
  }

  void close(const Element& element) {
    const auto found = std::find(open_.rbegin(), open_.rend(), &element);
    if (found == open_.rend()) return;
    const auto count = found - open_.rbegin() + 1;
    for (auto i = 0; i < count; ++i) body_ += "</span>";
    open_.resize(open_.size() - static_cast<std::size_t>(count));
  }

  // Leaves out the content of an element that is not to be seen, to the end where it is not closed.
  void skipTo(const std::string& name) {
    do {
      position_ = std::min(html_.find("</", position_), html_.size() - 2) + 2;
    } while (position_ < html_.size() && lowered(html_.substr(position_, name.size())) != name);
    position_ = std::min(html_.find('>', position_), html_.size() - 1) + 1;
  }

  void addText(std::string_view text) {
    const bool isVisible = text.find_first_not_of(space) != text.npos;
    if (isVisible && std::exchange(breakIsDue_, false)) body_ += "<br>";
    lineHasText_ = lineHasText_ || isVisible;
    hasText_ = hasText_ || isVisible;
    body_ += text;
  }

  void breakLine() {
    if (std::exchange(breakIsDue_, false)) body_ += "<br>";
    body_ += "<br>";
    lineHasText_ = false;
  }

  const std::string_view html_;
  std::size_t position_ = 0;
  std::string body_;
  std::string alignment_;
  std::vector<const Element*> open_;
  bool hasText_ = false;
  bool lineHasText_ = false;
  bool breakIsDue_ = false;  // before the next text
  bool commentsEnd_ = true;  // as far as is known
};

}  // namespace

std::string tameHTML(std::string_view html) {
  std::size_t length = std::min(html.size(), htmlBytesLimit);
  const auto splits = [html](std::size_t at) { return at < html.size() && (html[at] & 0xC0) == 0x80; };
  for (int i = 0; i < 3 && length > 0 && splits(length); ++i) --length;
  return Tamer(html.substr(0, length)).document();
}
