#pragma once

#include <QString>
#include <functional>
#include <memory>
#include <utility>

#include "platform/avkit/CaptionsMenu.h"
#include "platform/avkit/InfoModel.h"
#include "platform/avkit/PanelModel.h"
#include "platform/avkit/StageModel.h"
#include "platform/avkit/TransportModel.h"
#include "platform/uikit/UIView.h"

// Everything that is drawn over the picture: the root of the interface file, and the models that it shows. Main thread.
class ControlsView : public UIView {
  Q_OBJECT
  Q_PROPERTY(TransportModel* transport READ transport CONSTANT)
  Q_PROPERTY(InfoModel* info READ info CONSTANT)
  Q_PROPERTY(CaptionsMenu* captionsMenu READ captionsMenu CONSTANT)
  Q_PROPERTY(PanelModel* panel READ panel CONSTANT)
  Q_PROPERTY(StageModel* stage READ stage CONSTANT)
  Q_PROPERTY(QString fontFamily READ fontFamily CONSTANT)
  // Under the host's overlay: for what shades the picture only. This view itself where nobody gave one.
  Q_PROPERTY(QQuickItem* ground READ ground NOTIFY groundChanged)
  // How much of the picture's lower end transport bar and caption cover, in points.
  Q_PROPERTY(double obscuredHeight READ obscuredHeight WRITE setObscuredHeight)

 public:
  explicit ControlsView(QQuickItem* parent = nullptr);
  // From the interface file. A process without Qt's event loop gets the models with nothing to be seen of them, and so
  // does one whose installation lacks what the file needs: playback is worth more than its controls.
  static std::shared_ptr<ControlsView> make();

  TransportModel* transport() { return &transport_; }
  InfoModel* info() { return &info_; }
  CaptionsMenu* captionsMenu() { return &captionsMenu_; }
  PanelModel* panel() { return &panel_; }
  StageModel* stage() { return &stage_; }
  static QString fontFamily();
  QQuickItem* ground() { return ground_ ? ground_.get() : this; }
  void setGround(std::shared_ptr<UIView> ground);
  double obscuredHeight() const { return obscuredHeight_; }
  void setObscuredHeight(double height);
  // Called when it has changed; empty for nobody.
  void setObscuredHeightChanged(std::function<void()> changed) { obscuredHeightChanged_ = std::move(changed); }

 Q_SIGNALS:
  void groundChanged();

 private:
  std::shared_ptr<UIView> ground_;
  double obscuredHeight_ = 0;
  std::function<void()> obscuredHeightChanged_;
  TransportModel transport_;
  InfoModel info_;
  CaptionsMenu captionsMenu_;
  PanelModel panel_;
  StageModel stage_;
};
