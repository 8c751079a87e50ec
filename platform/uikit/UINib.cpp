#include "platform/uikit/UINib.h"

#include <QFile>
#include <QQmlComponent>
#include <QQmlEngine>

#include "platform/foundation/MainThread.h"
#include "platform/uikit/UIActivityIndicatorView.h"
#include "platform/uikit/UILabel.h"
#include "platform/uikit/UIView.h"

namespace {

// Lives as long as a view that it made.
std::shared_ptr<QQmlEngine> sharedEngine() {
  static std::weak_ptr<QQmlEngine> shared;
  auto engine = shared.lock();
  if (!engine) {
    qmlRegisterType<UIView>("UIKit", 1, 0, "UIView");
    qmlRegisterType<UILabel>("UIKit", 1, 0, "UILabel");
    qmlRegisterType<UIActivityIndicatorView>("UIKit", 1, 0, "UIActivityIndicatorView");
    engine = std::make_shared<QQmlEngine>();
    shared = engine;
  }
  return engine;
}

}  // namespace

std::shared_ptr<UIView> UINib::instantiate(std::string_view name) {
  YMR_ASSERT_MAIN_THREAD();
  const QString path =
      QStringLiteral(":/ymr/interface/%1.qml").arg(QString::fromUtf8(name.data(), qsizetype(name.size())));
  if (!QFile::exists(path)) return nullptr;
  const auto engine = sharedEngine();
  QQmlComponent component(engine.get(), QUrl(QStringLiteral("qrc") + path));
  std::unique_ptr<QObject> object(component.create());
  if (component.isError()) qWarning("%s", qPrintable(component.errorString()));
  auto* view = qobject_cast<UIView*>(object.get());
  if (!view) return nullptr;
  object.release();
  return std::shared_ptr<UIView>(view, [engine](UIView* made) { delete made; });
}
