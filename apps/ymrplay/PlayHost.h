#pragma once

#include <functional>
#include <memory>

#include "apps/ymrplay/EventPrinter.h"
#include "apps/ymrplay/Options.h"
#include "apps/ymrplay/Remote.h"
#include "platform/dispatch/RunLoop.h"
#include "player/YMRVideoPlayer.h"

class UIViewController;
class UIWindow;

// The host: shows a window, plays the programme that the options name, answers every callback, and says when it is
// over. Main thread.
class PlayHost {
 public:
  // `finished` is called once, when the player has been dismissed.
  PlayHost(Options options, std::function<void()> finished);
  ~PlayHost();

  void play();
  // Ends the presentation, as the viewer's Menu does.
  void dismiss();
  // 0, or 1 when the programme failed or a picture could not be written, which it says on standard error. When
  // finished.
  int exitStatus() const;

 private:
  void answerCallbacks();
  // The next subtitle file, after the last one none, then the first.
  void nextSubtitle();
  void showSubtitle();
  // Selects the media's caption track that --caption names, or says which there are.
  void selectCaption();

  const Options options_;
  const std::function<void()> finished_;
  RunLoop::Duration startedAt_{0};
  bool failed_ = false;
  bool hasBegun_ = false;     // the programme
  std::size_t subtitle_ = 0;  // the file that is shown; their number for none
  std::shared_ptr<UIViewController> root_;
  std::shared_ptr<UIWindow> window_;
  Remote remote_;
  EventPrinter printer_;
  std::shared_ptr<YMRVideoPlayerDelegate> delegate_;
  std::unique_ptr<YMRVideoPlayer> player_;
};
