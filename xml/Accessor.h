#pragma once

#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <iterator>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>
#include <variant>
#include <vector>

#include "platform/foundation/NSURL.h"
#include "xml/Element.h"
#include "xml/XMLError.h"

// One element, several, or a failure. Steps by name and by index can be chained without looking: the first step that
// fails gives a failure, which every later step passes on unchanged, and whose values are nil.
//
//   for (const auto url : root[{"VAST", "Ad", 0, "InLine", "Impression"}]) use(url.text());
// NOLINTNEXTLINE(bugprone-exception-escape): moving one of its kinds may allocate
class YMR_API XML::Accessor {
 public:
  // A position among several elements, or a child's name. Names are views: they must outlive the call.
  using Key = std::variant<int, std::string_view>;
  class Iterator;

  explicit Accessor(std::shared_ptr<Element> element);                // a single element
  explicit Accessor(std::vector<std::shared_ptr<Element>> elements);  // a sequence, of any length
  explicit Accessor(XMLError error);                                  // a failure

  // On a single element 0 is the element itself; on a sequence the element at that position. Else a failure.
  Accessor operator[](int index) const;
  // On a single element the children of that name: one gives a single element, more a sequence, none a failure. On a
  // sequence a failure: the caller picks one first.
  Accessor operator[](std::string_view name) const;
  // The keys from left to right; without keys, this accessor.
  Accessor operator[](std::initializer_list<Key> path) const;
  Accessor operator[](std::span<const Key> path) const;

  // Values of a single element; nil for a sequence and for a failure. All but the name are nil without text too.
  std::optional<std::string> name() const;
  std::optional<std::string> text() const;
  std::optional<bool> boolValue() const;         // whether the text is exactly "true"
  std::optional<NSURL> url() const;              // nil when the text is no URL
  std::optional<std::int64_t> intValue() const;  // base 10 with an optional sign and nothing around it, else nil
  std::optional<double> doubleValue() const;     // likewise a decimal fraction, exponent, "inf" or "nan"
  const Attributes& attributes() const;          // empty for a sequence and for a failure
  std::shared_ptr<Element> element() const;

  // The elements of a single element or a sequence; nil for a failure.
  std::optional<std::vector<std::shared_ptr<Element>>> all() const;
  std::optional<std::vector<std::string>> names() const;
  // The same without copying: empty for a failure, valid as long as this accessor.
  std::span<const std::shared_ptr<Element>> elements() const;
  int count() const;

  std::optional<XMLError> error() const;

  // A single element's is itself, an empty sequence's a failure, a failure's itself.
  Accessor first() const;
  Accessor last() const;

  // Each element as an accessor, in order; nothing for a failure. Valid as long as this accessor.
  Iterator begin() const;
  Iterator end() const;
  // f(accessor) of each element.
  template <class F>
  auto map(F&& f) const;
  // Likewise, with f returning an optional: those that are nil are left out.
  template <class F>
  auto mapWithSqueezeNil(F&& f) const;

  // A single element's path in quotes; a sequence's paths in brackets, one a line; a failure's error.
  std::string description() const;

 private:
  const std::string* textOfElement() const;

  std::variant<std::shared_ptr<Element>, std::vector<std::shared_ptr<Element>>, XMLError> value_;
};

class YMR_API XML::Accessor::Iterator {
 public:
  using iterator_category = std::input_iterator_tag;
  using value_type = Accessor;
  using difference_type = std::ptrdiff_t;
  using pointer = void;
  using reference = Accessor;

  explicit Iterator(const std::shared_ptr<Element>* position = nullptr) : position_(position) {}
  Accessor operator*() const { return Accessor(*position_); }
  Iterator& operator++() {
    ++position_;
    return *this;
  }
  Iterator operator++(int) { return Iterator(position_++); }
  friend bool operator==(Iterator left, Iterator right) { return left.position_ == right.position_; }

 private:
  const std::shared_ptr<Element>* position_;
};

inline XML::Accessor::Iterator XML::Accessor::begin() const {
  return Iterator(elements().data());
}
inline XML::Accessor::Iterator XML::Accessor::end() const {
  return Iterator(elements().data() + elements().size());
}

template <class F>
auto XML::Accessor::map(F&& f) const {
  std::vector<std::decay_t<std::invoke_result_t<F&, Accessor>>> results;
  results.reserve(elements().size());
  for (const auto& element : elements()) results.push_back(f(Accessor(element)));
  return results;
}

template <class F>
auto XML::Accessor::mapWithSqueezeNil(F&& f) const {
  std::vector<typename std::decay_t<std::invoke_result_t<F&, Accessor>>::value_type> results;
  for (const auto& element : elements()) {
    if (auto result = f(Accessor(element))) results.push_back(*std::move(result));
  }
  return results;
}
