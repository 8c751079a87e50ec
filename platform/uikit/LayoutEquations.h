#pragma once

#include <cstddef>
#include <utility>
#include <vector>

// A set of linear equations that grows by one at a time and always has a solution: an equation that contradicts the
// ones before it is refused. So the order in which equations are added is the order in which they count.
class LayoutEquations {
 public:
  // Coefficient times variable, summed up.
  using Terms = std::vector<std::pair<std::size_t, double>>;

  explicit LayoutEquations(std::size_t variables) : owner_(variables, none), width_(variables + 1) {}

  // terms = constant. False, and nothing changes, when it contradicts what is there.
  bool add(const Terms& terms, double constant);
  // What the equations say about each variable; 0 for one that they leave open.
  std::vector<double> solution() const;

 private:
  static constexpr std::size_t none = static_cast<std::size_t>(-1);
  using Row = std::vector<double>;  // a coefficient for each variable, then the constant

  static void subtract(Row& from, const Row& row, double factor);

  std::vector<Row> rows_;           // each has one variable of its own, which no other row mentions
  std::vector<std::size_t> owner_;  // the row whose own variable this is
  std::vector<std::size_t> ownOf_;  // the own variable of each row
  const std::size_t width_;
};
