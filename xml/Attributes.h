#pragma once

#include <algorithm>
#include <cstddef>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "xml/TreeMemory.h"
#include "xml/XML.h"

// The attributes of an element: a map from name to value, in the order of the document. An element has few of them and
// a document has many such maps, so that they lie in one piece and a look-up is a scan.
class XML::Attributes {
 public:
  using value_type = std::pair<std::string, std::string>;
  using const_iterator = std::vector<value_type, XMLTreeAllocator<value_type>>::const_iterator;

  const_iterator begin() const { return pairs_.begin(); }
  const_iterator end() const { return pairs_.end(); }
  std::size_t size() const { return pairs_.size(); }
  bool empty() const { return pairs_.empty(); }

  const_iterator find(std::string_view name) const {
    return std::find_if(begin(), end(), [name](const value_type& each) { return each.first == name; });
  }
  bool contains(std::string_view name) const { return find(name) != end(); }
  // Throws std::out_of_range without that name.
  const std::string& at(std::string_view name) const {
    const auto found = find(name);
    if (found == end()) throw std::out_of_range("no attribute " + std::string(name));
    return found->second;
  }

  // The value to read or change; empty for a name that is new.
  std::string& operator[](std::string_view name) {
    const auto found = find(name);
    if (found != end()) return pairs_[static_cast<std::size_t>(found - begin())].second;
    return append(std::string(name), {});
  }
  void reserve(std::size_t count) { pairs_.reserve(count); }
  // For a name that is known to be new.
  std::string& append(std::string name, std::string value) {
    return pairs_.emplace_back(std::move(name), std::move(value)).second;
  }

  friend bool operator==(const Attributes&, const Attributes&) = default;

 private:
  std::vector<value_type, XMLTreeAllocator<value_type>> pairs_;
};
