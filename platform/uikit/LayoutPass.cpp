#include "platform/uikit/LayoutPass.h"

#include <QQuickWindow>
#include <algorithm>
#include <cmath>

namespace {

UIView* superviewOf(const UIView& view) {
  return qobject_cast<UIView*>(view.parentItem());
}

bool holds(const UIView& outer, const UIView* view) {
  while (view && view != &outer) view = superviewOf(*view);
  return view != nullptr;
}

}  // namespace

void LayoutPass::run() {
  collect(root_);
  if (constraints_.empty()) return;
  for (const auto* constraint : constraints_) {
    involve(*constraint->firstItem());
    if (const auto second = constraint->secondItem()) involve(*second);
  }
  for (const auto* constraint : constraints_) equations_.push_back(equationOf(*constraint));

  std::vector<CGSize> sizes;
  for (const UIView* view : views_) sizes.push_back(view->intrinsicContentSize());
  auto solution = solve(sizes);
  bool wraps = false;
  for (std::size_t i = 0; i < views_.size(); ++i) {
    const double given = solution[variable(*views_[i], width)];
    if (sizes[i].height < 0 || given == sizes[i].width) continue;
    const double wrapped = views_[i]->intrinsicHeightForWidth(given);
    wraps |= wrapped != sizes[i].height;
    sizes[i].height = wrapped;
  }
  if (wraps) solution = solve(sizes);
  apply(solution);
}

void LayoutPass::collect(UIView& view) {
  for (const auto& constraint : view.constraints()) {
    const auto first = constraint->firstItem();
    const auto second = constraint->secondItem();
    const bool needsSecond = constraint->secondAttribute() != NSLayoutAttributeNotAnAttribute;
    if (!first || !holds(root_, first.get()) || needsSecond != (second && holds(root_, second.get()))) continue;
    constraints_.push_back(constraint.get());
  }
  for (const auto& subview : view.subviews()) collect(*subview);
}

void LayoutPass::involve(UIView& view) {
  if (involved_.contains(&view)) return;
  if (&view != &root_) involve(*superviewOf(view));
  involved_.emplace(&view, views_.size());
  views_.push_back(&view);
}

void LayoutPass::addTerms(Terms& terms, const UIView& view, NSLayoutAttribute attribute, double factor,
                          const UIView& origin) const {
  const auto add = [&](Edge position, Edge size, double share) {
    terms.emplace_back(variable(view, position), factor);
    terms.emplace_back(variable(origin, position), -factor);
    if (share != 0) terms.emplace_back(variable(view, size), share * factor);
  };
  switch (attribute) {
    case NSLayoutAttributeLeft:
      return add(left, width, 0);
    case NSLayoutAttributeCenterX:
      return add(left, width, 0.5);
    case NSLayoutAttributeRight:
      return add(left, width, 1);
    case NSLayoutAttributeTop:
      return add(top, height, 0);
    case NSLayoutAttributeCenterY:
      return add(top, height, 0.5);
    case NSLayoutAttributeBottom:
      return add(top, height, 1);
    case NSLayoutAttributeWidth:
      terms.emplace_back(variable(view, width), factor);
      return;
    case NSLayoutAttributeHeight:
      terms.emplace_back(variable(view, height), factor);
      return;
    case NSLayoutAttributeNotAnAttribute:
      return;
  }
}

// Positions count from the nearest view that holds both sides, so that a multiplier means a share of it.
LayoutPass::Equation LayoutPass::equationOf(const NSLayoutConstraint& constraint) const {
  const auto first = constraint.firstItem();
  const auto second = constraint.secondItem();
  const UIView* origin = second ? first.get() : superviewOf(*first);
  while (second && !holds(*origin, second.get())) origin = superviewOf(*origin);
  if (!origin || !involved_.contains(origin)) origin = &root_;

  Equation equation{{}, constraint.constant()};
  addTerms(equation.terms, *first, constraint.firstAttribute(), 1, *origin);
  if (second) addTerms(equation.terms, *second, constraint.secondAttribute(), -constraint.multiplier(), *origin);
  return equation;
}

std::vector<double> LayoutPass::solve(const std::vector<CGSize>& sizes) const {
  LayoutEquations equations(views_.size() * edges);
  equations.add({{variable(root_, left), 1}}, 0);
  equations.add({{variable(root_, top), 1}}, 0);
  for (const UIView* view : views_) {
    if (!view->translatesAutoresizingMaskIntoConstraints()) continue;
    const CGRect frame = view->frame();
    equations.add({{variable(*view, width), 1}}, frame.size.width);
    equations.add({{variable(*view, height), 1}}, frame.size.height);
    if (view == &root_) continue;
    const UIView& holder = *superviewOf(*view);
    equations.add({{variable(*view, left), 1}, {variable(holder, left), -1}}, frame.origin.x);
    equations.add({{variable(*view, top), 1}, {variable(holder, top), -1}}, frame.origin.y);
  }
  for (const Equation& equation : equations_) equations.add(equation.terms, equation.constant);
  for (std::size_t i = 0; i < views_.size(); ++i) {
    if (sizes[i].width >= 0) equations.add({{variable(*views_[i], width), 1}}, sizes[i].width);
    if (sizes[i].height >= 0) equations.add({{variable(*views_[i], height), 1}}, sizes[i].height);
  }
  for (const UIView* view : views_) {
    equations.add({{variable(*view, width), 1}}, 0);
    equations.add({{variable(*view, height), 1}}, 0);
    if (view == &root_) continue;
    const UIView& holder = *superviewOf(*view);
    equations.add({{variable(*view, left), 1}, {variable(holder, left), -1}}, 0);
    equations.add({{variable(*view, top), 1}, {variable(holder, top), -1}}, 0);
  }
  return equations.solution();
}

// Edges lie on whole pixels, so that text and lines stay sharp.
void LayoutPass::apply(const std::vector<double>& solution) const {
  const double density = root_.window() ? root_.window()->effectiveDevicePixelRatio() : 1;
  const auto snapped = [density](double value) { return std::round(value * density) / density; };
  for (UIView* view : views_) {
    if (view->translatesAutoresizingMaskIntoConstraints()) continue;
    const double x = solution[variable(*view, left)];
    const double y = solution[variable(*view, top)];
    const double right = snapped(x + std::max(0.0, solution[variable(*view, width)]));
    const double bottom = snapped(y + std::max(0.0, solution[variable(*view, height)]));
    CGRect frame{{snapped(x), snapped(y)}, {right - snapped(x), bottom - snapped(y)}};
    if (view == &root_) {
      frame.origin = view->frame().origin;
    } else {
      const UIView& holder = *superviewOf(*view);
      frame.origin.x -= snapped(solution[variable(holder, left)]);
      frame.origin.y -= snapped(solution[variable(holder, top)]);
    }
    view->setFrame(frame);
  }
}
