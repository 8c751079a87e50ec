#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

// The first bytes of a resource that its server names by nothing, no length and no tag. A second body from such a
// server is the same film once more, or what a live stream sends by now: it is told by how it begins. A plain value.
class ResourceOpening {
 public:
  static constexpr std::size_t openingLimit = 16 * 1024;

  // Bytes of the resource at a place, in their order; what is known or lies further back is of no interest.
  void note(std::uint64_t place, std::span<const std::byte> bytes) {
    if (place != bytes_.size()) return;
    const std::size_t count = std::min(bytes.size(), openingLimit - bytes_.size());
    bytes_.insert(bytes_.end(), bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(count));
  }
  // Whether another resource has these bytes at the place; all before it were the same.
  bool isOther(std::uint64_t place, std::span<const std::byte> bytes) const {
    const auto known = std::span(bytes_).subspan(std::min<std::uint64_t>(place, bytes_.size()));
    const std::size_t count = std::min(bytes.size(), known.size());
    return !std::ranges::equal(bytes.first(count), known.first(count));
  }
  // Those before a place, as many as are known.
  std::span<const std::byte> before(std::uint64_t place) const {
    return std::span(bytes_).first(std::min<std::uint64_t>(place, bytes_.size()));
  }

 private:
  std::vector<std::byte> bytes_;
};
