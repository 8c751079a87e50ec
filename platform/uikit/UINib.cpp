#include "platform/uikit/UINib.h"

#include <QCoreApplication>
#include <QFile>
#include <QQmlComponent>
#include <QQmlEngine>
#include <mutex>

#include "platform/foundation/MainThread.h"
#include "platform/uikit/UIActivityIndicatorView.h"
#include "platform/uikit/UIView.h"

namespace {

void registerTypes() {
  qmlRegisterType<UIView>("UIKit", 1, 0, "UIView");
  qmlRegisterType<UIActivityIndicatorView>("UIKit", 1, 0, "UIActivityIndicatorView");
}

// Lives as long as the application, or a view that it made. Types are registered once: what Qt keeps of a registration
// it never gives back.
std::shared_ptr<QQmlEngine> sharedEngine() {
  static std::shared_ptr<QQmlEngine> shared;
  if (!shared) {
    static std::once_flag registered;
    std::call_once(registered, registerTypes);
    shared = std::make_shared<QQmlEngine>();
    qAddPostRoutine([] { shared = nullptr; });
  }
  return shared;
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
  static_cast<void>(object.release());
  return std::shared_ptr<UIView>(view, [engine](UIView* made) { delete made; });
}
