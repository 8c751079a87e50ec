#include "ads/core/VASTSettings.h"

#include <atomic>
#include <cmath>

namespace {

constexpr double shortest = 10.0;
std::atomic<double> timeout{shortest};

}  // namespace

double VASTSettings::vastVideoLoadTimeout() {
  return timeout;
}

void VASTSettings::setVastVideoLoadTimeout(double seconds) {
  timeout = std::fmax(seconds, shortest);  // not-a-number counts as the shortest
}
