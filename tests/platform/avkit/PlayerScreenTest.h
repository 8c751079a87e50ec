#pragma once

#include <memory>
#include <string>
#include <vector>

#include "platform/avfoundation/AVMediaFormat.h"
#include "platform/avkit/AVPlayerViewController.h"
#include "platform/avkit/ControlsView.h"
#include "platform/avkit/PlayerScreen.h"
#include "tests/support/ScreenTest.h"
#include "tests/support/ScriptedMediaEngine.h"

using namespace std::chrono_literals;

// Fails the test at whatever Qt warns of, errors of the interface file above all.
class WarningsFail {
 public:
  WarningsFail() : before_(qInstallMessageHandler(&WarningsFail::handle)) {}
  ~WarningsFail() { qInstallMessageHandler(before_); }

 private:
  static void handle(QtMsgType type, const QMessageLogContext&, const QString& text) {
    if (type != QtDebugMsg && type != QtInfoMsg) ADD_FAILURE() << text.toStdString();
  }
  QtMessageHandler before_;
};

inline AVMetadataItem metadata(const char* key, AVMetadataItem::Value value) {
  AVMutableMetadataItem item;
  item.setKeySpace(AVMetadataKeySpaceCommon);
  item.setKey(key);
  item.setValue(std::move(value));
  return item;
}

// A presented player over scripted media: an hour, grey.
class PlayerScreenTest : public ScreenTest {
 protected:
  static constexpr const char* kURL = "http://example.com/film.mp4";
  static constexpr const char* kGrey = "808080";

  PlayerScreenTest() {
    media.script(kURL).duration = 3600;
    controller->presentViewController(screen, false);
    loop.runUntilIdle();
  }
  ~PlayerScreenTest() override {
    controller->dismissViewControllerAnimated(false);
    loop.runUntilIdle();
  }

  // Gives the screen a player of the film; it plays from `position` on.
  void play(double position = 0) {
    load();
    player->play();
    if (position > 0) engine().skipTo(position);
    loop.advance(100ms);
  }
  void load() {
    item = AVPlayerItem::playerItemWithURL(NSURL::URLWithString(kURL));
    item->setExternalMetadata(information);
    player = AVPlayer::playerWithPlayerItem(item);
    screen->setPlayer(player);
    loop.advance(1s);
  }

  void press(UIPressType type, int times = 1) {
    for (int time = 0; time < times; ++time) {
      window.sendPress(type);
      loop.runUntilIdle();
    }
  }
  void holdKey(int code, RunLoop::Duration duration) {
    constexpr auto kRepeat = 40ms;
    key(code);
    for (RunLoop::Duration held{}; held < duration; held += kRepeat) {
      loop.advance(kRepeat);
      key(code, QEvent::KeyPress, true);
    }
  }

  // What a host may do from inside any call.
  void letGo() {
    controller->dismissViewControllerAnimated(false);
    screen->setPlayer(nullptr);
    screen = std::make_shared<AVPlayerViewController>();
    player = nullptr;
  }

  ScriptedMediaEngine& engine() { return *media.engine(kURL); }
  const std::vector<double>& seeks() { return engine().log().seeks; }
  double now() { return CMTimeGetSeconds(player->currentTime()); }
  ControlsView& controls() { return *std::dynamic_pointer_cast<PlayerScreen>(screen->view())->controls(); }
  TransportModel& bar() { return *controls().transport(); }
  PanelModel& panel() { return *controls().panel(); }
  CaptionsMenu& menu() { return *controls().captionsMenu(); }
  StageModel& stage() { return *controls().stage(); }
  std::shared_ptr<AVMediaSelectionGroup> group() const {
    return item->asset()->mediaSelectionGroupForMediaCharacteristic(AVMediaCharacteristicLegible);
  }
  bool isPresented() const { return controller->presentedViewController() != nullptr; }

  WarningsFail warningsFail;
  ScriptedMedia media;
  std::vector<AVMetadataItem> information;
  std::shared_ptr<AVPlayerItem> item;
  std::shared_ptr<AVPlayer> player;
  std::shared_ptr<AVPlayerViewController> screen = std::make_shared<AVPlayerViewController>();
};
