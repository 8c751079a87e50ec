#pragma once

#include <cstdint>
#include <memory>

#include "platform/avfoundation/AVPlayer.h"
#include "platform/avkit/AVPlayerViewController.h"
#include "subtitles/ASBPlayerSubtitling.h"
#include "subtitles/YMRSubtitleConfig.h"

class SubtitlePlacement;
class YMROutlinedLabel;

// The external subtitles of a presentation: the engine, the label that it writes into, and the container that holds the
// label over the picture. Owned by the hub, which forwards to it. Main thread.
//
// Sizes are in 1080ths of the screen's height: the container is shown scaled and its label drawn at the real size. It
// stands 70 of them above the lower edge, or above what the player's own controls and captions cover.
class YMRSubtitleStage : public std::enable_shared_from_this<YMRSubtitleStage> {
 public:
  YMRSubtitleStage();
  ~YMRSubtitleStage();

  // Lays the views over the picture. Once.
  void addToPlayerScreen(const std::shared_ptr<AVPlayerViewController>& screen);

  const std::shared_ptr<ASBPlayerSubtitling>& subtitling() const { return subtitling_; }
  // nil for none, and at first.
  const std::shared_ptr<YMRSubtitleConfig>& subtitle() const { return subtitle_; }
  // Restyles at once; nil leaves the look. Tracks are looked at when one is loaded.
  void setSubtitle(const std::shared_ptr<YMRSubtitleConfig>& subtitle);
  // Follows the programme's player (nil: none), and loads the first track.
  void loadSubtitle(const std::shared_ptr<AVPlayer>& player);
  // Nothing when there is no such track.
  void switchSubtitle(std::int32_t index);
  void toggleSubtitle(bool visible) { subtitling_->setVisible(visible); }
  // What is being read in the background is dropped.
  void stopLoading() { ++loads_; }
  // For the end of the application: nothing is shown any more.
  void letGoOfViews();

 private:
  void load(const YMRSubtitle& track);
  void loadInBackground(const YMRSubtitle& track);
  void followScreen();
  void leaveScreen();
  // How many lines there is room for when the container ends at `bottom`, in its points.
  int linesAbove(double bottom) const;

  const std::shared_ptr<ASBPlayerSubtitling> subtitling_;
  std::shared_ptr<YMRSubtitleConfig> subtitle_;
  std::weak_ptr<AVPlayerViewController> screen_;
  std::shared_ptr<UIView> container_;
  std::shared_ptr<YMROutlinedLabel> label_;
  SubtitlePlacement* placement_ = nullptr;  // the container's
  unsigned loads_ = 0;                      // how many were asked for: only the last one counts
};
