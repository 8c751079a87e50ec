#include "ads/core/VASTSettings.h"

#include <atomic>
#include <cmath>

namespace {

constexpr double shortest = 10.0;
std::atomic<double> timeout{shortest};
std::atomic<bool> preparesNext{true};

}  // namespace

double VASTSettings::vastVideoLoadTimeout() {
  return timeout;
}

void VASTSettings::setVastVideoLoadTimeout(double seconds) {
  timeout = std::fmax(seconds, shortest);  // not-a-number counts as the shortest
}

bool VASTSettings::preparesNextFilm() {
  return preparesNext;
}

void VASTSettings::setPreparesNextFilm(bool prepares) {
  preparesNext = prepares;
}
