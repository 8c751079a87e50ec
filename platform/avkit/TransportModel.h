#pragma once

#include <QList>
#include <QObject>
#include <QString>
#include <memory>
#include <optional>

#include "platform/avfoundation/AVPlayer.h"
#include "platform/foundation/NSTimer.h"

// What the transport bar says. Places on the bar are fractions of its length. Main thread.
class TransportModel final : public QObject {
  Q_OBJECT
  // The bar is on the screen.
  Q_PROPERTY(bool shown READ isShown NOTIFY shownChanged)
  Q_PROPERTY(bool live READ isLive NOTIFY changed)
  Q_PROPERTY(bool paused READ isPaused NOTIFY changed)
  // The viewer looks for a place.
  Q_PROPERTY(bool scrubbing READ isScrubbing NOTIFY changed)
  // Where the bar stands: what plays, or the place looked for.
  Q_PROPERTY(double position READ position NOTIFY changed)
  Q_PROPERTY(double playing READ playing NOTIFY changed)
  Q_PROPERTY(double bufferedFrom READ bufferedFrom NOTIFY changed)
  Q_PROPERTY(double bufferedTo READ bufferedTo NOTIFY changed)
  // The time at `position`; of a live stream how far behind, while scrubbing.
  Q_PROPERTY(QString elapsed READ elapsed NOTIFY changed)
  // Empty when the programme has no known end.
  Q_PROPERTY(QString remaining READ remaining NOTIFY changed)
  // Where the item's interstitials begin, ascending; those that lie too near to another for the eye are left out. Empty
  // for a live stream, whose bar shows what has been.
  Q_PROPERTY(QList<double> marks READ marks NOTIFY marksChanged)

 public:
  TransportModel();

  void setPlayer(std::shared_ptr<AVPlayer> player);
  // The place looked for, in seconds; nil when there is none.
  void setTarget(std::optional<double> target);
  void setShown(bool shown);
  // Reads the player again. While the bar is shown it does so by itself, often enough for the eye.
  void refresh();

  bool isShown() const { return clock_ != nullptr; }
  bool isLive() const { return facts_.live; }
  bool isPaused() const { return facts_.paused; }
  bool isScrubbing() const { return target_.has_value(); }
  double position() const { return facts_.position; }
  double playing() const { return facts_.playing; }
  double bufferedFrom() const { return facts_.bufferedFrom; }
  double bufferedTo() const { return facts_.bufferedTo; }
  QString elapsed() const { return facts_.elapsed; }
  QString remaining() const { return facts_.remaining; }
  const QList<double>& marks() const { return marks_; }

 Q_SIGNALS:
  void changed();
  void shownChanged();
  void marksChanged();

 private:
  struct Facts {
    bool live = false;
    bool paused = true;
    double position = 0;
    double playing = 0;
    double bufferedFrom = 0;
    double bufferedTo = 0;
    QString elapsed;
    QString remaining;
  };
  Facts read() const;
  QList<double> readMarks() const;

  std::shared_ptr<AVPlayer> player_;
  std::optional<double> target_;
  Facts facts_;
  QList<double> marks_;
  std::shared_ptr<NSTimer> clock_;  // runs while the bar is shown
};
