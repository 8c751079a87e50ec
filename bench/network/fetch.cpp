// A reader without a decoder: what the fetching alone does.
//
//   bench_fetch URL             reads a resource as fast as it comes: seconds and MB/s
//   bench_fetch URL RATE [AT]   reads RATE bytes a second like a player that holds nothing itself, from the place AT
//   on:
//                               how long it had to wait, in all and at most, and how it ended
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <thread>
#include <vector>

#include "platform/avfoundation/fetch/ByteFetcher.h"
#include "platform/dispatch/PlainRunLoop.h"

using Clock = std::chrono::steady_clock;
using Seconds = std::chrono::duration<double>;
using Outcome = MediaBytes::Outcome;

namespace {

struct Reading {
  std::uint64_t bytes = 0;
  Outcome outcome = Outcome::done;
  Seconds waited{0}, longest{0};
};

// `rate` 0: as fast as it comes.
Reading read(MediaBytes& bytes, std::uint64_t place, double rate) {
  Reading reading;
  std::vector<std::byte> part(rate > 0 ? std::max<std::size_t>(1, static_cast<std::size_t>(rate / 25)) : 256 * 1024);
  auto due = Clock::now();
  while (reading.outcome == Outcome::done) {
    std::size_t count = 0;
    const auto began = Clock::now();
    reading.outcome = bytes.read(place + reading.bytes, part, count);
    const Seconds wait = Clock::now() - began;
    const bool isFirst = reading.bytes == 0;
    reading.bytes += count;
    if (rate <= 0) continue;
    if (!isFirst) {
      reading.waited += wait;
      reading.longest = std::max(reading.longest, wait);
    }
    due = std::max(due, Clock::now() - std::chrono::milliseconds(100));
    due += std::chrono::duration_cast<Clock::duration>(Seconds(static_cast<double>(count) / rate));
    std::this_thread::sleep_until(due);
  }
  return reading;
}

}  // namespace

int main(int argc, char** argv) {
  const auto url = argc > 1 ? NSURL::URLWithString(argv[1]) : std::nullopt;
  if (!url) return 2;
  const PlainRunLoop loop;
  const double rate = argc > 2 ? std::atof(argv[2]) : 0;
  const std::uint64_t at = argc > 3 ? std::strtoull(argv[3], nullptr, 10) : 0;
  const auto fetcher = ByteFetcher::open(*url, ByteFetcher::programmeBytesLimit);
  const auto reader = fetcher->makeReader();
  const auto began = Clock::now();
  const Reading reading = read(*reader, at, rate);
  const double seconds = Seconds(Clock::now() - began).count();
  if (rate > 0) {
    std::printf(
        "{\"bytes\": %llu, \"seconds\": %.3f, \"waited\": %.3f, \"longest\": %.3f, \"ended\": %s, \"failure\": "
        "\"%s\"}\n",
        static_cast<unsigned long long>(reading.bytes), seconds, reading.waited.count(), reading.longest.count(),
        reading.outcome == Outcome::ended ? "true" : "false",
        fetcher->failure() ? fetcher->failure()->message.c_str() : "");
  } else {
    std::printf("%.3f s, %.0f MB/s\n", seconds, static_cast<double>(reading.bytes) / 1e6 / seconds);
  }
  return reading.outcome == Outcome::ended ? 0 : 1;
}
