#pragma once

#include <QPointer>
#include <memory>

#include "ads/YMROutlinedLabel.h"
#include "ads/YMRSkipButton.h"
#include "platform/Export.h"
#include "platform/uikit/UIActivityIndicatorView.h"
#include "platform/uikit/UIView.h"

class YMRAdSchedule;

// What lies over a programme during an ad break: black, the ad's picture, a wheel while the ad is waited for, the text
// that tells the viewer how long, and the button that skips the ad. Main thread.
//
// Its looks are in the library's resource YMRAdContainerView.qml: the text lies below the wheel as long as that turns,
// then at the upper right; the button is at the lower right. Sizes, the font's points included, are those of a screen
// 1080 points high and grow with it.
//
// Over a player view controller's view it takes the remote: a recogniser added to it gets the presses, all others but
// Menu end there.
class YMR_API YMRAdContainerView : public UIView {
  Q_OBJECT
  Q_PROPERTY(YMROutlinedLabel* timeRemainLabel MEMBER label_)
  Q_PROPERTY(UIView* adPlayerView MEMBER adPlayerView_)
  Q_PROPERTY(UIView* lastPictureView MEMBER lastPictureView_)
  Q_PROPERTY(UIActivityIndicatorView* loadingIndicator MEMBER indicator_)
  Q_PROPERTY(YMRSkipButton* skipButton MEMBER skipButton_)
  // Whether wheel and text are held back for a moment, since the ad is likely to come at once.
  Q_PROPERTY(bool isPatient MEMBER isPatient_ NOTIFY patienceDidChange)

 public:
  // From the interface file. In a process without Qt's event loop the same parts, with nothing to be seen of them.
  static std::shared_ptr<YMRAdContainerView> make();
  // For interface files.
  explicit YMRAdContainerView(QQuickItem* parent = nullptr);
  ~YMRAdContainerView() override;

  // Held by this view alone: nil only when somebody took it out of the view.
  std::shared_ptr<YMROutlinedLabel> timeRemainLabel() const;
  // Fills the overlay; the ad's layer goes into its layer.
  std::shared_ptr<UIView> adPlayerView() const;
  std::shared_ptr<UIActivityIndicatorView> loadingIndicator() const;
  std::shared_ptr<YMRSkipButton> skipButton() const;

  // Gives the label the schedule's font, colours and stroke width; before the first text is drawn, since the label
  // keeps those. Gives the button its texts. Nothing when nil.
  void confWithAdSchedule(const std::shared_ptr<YMRAdSchedule>& adSchedule);

  // An ad is on its way: nothing of this view is seen, so that the last picture of what lies below stays, until
  // pictureDidArrive(). After half a second without, it fades in with wheel and text.
  void awaitPicture();
  // Shows the ad at once.
  void pictureDidArrive();
  // Keeps the picture of an ad that has ended over adPlayerView(), until the next one's, for half a second at most.
  // nil leaves it at the one that is kept.
  void keepPicture(const std::shared_ptr<CALayer>& layer);
  // Nothing is awaited any more; as it starts.
  void endWaiting();

 Q_SIGNALS:
  void patienceDidChange();

 private:
  void setPatient(bool patient);
  void dropKeptPicture();

  bool isPatient_ = false;
  QPointer<YMROutlinedLabel> label_;
  QPointer<UIView> adPlayerView_;
  QPointer<UIView> lastPictureView_;
  QPointer<UIActivityIndicatorView> indicator_;
  QPointer<YMRSkipButton> skipButton_;
};
