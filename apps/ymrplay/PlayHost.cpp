#include "apps/ymrplay/PlayHost.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <utility>

#include "ads/YMRAdSchedule.h"
#include "apps/shared/Printable.h"
#include "platform/uikit/UIWindow.h"

namespace {

// Headless, the size is the whole screen; on a display no size means full screen.
std::optional<CGSize> windowSize(const Options& options) {
  if (options.size) return CGSize{double(options.size->width), double(options.size->height)};
  if (options.headless) return CGSize{1920, 1080};
  return std::nullopt;
}

std::shared_ptr<YMRMediaItem> mediaItem(const Options& options) {
  auto item = YMRMediaItem::itemWithUrl(options.media);
  if (!options.title.empty()) item->setVideoTitle(options.title);
  if (!options.description.empty()) item->setVideoDescription(options.description);
  if (options.artwork) item->setVideoThumbnailUrl(options.artwork->absoluteString());
  return item;
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
  schedule->setAdLoadingText(options.loadingText);
  schedule->setAdCountdownText(options.countdownText);
  schedule->setAdpodCountdownText(options.podCountdownText);
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
  config->setLoadDidFail([](const YMRSubtitle& track, const NSError& error) {
    std::fprintf(stderr, "ymrplay: %s: %s\n", printable(track.url().absoluteString()).c_str(),
                 printable(error.message).c_str());
  });
  return config;
}

}  // namespace

PlayHost::PlayHost(Options options, std::function<void()> finished)
    : options_(std::move(options)),
      finished_(std::move(finished)),
      root_(std::make_shared<UIViewController>()),
      window_(std::make_shared<UIWindow>(windowSize(options_),
                                         options_.headless ? UIGraphics::software : UIGraphics::automatic)),
      remote_(window_, [this] { nextSubtitle(); }),
      printer_([this] { return std::chrono::duration<double>(RunLoop::main().now() - startedAt_).count(); },
               [this](const std::string& line) {
                 if (!options_.events) return;
                 if (std::puts(line.c_str()) >= 0 && std::fflush(stdout) == 0) return;
                 if (!failed_) std::fprintf(stderr, "ymrplay: the events can't be written: %s\n", std::strerror(errno));
                 failed_ = true;
               }),
      delegate_(std::make_shared<YMRVideoPlayerDelegate>(printer_.delegate())),
      player_(std::make_unique<YMRVideoPlayer>()) {
  answerCallbacks();
  player_->setDelegate(delegate_);
  player_->setAdSchedule(adSchedule(options_));
  player_->setSubtitle(subtitleConfig(options_));
}

PlayHost::~PlayHost() = default;

void PlayHost::answerCallbacks() {
  delegate_->videoOnPlay = [this, print = delegate_->videoOnPlay] {
    print();
    if (std::exchange(hasBegun_, true)) return;
    selectCaption();
    showSubtitle();  // pressed for before there was a programme, which begins with the first
  };
  delegate_->videoDidPlayFinished = [this, print = delegate_->videoDidPlayFinished] {
    print();
    player_->dismiss();
  };
  delegate_->videoOnError = [this, print = delegate_->videoOnError](const NSError& error) {
    print(error);
    std::fprintf(stderr, "ymrplay: %s: %s\n", options_.media->absoluteString().c_str(), error.message.c_str());
    failed_ = true;
    player_->dismiss();
  };
  delegate_->playerDidDismiss = [this, print = delegate_->playerDidDismiss] {
    print();
    finished_();
  };
}

void PlayHost::nextSubtitle() {
  const std::size_t files = options_.subtitles.size();
  if (files == 0) return;
  subtitle_ = (subtitle_ + 1) % (files + 1);
  if (hasBegun_) showSubtitle();
}

void PlayHost::showSubtitle() {
  const bool isShown = subtitle_ < options_.subtitles.size();
  player_->toggleSubtitle(isShown || options_.subtitles.empty());
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
  window_->setRootViewController(root_);
  window_->makeKeyAndVisible();
  player_->presentWithController(root_);
  startedAt_ = RunLoop::main().now();
  remote_.start(options_);
  player_->playWithMediaItem(mediaItem(options_), options_.start);
}

void PlayHost::dismiss() {
  player_->dismiss();
}

int PlayHost::exitStatus() const {
  const auto failures = remote_.failures();
  for (const auto& failure : failures) std::fprintf(stderr, "ymrplay: %s\n", failure.c_str());
  return failed_ || !failures.empty() ? 1 : 0;
}
