#pragma once

#include <cstddef>
#include <functional>
#include <memory>
#include <optional>
#include <utility>
#include <vector>

#include "platform/Export.h"
#include "platform/foundation/NSError.h"
#include "platform/uikit/values/UIColor.h"
#include "platform/uikit/values/UIFont.h"
#include "subtitles/YMRSubtitle.h"

// The external subtitle tracks of a programme and how they look. Held by the host and by the player that it is given
// to. Main thread.
//
// What is changed here after setSubtitle() counts from the next use on: tracks at the next start or switch, looks at
// the next setSubtitle().
class YMR_API YMRSubtitleConfig {
 public:
  // No tracks; white letters of 50 points in the system font, with a black outline.
  YMRSubtitleConfig();
  // nil without a list; an empty list gives a configuration that shows nothing.
  static std::shared_ptr<YMRSubtitleConfig> initWithSubtitles(std::optional<std::vector<YMRSubtitle>> subtitles);

  // The first is shown from the start.
  const std::vector<YMRSubtitle>& subtitles() const { return subtitles_; }
  void setSubtitles(std::vector<YMRSubtitle> subtitles) { subtitles_ = std::move(subtitles); }

  // A point is a 1080th of the screen's height here, so that text looks the same on every screen.
  const UIFont& subtitleFont() const { return font_; }
  void setSubtitleFont(UIFont font) { font_ = std::move(font); }
  // Of the text that names no colour of its own; white at first. Markup that asks for white, as <font color="white">
  // does, gets this colour, too: white is the body's colour, and can't be told from it.
  const UIColor& subtitleTextColor() const { return textColor_; }
  void setSubtitleTextColor(const UIColor& color) { textColor_ = color; }
  const UIColor& subtitleStrokeColor() const { return strokeColor_; }
  void setSubtitleStrokeColor(const UIColor& color) { strokeColor_ = color; }
  // In hundredths of the font's size; 10 at first.
  double subtitleStrokeWidth() const { return strokeWidth_; }
  void setSubtitleStrokeWidth(double width) { strokeWidth_ = width; }

  // Where a track is read when it is chosen. False, as it starts: at once, on the main thread, which waits for it (for
  // a server at most 10 s), so that its text is there with the first picture. True: elsewhere. The track takes effect
  // when it is there; until then the one before stays, and of several choices the last one counts.
  bool loadsInBackground() const { return loadsInBackground_; }
  void setLoadsInBackground(bool loads) { loadsInBackground_ = loads; }

  // Called on the main thread when a track has taken effect, with how many of its cues have text: 0 of a file that is
  // empty or no SRT, of which nothing will ever show. Empty, as it starts: nobody is told.
  using LoadSuccess = std::function<void(const YMRSubtitle& subtitle, std::size_t cues)>;
  const LoadSuccess& didLoad() const { return didLoad_; }
  void setDidLoad(LoadSuccess didLoad) { didLoad_ = std::move(didLoad); }

  // Called on the main thread when a track could not be read, with why: on a turn of its own, and not when another one
  // was chosen meanwhile or the player dismissed. The player shows nothing of it and goes on with the track before.
  // Empty, as it starts: nobody is told.
  using LoadFailure = std::function<void(const YMRSubtitle& subtitle, const NSError& error)>;
  const LoadFailure& loadDidFail() const { return loadDidFail_; }
  void setLoadDidFail(LoadFailure loadDidFail) { loadDidFail_ = std::move(loadDidFail); }

 private:
  std::vector<YMRSubtitle> subtitles_;
  UIFont font_;
  UIColor textColor_ = UIColor::whiteColor();
  UIColor strokeColor_ = UIColor::colorWithWhite(0, 1);
  double strokeWidth_ = 10;
  bool loadsInBackground_ = false;
  LoadSuccess didLoad_;
  LoadFailure loadDidFail_;
};
