#include "apps/ymrplay/AdScreenHost.h"

#include <cstdio>
#include <utility>

AdScreenHost::AdScreenHost(Options options, std::function<void()> finished)
    : options_(std::move(options)),
      finished_(std::move(finished)),
      window_(options_, [this] { dismiss(); }, {}),
      printer_([this] { return window_.elapsed(); }, [this](const std::string& line) { window_.print(line); }),
      delegate_(std::make_shared<SKVASTViewControllerDelegate>(printer_.adScreenDelegate())),
      screen_(SKVASTViewController::initWithDelegate(delegate_, window_.root())) {
  screen_->setTagProfile(options_.profile);
  answerCallbacks();
  screen_->setAllowsSkipping(options_.allowsSkipping);
}

void AdScreenHost::answerCallbacks() {
  using Sender = SKVASTViewControllerDelegate::Sender;
  delegate_->vastReady = [print = delegate_->vastReady](const Sender& sender) {
    print(sender);
    sender->play();
  };
  delegate_->vastError = [this, print = delegate_->vastError](const Sender& sender, SKVASTError error) {
    print(sender, error);
    const std::string& message = sender->errorMessage();
    const std::string url = options_.adScreen->absoluteString();
    window_.fail(message.find(url) == std::string::npos ? url + ": " + message : message);
    if (!isPresented_) finishLater();
  };
  delegate_->vastWillPresentFullScreen = [this, print = delegate_->vastWillPresentFullScreen](const Sender& sender) {
    print(sender);
    isPresented_ = true;
  };
  delegate_->vastDidDismissFullScreen = [this, print = delegate_->vastDidDismissFullScreen](const Sender& sender) {
    print(sender);
    finishLater();
  };
  delegate_->vastOpenBrowseWithUrl = [print = delegate_->vastOpenBrowseWithUrl](const NSURL& url) {
    print(url);
    std::fprintf(stderr, "ymrplay: the ad leads to %s\n", url.absoluteString().c_str());
  };
}

// An error can follow the dismissal that it caused.
void AdScreenHost::finishLater() {
  if (finished_) RunLoop::main().post(std::exchange(finished_, nullptr));
}

void AdScreenHost::play() {
  window_.show();
  window_.start();
  screen_->loadVideoWithURL(options_.adScreen);
}

void AdScreenHost::dismiss() {
  isPresented_ ? screen_->close() : finishLater();
}

void AdScreenHost::fail(const std::string& why) {
  window_.fail(why);
  dismiss();
}
