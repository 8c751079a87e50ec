#pragma once

#include <functional>
#include <memory>

#include "apps/ymrplay/EventPrinter.h"
#include "apps/ymrplay/Host.h"
#include "apps/ymrplay/HostWindow.h"
#include "apps/ymrplay/Options.h"
#include "player/YMRVideoPlayer.h"

// The host of a programme: plays what the options name, answers every callback, and says when it is over.
class PlayHost final : public Host {
 public:
  // `finished` is called once, when the player has been dismissed.
  PlayHost(Options options, std::function<void()> finished);

  void play() override;
  void dismiss() override;
  void fail(const std::string& why) override;
  int exitStatus() override { return window_.exitStatus(); }

 private:
  void playProgramme();
  void answerCallbacks();
  // The next subtitle file, after the last one none, then the first.
  void nextSubtitle();
  void showSubtitle();
  // Selects the media's caption track that --caption names, or says which there are.
  void selectCaption();

  const Options options_;
  const std::function<void()> finished_;
  bool hasBegun_ = false;     // the programme
  std::size_t subtitle_ = 0;  // the file that is shown; their number for none
  HostWindow window_;
  EventPrinter printer_;
  std::shared_ptr<YMRVideoPlayerDelegate> delegate_;
  std::unique_ptr<YMRVideoPlayer> player_;
  std::shared_ptr<bool> alive_ = std::make_shared<bool>();  // for what comes back later; nil when it is over
};
