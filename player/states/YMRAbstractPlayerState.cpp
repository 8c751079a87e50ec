#include "player/states/YMRAbstractPlayerState.h"

#include "platform/foundation/NSException.h"

namespace {

[[noreturn]] void mustOverride(const std::string& selector) {
  throw NSInternalInconsistencyException("You must override " + selector + " in a subclass");
}

}  // namespace

YMRAbstractPlayerState::~YMRAbstractPlayerState() = default;

void YMRAbstractPlayerState::log() {
  mustOverride("log");
}

void YMRAbstractPlayerState::observeValueForKeyPath(const std::string&, const std::shared_ptr<NSObject>&,
                                                    const NSKeyValueChange&, void*, YMRPlayerStateHub&) {
  mustOverride("observeValueForKeyPath:ofObject:change:context:ymrPlayer:");
}

void YMRAbstractPlayerState::vodPlayerPeriodicTimeObserver(const CMTime&, YMRPlayerStateHub&) {}

void YMRAbstractPlayerState::adPlayerPeriodicTimeObserver(const CMTime&, YMRPlayerStateHub&) {}

void YMRAbstractPlayerState::videoDidSeek(const NSNotification&, YMRPlayerStateHub&) {}
