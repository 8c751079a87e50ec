#pragma once

#include <cstdint>
#include <optional>
#include <string_view>
#include <utility>
#include <vector>

// The small words of a playlist's lines. Views are of the text that was given. Any thread.
namespace HLSTags {

// Takes the first line off `text`, without its end and without white space around it.
std::string_view takeLine(std::string_view& text);
// What follows "name:", or nothing after "name" alone; nil for another tag.
std::optional<std::string_view> valueOf(std::string_view line, std::string_view name);

std::optional<std::uint64_t> number(std::string_view text);
// Decimal seconds as nanoseconds; nil below zero and beyond a century.
std::optional<std::int64_t> seconds(std::string_view text);

// NAME=value,NAME="value",…
class Attributes {
 public:
  explicit Attributes(std::string_view list);
  // Without quotes; empty when there is none.
  std::string_view value(std::string_view name) const;
  bool isYes(std::string_view name) const { return value(name) == "YES"; }

 private:
  std::vector<std::pair<std::string_view, std::string_view>> all_;
};

}  // namespace HLSTags
