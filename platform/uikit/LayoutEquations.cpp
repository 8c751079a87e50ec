#include "platform/uikit/LayoutEquations.h"

#include <cmath>

namespace {

// Coordinates are points of a screen: what differs by less is equal.
constexpr double smallestCoefficient = 1e-9;
constexpr double smallestDifference = 1e-6;

}  // namespace

void LayoutEquations::subtract(Row& from, const Row& row, double factor) {
  for (std::size_t i = 0; i < from.size(); ++i) from[i] -= factor * row[i];
}

bool LayoutEquations::add(const Terms& terms, double constant) {
  Row row(width_, 0.0);
  for (const auto& [variable, coefficient] : terms) row[variable] += coefficient;
  row.back() = constant;
  for (std::size_t variable = 0; variable + 1 < width_; ++variable) {
    if (owner_[variable] != none && row[variable] != 0) subtract(row, rows_[owner_[variable]], row[variable]);
  }

  std::size_t own = 0;
  for (std::size_t variable = 0; variable + 1 < width_; ++variable) {
    if (std::abs(row[variable]) > std::abs(row[own])) own = variable;
  }
  if (width_ == 1 || std::abs(row[own]) < smallestCoefficient) return std::abs(row.back()) < smallestDifference;

  const double coefficient = row[own];
  for (double& value : row) value /= coefficient;
  for (Row& other : rows_) {
    if (other[own] != 0) subtract(other, row, other[own]);
  }
  owner_[own] = rows_.size();
  ownOf_.push_back(own);
  rows_.push_back(std::move(row));
  return true;
}

std::vector<double> LayoutEquations::solution() const {
  std::vector<double> values(owner_.size(), 0.0);
  for (std::size_t i = 0; i < rows_.size(); ++i) values[ownOf_[i]] = rows_[i].back();
  return values;
}
