#include "platform/avkit/ControlsView.h"

#include <QCoreApplication>
#include <QQmlEngine>
#include <utility>

#include "platform/avkit/FadingView.h"
#include "platform/avkit/PaintedItems.h"
#include "platform/uikit/UINib.h"
#include "platform/uikit/values/UIFont.h"

// Outside every namespace, as Qt asks; it also makes the linker take the resources out of the archive.
static void takeResources() {
  Q_INIT_RESOURCE(avkit);
}

namespace {

void registerTypes() {
  takeResources();
  qmlRegisterType<ControlsView>("AVKit", 1, 0, "ControlsView");
  qmlRegisterType<FadingView>("AVKit", 1, 0, "Fading");
  qmlRegisterType<ArtworkItem>("AVKit", 1, 0, "Artwork");
  qmlRegisterType<ScrimItem>("AVKit", 1, 0, "Scrim");
}

}  // namespace

ControlsView::ControlsView(QQuickItem* parent) : UIView(parent) {}

std::shared_ptr<ControlsView> ControlsView::make() {
  if (QCoreApplication::instance()) {
    static const bool registered = (registerTypes(), true);
    static_cast<void>(registered);
    if (auto view = std::dynamic_pointer_cast<ControlsView>(UINib::instantiate("AVKit/PlayerControls"))) return view;
  }
  return std::make_shared<ControlsView>();
}

QString ControlsView::fontFamily() {
  return QString::fromStdString(UIFont::systemFontOfSize(1).familyName);
}

void ControlsView::setGround(std::shared_ptr<UIView> ground) {
  ground_ = std::move(ground);
  Q_EMIT groundChanged();
}

void ControlsView::setObscuredHeight(double height) {
  if (height == obscuredHeight_) return;
  obscuredHeight_ = height;
  if (obscuredHeightChanged_) obscuredHeightChanged_();
}
