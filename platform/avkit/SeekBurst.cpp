#include "platform/avkit/SeekBurst.h"

#include <algorithm>
#include <array>

namespace {

constexpr double shortestStep = 10;
constexpr double stepsAcross = 20;

struct Gear {
  int untilStep;
  double seconds;
};
constexpr std::array<Gear, 3> gears{{{3, shortestStep}, {8, 30}, {15, 60}}};
constexpr double topGear = 120;

}  // namespace

SeekBurst::SeekBurst(double position, double lower, double upper)
    : lower_(lower), upper_(std::max(lower, upper)), target_(std::clamp(position, lower_, upper_)) {}

void SeekBurst::step(Direction direction) {
  stepsInDirection_ = direction == direction_ ? stepsInDirection_ + 1 : 1;
  direction_ = direction;
  target_ = std::clamp(target_ + static_cast<int>(direction) * stepLength(), lower_, upper_);
}

double SeekBurst::stepLength() const {
  const auto gear = std::find_if(gears.begin(), gears.end(),
                                 [this](const Gear& candidate) { return stepsInDirection_ <= candidate.untilStep; });
  const double seconds = gear == gears.end() ? topGear : gear->seconds;
  return std::clamp(seconds, shortestStep, std::max(shortestStep, (upper_ - lower_) / stepsAcross));
}
