#include "platform/avfoundation/hls/HLSVariantChoice.h"

#include <algorithm>
#include <cmath>

using namespace std::chrono_literals;

namespace {

constexpr double share = 0.8;
// Until something was measured.
constexpr double unmeasuredRate = 2'500'000;
// So much must be ready for a better one; and after a step down so long has to pass.
constexpr HLSVariantChoice::Time aheadForBetter = 8s;
constexpr HLSVariantChoice::Time pauseAfterStepDown = 15s;
// With so much ready one that comes as fast as it is played is kept.
constexpr HLSVariantChoice::Time aheadForPatience = 25s;
constexpr HLSVariantChoice::Time barLimit = 60s;
// What is so short tells of the connection's delay and not of its rate.
constexpr std::uint64_t leastBytes = 16 * 1024;

}  // namespace

HLSVariantChoice::HLSVariantChoice(const std::vector<HLSVariant>& variants, int screenHeight) {
  for (std::size_t i = 0; i < variants.size(); ++i) {
    candidates_.push_back({i, variants[i].bandwidth, variants[i].height});
  }
  // The least that fills the screen, or the highest of all.
  for (const Candidate& each : candidates_) heightLimit_ = std::max(heightLimit_, each.height);
  for (const Candidate& each : candidates_) {
    if (screenHeight > 0 && each.height >= screenHeight) heightLimit_ = std::min(heightLimit_, each.height);
  }
}

void HLSVariantChoice::Average::note(double rate, double seconds) {
  const double kept = std::pow(0.5, seconds / halfLife);
  value = kept * value + (1 - kept) * rate;
  weight = kept * weight + (1 - kept);
}

void HLSVariantChoice::note(std::uint64_t bytes, Time time) {
  if (bytes < leastBytes) return;
  const double seconds = std::max(std::chrono::duration<double>(time).count(), 0.001);
  const double rate = static_cast<double>(bytes) * 8 / seconds;
  // However quickly it came, a segment is a look at the line.
  for (Average* average : {&quick_, &slow_}) average->note(rate, std::max(seconds, 0.5));
}

std::optional<double> HLSVariantChoice::throughput() const {
  if (quick_.weight <= 0) return std::nullopt;
  return std::min(quick_.value / quick_.weight, slow_.value / slow_.weight);
}

std::optional<std::size_t> HLSVariantChoice::bestBelow(double rate, Time now) const {
  const Candidate* best = nullptr;
  for (const Candidate& each : candidates_) {
    if (isBarred(each.variant, now) || !fits(each)) continue;
    const bool isAffordable = static_cast<double>(each.bandwidth) <= rate;
    const bool isBestAffordable = best && static_cast<double>(best->bandwidth) <= rate;
    const bool isBetter = !best                              ? true
                          : isAffordable != isBestAffordable ? isAffordable
                          : isAffordable                     ? each.bandwidth > best->bandwidth
                                                             : each.bandwidth < best->bandwidth;
    if (isBetter) best = &each;
  }
  if (best) return best->variant;
  // Only those are left that are too large for the screen.
  for (const Candidate& each : candidates_) {
    if (isBarred(each.variant, now)) continue;
    if (!best || each.bandwidth < best->bandwidth) best = &each;
  }
  return best ? std::optional(best->variant) : std::nullopt;
}

std::optional<std::size_t> HLSVariantChoice::choose(Time now, Time ahead) {
  const auto rate = throughput();
  const auto best = bestBelow(rate ? share * *rate : unmeasuredRate, now);
  if (!best) return std::nullopt;
  if (current_ && !isBarred(*current_, now) && *best != *current_) {
    const auto here = static_cast<double>(candidates_[*current_].bandwidth);
    const auto there = static_cast<double>(candidates_[*best].bandwidth);
    const bool isHasty = loweredAt_ >= Time(0) && now - loweredAt_ < pauseAfterStepDown;
    const bool mayRise = ahead >= aheadForBetter && !isHasty;
    const bool mustFall = !rate || here > *rate || ahead < aheadForPatience;
    if (there > here ? !mayRise : !mustFall) return current_;
    if (there < here) loweredAt_ = now;
  }
  return current_ = best;
}

std::optional<std::size_t> HLSVariantChoice::instead(const std::vector<std::size_t>& asked, Time now) const {
  const auto rate = static_cast<double>(asked.empty() ? 0 : candidates_[asked.front()].bandwidth);
  const Candidate* best = nullptr;
  for (const Candidate& each : candidates_) {
    if (isBarred(each.variant, now) || std::ranges::count(asked, each.variant) > 0) continue;
    const bool isBelow = static_cast<double>(each.bandwidth) <= rate;
    const bool isBestBelow = best && static_cast<double>(best->bandwidth) <= rate;
    const bool isBetter = !best                    ? true
                          : isBelow != isBestBelow ? isBelow
                          : isBelow                ? each.bandwidth > best->bandwidth
                                                   : each.bandwidth < best->bandwidth;
    if (isBetter) best = &each;
  }
  return best ? std::optional(best->variant) : std::nullopt;
}

void HLSVariantChoice::forgive() {
  for (Candidate& each : candidates_) each.barredUntil = Time(-1);
}

void HLSVariantChoice::bar(std::size_t variant, Time now) {
  candidates_[variant].barredUntil = now + barLimit;
}
