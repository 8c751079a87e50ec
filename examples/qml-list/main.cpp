// A QML application that plays films over its own window:
//
//   qml-list [--times N] FILM...
//
// With --times it opens the first film so often by itself, leaves it as soon as it plays, and ends: 0 when it played
// each time, 1 otherwise.
#include <platform/uikit/UIWindow.h>
#include <player/YMRVideoPlayer.h>

#include <QCommandLineParser>
#include <QGuiApplication>
#include <QQmlContext>
#include <QQuickView>
#include <cstdio>

// The films, for the list; and the player of the one that plays.
class Films final : public QObject {
  Q_OBJECT
  Q_PROPERTY(QStringList names MEMBER names_ CONSTANT)
  Q_PROPERTY(bool playing READ isPlaying NOTIFY changed)
  Q_PROPERTY(QString failure MEMBER failure_ NOTIFY changed)

 public:
  Films(const QStringList& names, int times) : names_(names), times_(times) {}

  // Players are laid over `window`.
  void setWindow(QQuickWindow& window) {
    host_ = UIViewControllerInWindow(window);
    if (times_ > 0) play(0);
  }

  // One player for each film: a player is done when it has been dismissed.
  Q_INVOKABLE void play(int index) {
    if (player_ || index < 0 || index >= names_.size()) return;
    failure_.clear();
    player_ = std::make_unique<YMRVideoPlayer>();
    delegate_ = std::make_shared<YMRVideoPlayerDelegate>();
    delegate_->videoOnTime = [this](double) {  // videoOnPlay comes before it is known whether it can
      if (times_ > 0) player_->dismiss();
    };
    delegate_->videoOnError = [this](const NSError& error) {
      failure_ = QString::fromStdString(error.message);
      player_->dismiss();
    };
    delegate_->playerDidDismiss = [this] { dismissed(); };
    player_->setDelegate(delegate_);
    player_->presentWithController(host_);
    player_->playWithMediaItem(YMRMediaItem::itemWithUrl(NSURL::URLFromUserInput(names_[index].toStdString())), 0);
    Q_EMIT changed();
  }
  bool isPlaying() const { return player_ != nullptr; }

 Q_SIGNALS:
  void changed();

 private:
  void dismissed() {
    player_.reset();  // which may be done from inside its callback
    Q_EMIT changed();
    if (times_ == 0) return;
    if (!failure_.isEmpty()) std::fprintf(stderr, "qml-list: %s\n", qPrintable(failure_));
    if (!failure_.isEmpty() || --times_ == 0) return QCoreApplication::exit(failure_.isEmpty() ? 0 : 1);
    QMetaObject::invokeMethod(
        this, [this] { play(0); }, Qt::QueuedConnection);
  }

  const QStringList names_;
  QString failure_;
  int times_;
  std::shared_ptr<UIViewController> host_;
  std::shared_ptr<YMRVideoPlayerDelegate> delegate_;
  std::unique_ptr<YMRVideoPlayer> player_;
};

int main(int argc, char** argv) {
  QGuiApplication application(argc, argv);
  QCommandLineParser parser;
  parser.addHelpOption();
  parser.addPositionalArgument("FILM", "What to list: files and URLs.", "FILM...");
  parser.addOption({"times", "Open the first film so often, then end.", "n", "0"});
  parser.process(application);
  const QStringList names = parser.positionalArguments();
  bool isNumber = false;
  const int times = parser.value("times").toInt(&isNumber);
  if (names.isEmpty() || !isNumber || times < 0) {
    std::fprintf(stderr, "%s", qPrintable(parser.helpText()));
    return 2;
  }

  UIChooseGraphics();  // before the first window
  Films films(names, times);
  QQuickView window;
  window.setTitle("Films");
  window.setResizeMode(QQuickView::SizeRootObjectToView);
  window.rootContext()->setContextProperty("films", &films);
  window.setSource(QUrl("qrc:/List.qml"));
  if (window.status() != QQuickView::Ready) return 1;
  window.show();
  films.setWindow(window);
  return application.exec();
}

#include "main.moc"
