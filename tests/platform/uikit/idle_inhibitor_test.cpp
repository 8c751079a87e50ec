#include <QDBusConnection>
#include <QProcess>

#include "platform/uikit/UIApplication.h"
#include "tests/support/ScreenTest.h"

using testing::ElementsAre;

// A session's screen saver service that writes down what it is asked.
class ScreenSaverService : public QObject {
  Q_OBJECT
  Q_CLASSINFO("D-Bus Interface", "org.freedesktop.ScreenSaver")

 public:
  std::vector<std::string> calls;

 public Q_SLOTS:
  uint Inhibit(const QString&, const QString& reason) {
    calls.push_back("inhibit: " + reason.toStdString());
    return 4711;
  }
  void UnInhibit(uint cookie) { calls.push_back("uninhibit " + std::to_string(cookie)); }
};

namespace {

class IdleInhibitorTest : public testing::Test {
 protected:
  void SetUp() override {
    bus_.start("dbus-daemon", {"--session", "--nofork", "--print-address"});
    ASSERT_TRUE(bus_.waitForStarted()) << "there is no dbus-daemon";
    ASSERT_TRUE(bus_.waitForReadyRead());
    const QByteArray address = bus_.readLine().trimmed();
    qputenv("DBUS_SESSION_BUS_ADDRESS", address);
    auto connection = QDBusConnection::connectToBus(address, "service");
    ASSERT_TRUE(connection.registerObject("/org/freedesktop/ScreenSaver", &service, QDBusConnection::ExportAllSlots));
    ASSERT_TRUE(connection.registerService("org.freedesktop.ScreenSaver"));
  }
  void TearDown() override {
    QDBusConnection::disconnectFromBus("service");
    bus_.kill();
    bus_.waitForFinished();
  }
  std::vector<std::string> taken(std::size_t count) {
    EXPECT_TRUE(runEventsUntil([&] { return service.calls.size() >= count; }));
    return std::exchange(service.calls, {});
  }

  QGuiApplication& application = screenApplication();
  VirtualRunLoop loop;
  ScreenSaverService service;

 private:
  QProcess bus_;
};

TEST_F(IdleInhibitorTest, asksTheSessionsServiceAndTakesItBack) {
  auto& app = UIApplication::sharedApplication();
  for (int time = 0; time < 2; ++time) app.setIdleTimerDisabled(true);
  EXPECT_THAT(taken(1), ElementsAre("inhibit: Playing video"));
  runEventsUntil([turns = 5]() mutable { return turns-- == 0; });  // the answer
  app.setIdleTimerDisabled(false);
  EXPECT_THAT(taken(1), ElementsAre("uninhibit 4711"));

  app.setIdleTimerDisabled(true);
  app.setIdleTimerDisabled(false);
  EXPECT_THAT(taken(2), ElementsAre("inhibit: Playing video", "uninhibit 4711"))
      << "taken back as soon as the answer is there";
}

}  // namespace

#include "idle_inhibitor_test.moc"
