#include "apps/ymrplay/PlayHost.h"

#include <cstdio>
#include <utility>

#include "ads/YMRAdSchedule.h"
#include "apps/shared/Printable.h"

namespace {

void say(const std::string& url, const std::string& message) {
  std::fprintf(stderr, "ymrplay: %s: %s\n", printable(url).c_str(), printable(message).c_str());
}

std::shared_ptr<YMRMediaItem> mediaItem(const Options& options) {
  auto item = YMRMediaItem::itemWithUrl(options.media);
  if (!options.title.empty()) item->setVideoTitle(options.title);
  if (!options.description.empty()) item->setVideoDescription(options.description);
  if (options.artwork) item->setVideoThumbnailUrl(options.artwork->absoluteString());
  item->setVideoThumbnailDidFail([](const std::string& url, const NSError& error) { say(url, error.message); });
  return item;
}

void dress(YMRAdSchedule& schedule, const Options& options) {
  schedule.setTagProfile(options.profile);
  schedule.setMissedBreaks(static_cast<YMRMissedBreaks>(options.missedBreaks));
  schedule.setShowsBreakMarks(options.marksBreaks);
  schedule.setAllowsSkipping(options.allowsSkipping);
  schedule.setAdLoadingText(options.loadingText);
  schedule.setAdCountdownText(options.countdownText);
  schedule.setAdpodCountdownText(options.podCountdownText);
}

// nil when there is no break to play.
std::shared_ptr<YMRAdSchedule> adSchedule(const Options& options) {
  if (options.preRolls.empty() && options.midRolls.empty() && options.postRolls.empty()) return nullptr;
  auto schedule = std::make_shared<YMRAdSchedule>();
  for (const auto& tag : options.preRolls) schedule->addAdBreak(YMRAd::initPreRollWithVastUrl(tag));
  for (const auto& [seconds, tag] : options.midRolls) {
    schedule->addAdBreak(YMRAd::initMidRollWithVastUrl(tag, seconds));
  }
  for (const auto& tag : options.postRolls) schedule->addAdBreak(YMRAd::initPostRollWithVastUrl(tag));
  dress(*schedule, options);
  return schedule;
}

// nil without a file. Files are read in the background: a server that hangs costs the text and nothing else.
std::shared_ptr<YMRSubtitleConfig> subtitleConfig(const Options& options) {
  if (options.subtitles.empty()) return nullptr;
  std::vector<YMRSubtitle> tracks;
  for (const auto& url : options.subtitles) {
    tracks.push_back(YMRSubtitle::subtitleWithUrl(url, url.path().substr(url.path().rfind('/') + 1)));
  }
  auto config = YMRSubtitleConfig::initWithSubtitles(std::move(tracks));
  config->setLoadsInBackground(true);
  config->setLoadDidFail(
      [](const YMRSubtitle& track, const NSError& error) { say(track.url().absoluteString(), error.message); });
  config->setDidLoad([](const YMRSubtitle& track, std::size_t cues) {
    if (cues == 0) say(track.url().absoluteString(), "There are no subtitles in this file.");
  });
  return config;
}

}  // namespace

PlayHost::PlayHost(Options options, std::function<void()> finished)
    : options_(std::move(options)),
      finished_(std::move(finished)),
      window_(
          options_, [this] { dismiss(); }, [this] { nextSubtitle(); }),
      printer_([this] { return window_.elapsed(); }, [this](const std::string& line) { window_.print(line); }),
      delegate_(std::make_shared<YMRVideoPlayerDelegate>(printer_.delegate())),
      player_(std::make_unique<YMRVideoPlayer>()) {
  answerCallbacks();
  player_->setDelegate(delegate_);
  player_->setAdSchedule(adSchedule(options_));
  player_->setSubtitle(subtitleConfig(options_));
}

void PlayHost::answerCallbacks() {
  delegate_->videoOnPlay = [this, print = delegate_->videoOnPlay] {
    print();
    if (std::exchange(hasBegun_, true)) return;
    selectCaption();
    if (subtitle_ > 0) showSubtitle();  // pressed for before there was a programme, which begins with the first
  };
  delegate_->videoDidPlayFinished = [this, print = delegate_->videoDidPlayFinished] {
    print();
    player_->dismiss();
  };
  delegate_->videoOnError = [this, print = delegate_->videoOnError](const NSError& error) {
    print(error);
    window_.fail(options_.media->absoluteString() + ": " + error.message);
    player_->dismiss();
  };
  delegate_->playerDidDismiss = [this, print = delegate_->playerDidDismiss] {
    print();
    alive_ = nullptr;
    finished_();
  };
}

void PlayHost::nextSubtitle() {
  const std::size_t files = options_.subtitles.size();
  if (files == 0) {
    std::fprintf(stderr, "ymrplay: there are no subtitle files to go through: give some with --subtitle\n");
    return;
  }
  subtitle_ = (subtitle_ + 1) % (files + 1);
  if (hasBegun_) showSubtitle();
}

void PlayHost::showSubtitle() {
  const bool isShown = subtitle_ < options_.subtitles.size();
  player_->toggleSubtitle(isShown);
  if (isShown) player_->switchSubtitle(static_cast<std::int32_t>(subtitle_));
}

void PlayHost::selectCaption() {
  if (options_.caption.empty() || player_->setClosedCaption(options_.caption)) return;
  std::string tags;
  for (const auto& tag : player_->getClosedCaptionLanguageList()) tags += (tags.empty() ? "" : ", ") + tag;
  std::fprintf(stderr, "ymrplay: no caption track has the language tag %s; there are: %s\n",
               printable(options_.caption).c_str(), tags.empty() ? "none" : printable(tags).c_str());
}

void PlayHost::play() {
  window_.show();
  player_->presentWithController(window_.root());
  if (!options_.vmap) return playProgramme();
  YMRAdSchedule::scheduleWithVMAPUrl(
      *options_.vmap,
      [this, alive = std::weak_ptr(alive_)](const auto& schedule, const std::string& problem) {
        if (alive.expired()) return;
        if (schedule) {
          dress(*schedule, options_);
          player_->setAdSchedule(schedule);
        } else {
          say(options_.vmap->absoluteString(), problem + " There will be no ads.");
        }
        playProgramme();
      },
      options_.profile);
}

void PlayHost::playProgramme() {
  window_.start();
  player_->playWithMediaItem(mediaItem(options_), options_.start);
}

void PlayHost::dismiss() {
  player_->dismiss();
}

void PlayHost::fail(const std::string& why) {
  window_.fail(why);
  dismiss();
}
