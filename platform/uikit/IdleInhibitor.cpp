#include "platform/uikit/IdleInhibitor.h"

#include <QCoreApplication>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusReply>
#include <QGuiApplication>
#include <chrono>
#include <optional>
#include <utility>

#if QT_CONFIG(xcb)
#include <xcb/xcb.h>
#endif

namespace {

// Shorter than any screen saver's shortest delay of a minute.
constexpr RunLoop::Duration reminder = std::chrono::seconds(30);

QDBusMessage screenSaverCall(const char* method) {
  return QDBusMessage::createMethodCall("org.freedesktop.ScreenSaver", "/org/freedesktop/ScreenSaver",
                                        "org.freedesktop.ScreenSaver", method);
}

void remindServer() {
#if QT_CONFIG(xcb)
  const auto* x11 = qGuiApp ? qGuiApp->nativeInterface<QNativeInterface::QX11Application>() : nullptr;
  // Qt's offscreen platform offers the interface, too, but has no server.
  auto* connection = x11 ? x11->connection() : nullptr;
  if (!connection) return;
  xcb_force_screen_saver(connection, XCB_SCREEN_SAVER_RESET);
  xcb_flush(connection);
#endif
}

}  // namespace

// What the service has been asked for. The answer, a cookie, may come after it is no longer wanted.
struct IdleInhibitor::Inhibition {
  std::optional<quint32> cookie;
  bool wanted = true;

  void end() {
    wanted = false;
    if (!cookie) return;
    auto call = screenSaverCall("UnInhibit");
    call << *std::exchange(cookie, std::nullopt);
    QDBusConnection::sessionBus().send(call);
  }
};

IdleInhibitor::IdleInhibitor() : inhibition_(std::make_shared<Inhibition>()) {
  remindServer();
  timer_ = NSTimer::scheduledTimerWithTimeInterval(reminder, true, remindServer);

  if (!qEnvironmentVariableIsSet("DBUS_SESSION_BUS_ADDRESS") || !QDBusConnection::sessionBus().isConnected()) return;
  auto call = screenSaverCall("Inhibit");
  call << QCoreApplication::applicationName() << QStringLiteral("Playing video");
  auto* watcher = new QDBusPendingCallWatcher(QDBusConnection::sessionBus().asyncCall(call));
  QObject::connect(watcher, &QDBusPendingCallWatcher::finished, [inhibition = inhibition_, watcher] {
    const QDBusReply<quint32> reply = *watcher;
    watcher->deleteLater();
    if (!reply.isValid()) return;
    inhibition->cookie = reply.value();
    if (!inhibition->wanted) inhibition->end();
  });
}

IdleInhibitor::~IdleInhibitor() {
  inhibition_->end();
}
