#pragma once

#include <optional>
#include <vector>

// Filling records from accessors: an absent value changes nothing.

template <class T, class U>
void assignIfPresent(T& variable, const std::optional<U>& value) {
  if (value) variable = *value;
}

template <class T>
void operator<<=(std::vector<T>& list, const std::optional<T>& value) {
  if (value) list.push_back(*value);
}
