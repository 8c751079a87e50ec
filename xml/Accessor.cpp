#include "xml/Accessor.h"

#include <algorithm>
#include <charconv>
#include <system_error>
#include <utility>

namespace {

using Elements = std::vector<std::shared_ptr<XML::Element>>;

// Strict: the whole text is the number.
template <class Number>
std::optional<Number> parsed(std::string_view text) {
  if (text.size() > 1 && text[0] == '+' && text[1] != '-') text.remove_prefix(1);
  Number number{};
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  if (error != std::errc() || end != text.data() + text.size()) return std::nullopt;
  return number;
}

Elements::const_iterator nextNamed(std::string_view name, Elements::const_iterator from, Elements::const_iterator end) {
  return std::find_if(from, end, [name](const auto& each) { return each->name == name; });
}

XML::Accessor noSuchIndex(int index) {
  return XML::Accessor(XMLError::accessError("cannot access Index: " + std::to_string(index)));
}

}  // namespace

XML::Accessor::Accessor(std::shared_ptr<Element> element) : value_(std::move(element)) {}
XML::Accessor::Accessor(std::vector<std::shared_ptr<Element>> elements) : value_(std::move(elements)) {}
XML::Accessor::Accessor(XMLError error) : value_(std::move(error)) {}

XML::Accessor XML::Accessor::operator[](int index) const {
  if (std::holds_alternative<XMLError>(value_)) return *this;
  if (const auto* several = std::get_if<Elements>(&value_)) {
    if (index < 0 || index >= count()) return noSuchIndex(index);
    return Accessor((*several)[static_cast<std::size_t>(index)]);
  }
  return index == 0 ? *this : noSuchIndex(index);
}

XML::Accessor XML::Accessor::operator[](std::string_view name) const {
  if (std::holds_alternative<XMLError>(value_)) return *this;
  const auto* single = std::get_if<std::shared_ptr<Element>>(&value_);
  if (!single) {
    return Accessor(XMLError::accessError("cannot access " + std::string(name) + ", because of multiple elements"));
  }
  const Elements& children = (*single)->childElements;
  const auto first = nextNamed(name, children.begin(), children.end());
  if (first == children.end()) return Accessor(XMLError::accessError(std::string(name) + " not found."));
  auto next = nextNamed(name, first + 1, children.end());
  if (next == children.end()) return Accessor(*first);
  Elements several;
  several.reserve(static_cast<std::size_t>(children.end() - next) + 1);
  several.push_back(*first);
  for (; next != children.end(); next = nextNamed(name, next + 1, children.end())) several.push_back(*next);
  return Accessor(std::move(several));
}

XML::Accessor XML::Accessor::operator[](std::initializer_list<Key> path) const {
  return (*this)[std::span<const Key>(path.begin(), path.size())];
}

XML::Accessor XML::Accessor::operator[](std::span<const Key> path) const {
  Accessor reached = *this;
  for (const Key& key : path) {
    if (std::holds_alternative<XMLError>(reached.value_)) break;
    reached = std::visit([&reached](auto step) { return reached[step]; }, key);
  }
  return reached;
}

std::shared_ptr<XML::Element> XML::Accessor::element() const {
  const auto* single = std::get_if<std::shared_ptr<Element>>(&value_);
  return single ? *single : nullptr;
}

const std::string* XML::Accessor::textOfElement() const {
  const auto* single = std::get_if<std::shared_ptr<Element>>(&value_);
  return single && (*single)->text ? &*(*single)->text : nullptr;
}

std::optional<std::string> XML::Accessor::name() const {
  const auto* single = std::get_if<std::shared_ptr<Element>>(&value_);
  return single ? std::optional((*single)->name) : std::nullopt;
}

std::optional<std::string> XML::Accessor::text() const {
  const std::string* text = textOfElement();
  return text ? std::optional(*text) : std::nullopt;
}

std::optional<bool> XML::Accessor::boolValue() const {
  const std::string* text = textOfElement();
  return text ? std::optional(*text == "true") : std::nullopt;
}

std::optional<NSURL> XML::Accessor::url() const {
  const std::string* text = textOfElement();
  return text ? NSURL::URLWithString(*text) : std::nullopt;
}

std::optional<std::int64_t> XML::Accessor::intValue() const {
  const std::string* text = textOfElement();
  return text ? parsed<std::int64_t>(*text) : std::nullopt;
}

std::optional<double> XML::Accessor::doubleValue() const {
  const std::string* text = textOfElement();
  return text ? parsed<double>(*text) : std::nullopt;
}

const XML::Attributes& XML::Accessor::attributes() const {
  static const Attributes none;
  const auto* single = std::get_if<std::shared_ptr<Element>>(&value_);
  return single ? (*single)->attributes : none;
}

std::span<const std::shared_ptr<XML::Element>> XML::Accessor::elements() const {
  if (const auto* several = std::get_if<Elements>(&value_)) return *several;
  if (const auto* single = std::get_if<std::shared_ptr<Element>>(&value_)) return {single, 1};
  return {};
}

std::optional<std::vector<std::shared_ptr<XML::Element>>> XML::Accessor::all() const {
  if (std::holds_alternative<XMLError>(value_)) return std::nullopt;
  return Elements(elements().begin(), elements().end());
}

std::optional<std::vector<std::string>> XML::Accessor::names() const {
  if (std::holds_alternative<XMLError>(value_)) return std::nullopt;
  return map([](const Accessor& each) { return *each.name(); });
}

int XML::Accessor::count() const {
  return static_cast<int>(elements().size());
}

std::optional<XMLError> XML::Accessor::error() const {
  const auto* error = std::get_if<XMLError>(&value_);
  return error ? std::optional(*error) : std::nullopt;
}

XML::Accessor XML::Accessor::first() const {
  const auto* several = std::get_if<Elements>(&value_);
  if (!several) return *this;
  if (several->empty()) return Accessor(XMLError::accessError("cannot access first element"));
  return Accessor(several->front());
}

XML::Accessor XML::Accessor::last() const {
  const auto* several = std::get_if<Elements>(&value_);
  if (!several) return *this;
  if (several->empty()) return Accessor(XMLError::accessError("cannot access last element"));
  return Accessor(several->back());
}

std::string XML::Accessor::description() const {
  if (const auto* error = std::get_if<XMLError>(&value_)) return error->what();
  if (const auto* single = std::get_if<std::shared_ptr<Element>>(&value_)) return '"' + (*single)->path() + '"';
  std::string paths;
  for (const auto& element : elements()) paths += (paths.empty() ? "" : ",\n ") + element->path();
  return "[ " + paths + " ]";
}
