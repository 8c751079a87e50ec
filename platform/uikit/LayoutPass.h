#pragma once

#include <unordered_map>
#include <vector>

#include "platform/uikit/LayoutEquations.h"
#include "platform/uikit/UIView.h"

// One solving of all constraints in a tree of views: gives every view that does not keep its frame the frame that its
// constraints ask for. Views that no constraint mentions are left alone. Main thread; lives for one call.
class LayoutPass {
 public:
  explicit LayoutPass(UIView& root) : root_(root) {}
  void run();

 private:
  // Variables of a view: left, top (in the root's coordinates), width, height.
  enum Edge { left, top, width, height, edges };
  using Terms = LayoutEquations::Terms;
  struct Equation {
    Terms terms;
    double constant;
  };

  void collect(UIView& view);
  void involve(UIView& view);
  std::size_t variable(const UIView& view, Edge edge) const { return involved_.at(&view) * edges + edge; }
  void addTerms(Terms& terms, const UIView& view, NSLayoutAttribute attribute, double factor,
                const UIView& origin) const;
  Equation equationOf(const NSLayoutConstraint& constraint) const;
  // `sizes`: what the content of each view asks for.
  std::vector<double> solve(const std::vector<CGSize>& sizes) const;
  void apply(const std::vector<double>& solution) const;

  UIView& root_;
  std::vector<UIView*> views_;  // those that constraints mention, and the views around them; outer ones first
  std::unordered_map<const UIView*, std::size_t> involved_;
  std::vector<NSLayoutConstraint*> constraints_;
  std::vector<Equation> equations_;
};
