#include "player/states/YMRPlayerStateLoadingAd.h"

void YMRPlayerStateLoadingAd::log() {}

void YMRPlayerStateLoadingAd::observeValueForKeyPath(const std::string&, const std::shared_ptr<NSObject>&,
                                                     const NSKeyValueChange&, void*, YMRPlayerStateHub&) {}
