#pragma once

#include <QObject>
#include <QString>
#include <memory>

#include "platform/avkit/PlaybackWatch.h"
#include "platform/foundation/NSTimer.h"

// What is to be seen where the picture is: the spinner, the caption that is due, and whether the programme has a
// picture at all. Main thread.
class StageModel final : public QObject {
  Q_OBJECT
  Q_PROPERTY(bool spinning READ isSpinning NOTIFY spinningChanged)
  // Styled text, as Qt Quick calls it; empty when nothing is due.
  Q_PROPERTY(QString caption READ caption NOTIFY captionChanged)
  // Sound without pictures.
  Q_PROPERTY(bool soundOnly READ isSoundOnly NOTIFY soundOnlyChanged)

 public:
  StageModel();

  void setWatch(std::shared_ptr<PlaybackWatch> watch);
  // Reads the player again. True when the programme begins with what has changed.
  bool refresh();
  // Whether the stage can be seen, at first not; nothing spins while it can't.
  void setVisible(bool visible);

  // The player's rate has been other than 0.
  bool hasBegun() const { return begun_; }
  bool isSpinning() const { return spinning_; }
  QString caption() const { return caption_; }
  bool isSoundOnly() const { return soundOnly_; }

 Q_SIGNALS:
  void spinningChanged();
  void captionChanged();
  void soundOnlyChanged();

 private:
  bool isWaiting() const;
  void followWaiting();
  void spin(bool spinning);
  void setCaption(QString caption);
  void setSoundOnly(bool soundOnly);

  std::shared_ptr<PlaybackWatch> watch_;
  bool hadPlayer_ = false;
  bool begun_ = false;
  bool visible_ = false;
  bool spinning_ = false;
  bool soundOnly_ = false;
  QString caption_;
  std::shared_ptr<NSTimer> spinnerDelay_;  // runs while an interruption is too short for the spinner
};
