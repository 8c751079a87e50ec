#include "platform/uikit/UIBarButtonItem.h"

#include <utility>

#include "platform/uikit/UIView.h"

UIBarButtonItem::UIBarButtonItem(UIBarButtonSystemItem item, Action action)
    : systemItem_(item), action_(std::move(action)) {}

UIBarButtonItem::UIBarButtonItem(std::shared_ptr<UIView> customView)
    : systemItem_(UIBarButtonSystemItemFixedSpace), customView_(std::move(customView)) {}

UIBarButtonItem::~UIBarButtonItem() = default;
