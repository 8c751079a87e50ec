#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "platform/Export.h"
#include "platform/avfoundation/AVPlayer.h"
#include "platform/foundation/NSError.h"
#include "platform/foundation/NSURL.h"
#include "platform/uikit/UILabel.h"
#include "platform/uikit/UIView.h"
#include "platform/uikit/values/NSAttributedString.h"
#include "subtitles/core/ASBSubtitleList.h"

// Shows one external subtitle track over a player: reads the file, watches the player's time once a second and after
// each jump, and writes the text that is due into a label inside a container. Text with markup is set in its italics,
// bold and colours, in a body style taken from the label; everything else is plain.
//
// The order of use: give it the container and the label, style the label, give it the player, load a track, and load
// others whenever the viewer changes the track.
//
// Always held by shared_ptr. Main thread, except playerTimeChanged(), which runs on a serial queue of its own; it holds
// its views and its player strongly, and what it has under way holds it weakly.
class YMR_API ASBPlayerSubtitling : public std::enable_shared_from_this<ASBPlayerSubtitling> {
 public:
  // Visible, without views and a player.
  static std::shared_ptr<ASBPlayerSubtitling> init();
  ASBPlayerSubtitling(const ASBPlayerSubtitling&) = delete;
  ASBPlayerSubtitling& operator=(const ASBPlayerSubtitling&) = delete;
  ~ASBPlayerSubtitling();

  // Makes it as init() did: visible, with a queue of its own. For objects that an interface file made; an observer that
  // runs stays on its queue.
  void awakeFromNib() { setup(); }
  void setup();

  // Hidden together with the label; nil at first.
  const std::shared_ptr<UIView>& containerView() const { return containerView_; }
  void setContainerView(std::shared_ptr<UIView> view) { containerView_ = std::move(view); }
  const std::shared_ptr<UILabel>& label() const { return label_; }
  void setLabel(std::shared_ptr<UILabel> label) { label_ = std::move(label); }

  // Setting one (nil for none) pauses the one before, clears the label, hides the container and takes the label's look
  // for texts with markup, see computeStyle().
  const std::shared_ptr<AVPlayer>& player() const { return player_; }
  void setPlayer(const std::shared_ptr<AVPlayer>& player);

  // Whether the viewer wants subtitles; true at first. Setting it shows or hides label and container at once, also when
  // there is no text.
  bool visible() const { return visible_; }
  void setVisible(bool visible);

  // Reads a track and takes it in place of the one before; waits for it, with the bounds of readSubtitleText(). What
  // can't be read leaves everything as it was and stores why in `error` (may be null), which is not touched otherwise.
  void loadSubtitlesAtURL(const NSURL& url, std::optional<NSError>* error);
  // Takes the text of a track, without a byte-order mark. There is no wrong text: what does not scan gives odd cues.
  // Sets `error` (may be null) to nil.
  void loadSRTContent(std::string_view content, std::optional<NSError>* error);
  // The cues in the order of the file; nil before the first track and after removeSubtitles().
  std::shared_ptr<const ASBSubtitleList> subtitles() const;
  // Takes cues that were read elsewhere; nil for none. The text on the screen changes with the next tick.
  void setSubtitles(std::shared_ptr<const ASBSubtitleList> subtitles);
  // Takes the track away, and its text off the screen at once.
  void removeSubtitles();
  // The last cue in the file's order that holds `seconds`, its ends included; nil without one.
  std::optional<ASBSubtitle> lastSubtitleAtTime(double seconds) const;

  // The text that is shown, or would be if it were visible; nil for none. Any thread.
  std::optional<std::string> currentText() const;
  // CSS declarations of the body of a text with markup; empty before a player was set. The colour is the label's
  // textColor(). An outlined label's is white whatever it draws in, so markup that asks for white is drawn in the
  // label's foreground colour, as the body is.
  const std::string& cssStyle() const { return cssStyle_; }
  // Takes font, colour and alignment of the label for texts with markup; nothing without a label. A plain label shows
  // such texts in that look from then on; one with an outline in its own font and colour, whatever they are by then.
  void computeStyle();
  // Of "text-align"; "center" for natural alignment.
  static std::string cssValueForTextAlignment(NSTextAlignment alignment);
  // "#RRGGBB" in upper case; opacity is left out.
  static std::string cssValueForColor(const UIColor& color);
  // Whether it has a "<".
  static bool isHTML(std::string_view text);
  // The text with its markup as runs, of 16 KiB at most; the spelling is given. nil when it can't be taken apart.
  std::optional<NSAttributedString> attribuedStringFromHTMLText(const std::string& text) const;

  // Writes the current text into the label, and hides or shows label and container. Nothing without a label.
  void updateLabel();
  // Looks for the text that is due now. Nothing without an item. Any thread, one call at a time.
  void playerTimeChanged();

  // Seconds of a time stamp of the file, as the reader takes it.
  static double timeFromString(std::string_view stamp);

  // Where the observer runs: a serial queue named "subtitling".
  const dispatch_queue_t& queue() const { return queue_; }
  // Pace of the observer, from the frame rate that is taken for the player's: 1 for every player. 0 before a player.
  static double nominalFrameRateForPlayer(const std::shared_ptr<AVPlayer>& player);
  double nbFramesPerSecond() const { return nbFramesPerSecond_; }
  // Counts for the next observer; more than 4 frames a second are observed 4 times.
  void setNbFramesPerSecond(double frames) { nbFramesPerSecond_ = frames; }
  // Seconds; 0 before a player.
  double frameDuration() const { return frameDuration_; }
  // nil while nothing is observed.
  const AVPlayerTimeObserverToken& timeObserver() const { return timeObserver_; }
  // Nothing when there is one, or no frame rate.
  void setupTimeObserver();
  // Nothing when there is none.
  void removeTimeObserver();

 private:
  // What the queue and the main thread share. It outlives the engine while a tick runs, so that neither the engine nor
  // its views ever end on the queue.
  class Clock;

  ASBPlayerSubtitling();

  std::shared_ptr<UIView> containerView_;
  std::shared_ptr<UILabel> label_;
  std::shared_ptr<AVPlayer> player_;
  bool visible_ = true;
  AVPlayerTimeObserverToken timeObserver_;
  double frameDuration_ = 0;
  double nbFramesPerSecond_ = 0;
  std::string cssStyle_;
  dispatch_queue_t queue_;
  std::shared_ptr<Clock> clock_;
};
