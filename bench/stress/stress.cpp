// Many items in little time, as under a viewer who zaps, with a server that breaks off. Says what was not as it should
// be, and at the end one line with the deaths of media processes that nobody asked for; 1 when something was wrong.
//
//   bench_stress MODE SAMPLES [ROUNDS] [SEED]
//
//   early     items dropped within some milliseconds of their loading
//   cut       films that break off, for good, for once, or because they are shorter than they say
//   end       short runs to the end, eight at once
//   seek      seeks to anywhere, playing and paused
//   startat   items that begin in the middle
#include <glib.h>

#include <array>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <map>

#include "bench/stress/Load.h"

using namespace std::chrono_literals;

namespace {

constexpr auto patience = 14s;
constexpr double length = 10;  // of the clips that are sought in, in seconds
constexpr std::array films{"clip.mp4",       "@clip.mp4", "clip.mkv",       "@clip.mkv", "clip.ts",
                           "fragmented.mp4", "@clip.ts",  "@indexlast.mp4", "titled.mp4"};

int deaths = 0;

void countDeath(const char*, GLogLevelFlags, const char* message, void*) {
  ++deaths;
  std::printf("%s\n", message);
}

std::string seconds(double value) {
  return std::to_string(value).substr(0, 5);
}

void wait(Load& load, RunLoop::Duration duration) {
  load.loop.runUntil([] { return false; }, duration);
}

void early(Load& load, int rounds) {
  constexpr std::array more{"@hls/master.m3u8", "half.mp4", "@oneframe.mp4", "corrupt.mp4"};
  for (int round = 0; round < rounds; ++round) {
    const auto at = static_cast<std::size_t>(round) % (films.size() + more.size());
    Item item(load, at < films.size() ? films[at] : more[at - films.size()]);
    item.engine->load(kCMTimeZero);
    if (round % 3 == 0) item.engine->setRate(1);
    if (round % 4 == 0) item.engine->seek(CMTimeMake(load.below(9), 1), {});
    wait(load, std::chrono::milliseconds(load.below(round % 2 ? 40 : 400)));
  }
}

void cut(Load& load, int rounds) {
  MediaEngineSettings::shared().firstFrameSilenceLimit = 1;
  for (int round = 0; round < rounds; ++round) {
    const std::string name = std::array{"clip.mp4", "clip.mkv", "clip.ts", "fragmented.mp4"}[round / 4 % 4];
    const bool isOnce = round % 4 == 0;
    const auto place = static_cast<std::size_t>(load.below(round % 4 == 1 ? 30'000 : 1'000'000));
    auto reply = load.replyOf(name);
    reply.ranges = isOnce;
    if (round % 4 != 3) reply.cutAfter = place;
    if (round % 4 == 3) {  // a file that ends there, and says so
      reply.file.clear();
      reply.body = std::string(place, '\0');
      if (std::FILE* file = std::fopen(load.replyOf(name).file.c_str(), "rb")) {
        reply.body.resize(std::fread(reply.body.data(), 1, place, file));
        std::fclose(file);
      }
    }
    const std::string path = "/cut" + std::to_string(round) + name;
    load.server.on(path, [reply, isOnce, count = std::make_shared<int>(0)](const HTTPServer::Request&) {
      auto answer = reply;
      if (isOnce && (*count)++ > 0) answer.cutAfter.reset();
      return answer;
    });
    Item item(load, "@" + path.substr(1));
    item.engine->load(kCMTimeZero);
    const std::string what = path + " cut at " + std::to_string(place);
    if (!load.loop.runUntil([&] { return item.isTold(); }, patience)) load.note(what + ": no answer");
    if (isOnce && item.failure) load.note(what + " once: " + item.failure->message);
    item.engine->setRate(1);
    if (item.isReady) wait(load, 100ms);
  }
}

void end(Load& load, int rounds) {
  constexpr std::array clips{"half.mp4",   "@half.mp4", "clip.mkv", "@clip.mkv",    "clip.ts",  "silent.mp4",
                             "titled.mp4", "odd.mp4",   "@clip.ts", "oneframe.mp4", "@clip.mp4"};
  std::vector<std::unique_ptr<Item>> items;
  int begun = 0;
  while (begun < rounds || !items.empty()) {
    while (items.size() < 8 && begun < rounds) {
      items.push_back(std::make_unique<Item>(load, clips[static_cast<std::size_t>(begun++) % clips.size()]));
      Item& item = *items.back();
      item.atReady = [&item] {
        for (const auto& track : item.engine->tracks()) {
          if (track.kind == MediaTrack::Kind::subtitle) return item.engine->selectLegibleTrack(track.identifier);
        }
      };
      const bool isLong = item.clip.find("clip") != std::string::npos || item.clip == "titled.mp4";
      item.engine->load(isLong ? CMTimeMakeWithSeconds(length - 0.6, 1000) : kCMTimeZero);
      item.engine->setRate(1);
    }
    wait(load, 20ms);
    std::erase_if(items, [&](const auto& item) {
      const bool isLate = item->age() > 20;
      if (item->failure || isLate) {
        load.note(item->clip + ": " +
                  (item->failure ? item->failure->message : "no end at " + seconds(item->position())));
      }
      return item->failure || item->hasEnded || isLate;
    });
  }
}

void seek(Load& load, int rounds) {
  const int each = (rounds + static_cast<int>(films.size()) - 1) / static_cast<int>(films.size());
  for (const char* clip : films) {
    Item item(load, clip);
    item.engine->load(kCMTimeZero);
    load.loop.runUntil([&] { return item.isTold(); }, patience);
    double longest = 0;
    for (int round = 0; round < each && !item.failure; ++round) {
      // Fragments tell their length as they come: beyond what is known is its end.
      const double known = CMTimeGetSeconds(item.engine->duration());
      const double place = std::min(load.below(1000) * length / 1000, known);
      std::optional<bool> isThere;
      const auto began = load.loop.now();
      item.engine->setRate(round % 3 == 0);
      item.engine->seek(CMTimeMakeWithSeconds(place, 1'000'000), [&](bool finished) { isThere = finished; });
      load.loop.runUntil([&] { return isThere || item.failure; }, patience);
      longest = std::max(longest, std::chrono::duration<double>(load.loop.now() - began).count());
      const std::string what = std::string(clip) + ": the seek to " + seconds(place);
      if (!isThere.value_or(false)) {
        load.note(what + (isThere ? " was refused" : " has no end"));
      } else if (std::abs(item.position() - place) > 0.25) {
        load.note(what + " came to " + seconds(item.position()));
      }
    }
    if (item.failure) load.note(std::string(clip) + ": " + item.failure->message);
    std::printf("%s: %d seeks, the longest %.2f s\n", clip, each, longest);
  }
}

void startat(Load& load, int rounds) {
  for (int round = 0; round < rounds; ++round) {
    Item item(load, films[static_cast<std::size_t>(round) % films.size()]);
    const double place = load.below(950) * length / 1000;
    const auto time = CMTimeMakeWithSeconds(place, 1'000'000);
    std::optional<bool> isThere;
    if (round % 2) {
      item.engine->seek(time, [&](bool finished) { isThere = finished; });
    } else {
      item.atReady = [&] { isThere = true; };
    }
    item.engine->load(round % 2 ? kCMTimeZero : time);
    load.loop.runUntil([&] { return isThere || item.failure; }, patience);
    if (!isThere.value_or(false)) {
      load.note(item.clip + " does not begin at " + seconds(place) +
                (item.failure ? ": " + item.failure->message : ""));
    } else if (std::abs(item.position() - std::min(place, CMTimeGetSeconds(item.engine->duration()))) > 0.1) {
      load.note(item.clip + " begins at " + seconds(item.position()) + ", not " + seconds(place));
    }
  }
}

}  // namespace

int main(int argc, char** argv) {
  const std::map<std::string, void (*)(Load&, int)> modes{
      {"early", early}, {"cut", cut}, {"end", end}, {"seek", seek}, {"startat", startat}};
  const auto mode = modes.find(argc > 2 ? argv[1] : "");
  if (mode == modes.end()) {
    std::fputs("usage: bench_stress early|cut|end|seek|startat SAMPLES [ROUNDS] [SEED]\n", stderr);
    return 2;
  }
  std::setvbuf(stdout, nullptr, _IOLBF, 0);
  g_log_set_handler("ymr", GLogLevelFlags(G_LOG_LEVEL_WARNING | G_LOG_LEVEL_CRITICAL), countDeath, nullptr);
  MediaEngineSettings::shared().audio = MediaEngineSettings::Audio::none;
  const int rounds = argc > 3 ? std::atoi(argv[3]) : 100;
  Load load(argv[2], argc > 4 ? static_cast<unsigned>(std::atoi(argv[4])) : 1);
  const auto began = load.loop.now();
  mode->second(load, rounds);
  load.comeToRest();
  std::printf("%d rounds in %.1f s, %d faults, %d deaths\n", rounds,
              std::chrono::duration<double>(load.loop.now() - began).count(), load.faults(), deaths);
  return load.faults() > 0;
}
