#pragma once

#include <memory>
#include <string_view>

#include "platform/Export.h"

class UIView;

// Views from an interface file: QML in the library's resources, below ":/ymr/interface/".
//
// Files import "UIKit 1.0", which has UIView and UIActivityIndicatorView, and what libraries add with Qt's
// qmlRegisterType(). Main thread.
class YMR_API UINib {
 public:
  // The file's first object, as it is made by NAME.qml; nil when there is no such file, it does not compile, or its
  // object is not a view (Qt's message goes to the log). All views of the file are held by their superviews from then
  // on.
  static std::shared_ptr<UIView> instantiate(std::string_view name);
};
