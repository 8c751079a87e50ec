#pragma once

#include <memory>

#include "platform/Export.h"
#include "platform/uikit/UIView.h"

// Small helpers around constraints, for overlays. `view` and `superview` must not be nil. Main thread.

// Adds `subview` and pins it to all four edges with the same inset, `offset` points. Left and right are used, not
// leading and trailing: the layout never mirrors. A superview without a size of its own takes the subview's plus the
// insets.
YMR_API void addSubViewWithAutolayout(const std::shared_ptr<UIView>& superview, const std::shared_ptr<UIView>& subview,
                                      float offset);
// Without an inset.
YMR_API void addSubViewWithAutolayout(const std::shared_ptr<UIView>& superview, const std::shared_ptr<UIView>& subview);

// Hides the view, lets it clip, and sets its own first height constraint, if it has one, to 0. Constraints on it that
// outer views hold are left alone.
YMR_API void hideViewAndSetHeightConstraintsZero(const std::shared_ptr<UIView>& view);

// The first of the view's own constraints on a height; nil when there is none.
YMR_API std::shared_ptr<NSLayoutConstraint> heightConstraint(const std::shared_ptr<UIView>& view);
