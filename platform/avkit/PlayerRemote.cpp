#include "platform/avkit/PlayerRemote.h"

#include <chrono>
#include <utility>
#include <vector>

using namespace std::chrono_literals;

namespace {

constexpr auto barStays = 3s;

bool isSeeking(UIPressType type) {
  return type == UIPressTypeLeftArrow || type == UIPressTypeRightArrow;
}

Scrubber::Direction directionOf(UIPressType type) {
  return type == UIPressTypeLeftArrow ? Scrubber::Direction::backward : Scrubber::Direction::forward;
}

}  // namespace

PlayerRemote::PlayerRemote(std::shared_ptr<ControlsView> controls, Chosen chosen)
    : controls_(std::move(controls)), chosen_(std::move(chosen)), scrubber_([this] { targetChanged(); }) {
  QObject::connect(controls_->info(), &InfoModel::changed, controls_.get(), [this] { updatePages(); });
  QObject::connect(controls_->captionsMenu(), &CaptionsMenu::changed, controls_.get(), [this] { updatePages(); });
}

PlayerRemote::~PlayerRemote() {
  controls_->info()->disconnect(controls_.get());
  controls_->captionsMenu()->disconnect(controls_.get());
}

void PlayerRemote::setPlayer(std::shared_ptr<AVPlayer> player) {
  dismissControls();
  player_ = player;
  controls_->transport()->setPlayer(player);
  scrubber_.setPlayer(std::move(player));
  itemChanged();
}

void PlayerRemote::itemChanged() {
  const auto item = player_ ? player_->currentItem() : nullptr;
  controls_->info()->read(item);
  controls_->captionsMenu()->read(item);
  controls_->transport()->refresh();
}

void PlayerRemote::updatePages() {
  PanelModel& panel = *controls_->panel();
  std::vector<PanelModel::Page> pages;
  if (!controls_->info()->isEmpty()) pages.push_back(PanelModel::Page::info);
  if (controls_->captionsMenu()->rows() > 0) pages.push_back(PanelModel::Page::subtitles);
  panel.setPages(std::move(pages));
  panel.setRows(controls_->captionsMenu()->rows());
}

bool PlayerRemote::began(const UIPress& press) {
  if (press.type == UIPressTypeMenu) return false;
  if (!controls_->stage()->hasBegun()) return true;
  if (press.isRepeat) {
    repeated(press.type);
  } else if (controls_->panel()->isOpen()) {
    handleInPanel(press.type);
  } else {
    handle(press.type);
  }
  return true;
}

void PlayerRemote::ended(const UIPress& press) {
  if (isSeeking(press.type)) scrubber_.release();
}

// A held button seeks on and runs through lists, and does everything else once.
void PlayerRemote::repeated(UIPressType type) {
  const PanelModel& panel = *controls_->panel();
  if (!panel.isOpen()) {
    if (isSeeking(type)) scrubber_.repeat(directionOf(type));
  } else if ((type == UIPressTypeUpArrow && panel.row() > 0) || (type == UIPressTypeDownArrow && panel.row() >= 0)) {
    handleInPanel(type);
  }
}

void PlayerRemote::handle(UIPressType type) {
  if (type == UIPressTypeDownArrow) {
    itemChanged();  // tracks may have come since
    if (controls_->panel()->hasPages()) return openPanel();
  }
  showBar();
  if (isSeeking(type)) {
    scrubber_.press(directionOf(type));
  } else if (type == UIPressTypeSelect && scrubber_.target()) {
    scrubber_.commit();
  } else if (type == UIPressTypeSelect || type == UIPressTypePlayPause) {
    scrubber_.commit();
    toggle();
  } else {
    scrubber_.cancel();
  }
}

void PlayerRemote::handleInPanel(UIPressType type) {
  PanelModel& panel = *controls_->panel();
  CaptionsMenu& menu = *controls_->captionsMenu();
  switch (type) {
    case UIPressTypeUpArrow:
      return panel.up();
    case UIPressTypeDownArrow:
      return panel.down(menu.selected());
    case UIPressTypeLeftArrow:
      return panel.left();
    case UIPressTypeRightArrow:
      return panel.right();
    case UIPressTypePlayPause:
      return toggle();
    case UIPressTypeSelect:
      if (panel.row() < 0) return panel.down(menu.selected());
      if (const auto choice = menu.choose(panel.row())) chosen_(*choice);
      return;
    case UIPressTypeMenu:
      return;
  }
}

void PlayerRemote::openPanel() {
  dismissControls();
  itemChanged();
  controls_->panel()->open();
}

void PlayerRemote::toggle() {
  if (!player_) return;
  const auto player = player_;
  player->rate() == 0 ? player->play() : player->pause();
}

void PlayerRemote::showBar() {
  if (!controls_->stage()->hasBegun() || controls_->panel()->isOpen()) return;
  if (!controls_->transport()->isShown()) itemChanged();
  controls_->transport()->setShown(true);
  hideBarLater();
}

void PlayerRemote::hideBarLater() {
  hideTimer_ =
      NSTimer::scheduledTimerWithTimeInterval(barStays, false, [this] { controls_->transport()->setShown(false); });
}

void PlayerRemote::targetChanged() {
  controls_->transport()->setTarget(scrubber_.target());
  if (scrubber_.target()) hideBarLater();  // each step of a held button counts as a press
}

void PlayerRemote::dismissControls() {
  scrubber_.cancel();
  hideTimer_ = nullptr;
  controls_->transport()->setShown(false);
  controls_->panel()->close();
}
