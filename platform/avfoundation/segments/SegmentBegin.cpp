#include "platform/avfoundation/segments/SegmentBegin.h"

#include <algorithm>
#include <string_view>

namespace SegmentBegin {

namespace {

constexpr std::size_t packetBytes = 188;
constexpr std::byte packetMark{0x47};

std::string_view textOf(std::span<const std::byte> bytes) {
  return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

unsigned at(std::span<const std::byte> bytes, std::size_t place) {
  return std::to_integer<unsigned>(bytes[place]);
}

bool isPackets(std::span<const std::byte> bytes) {
  return !bytes.empty() && bytes[0] == packetMark && (bytes.size() <= packetBytes || bytes[packetBytes] == packetMark);
}

// A box of four small letters or digits, as fragments and what stands before them begin.
bool isBox(std::span<const std::byte> bytes) {
  const auto isOfName = [](std::byte value) {
    const auto c = std::to_integer<char>(value);
    return (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9');
  };
  return bytes.size() >= 8 && std::ranges::all_of(bytes.subspan(4, 4), isOfName);
}

// 33 bits, with marks in between.
std::uint64_t ticksOf(std::span<const std::byte> five) {
  const std::uint64_t high = (at(five, 0) >> 1) & 7;
  const std::uint64_t middle = (at(five, 1) << 7) | (at(five, 2) >> 1);
  const std::uint64_t low = (at(five, 3) << 7) | (at(five, 4) >> 1);
  return high << 30 | middle << 15 | low;
}

// Notes the time in one packet that begins a picture or a piece of sound.
void noteTime(std::span<const std::byte> packet, FirstTimes& times) {
  const bool begins = at(packet, 1) & 0x40;
  const unsigned parts = (at(packet, 3) >> 4) & 3;
  if (!begins || !(parts & 1)) return;
  const std::size_t head = 4 + (parts & 2 ? 1 + at(packet, 4) : 0);
  constexpr std::size_t headWithTime = 14;
  if (head + headWithTime > packet.size()) return;
  const auto unit = packet.subspan(head);
  if (at(unit, 0) != 0 || at(unit, 1) != 0 || at(unit, 2) != 1 || !(at(unit, 7) & 0x80)) return;
  const unsigned stream = at(unit, 3);
  const bool isPicture = stream >= 0xE0 && stream <= 0xEF;
  const bool isSound = (stream >= 0xC0 && stream <= 0xDF) || stream == 0xBD || stream == 0xFD;
  if (isPicture && !times.picture) times.picture = ticksOf(unit.subspan(9, 5));
  if (isSound && !times.sound) times.sound = ticksOf(unit.subspan(9, 5));
}

}  // namespace

bool looksLikeMedia(std::span<const std::byte> bytes) {
  auto text = textOf(bytes);
  if (isPackets(bytes) || isBox(bytes) || text.starts_with("ID3")) return true;
  if (text.starts_with("\xEF\xBB\xBF")) text.remove_prefix(3);
  if (text.starts_with("WEBVTT")) return true;
  if (bytes.size() < 2) return false;
  // Frames of sound: two of MPEG's kinds, and two of Dolby's.
  const unsigned mark = at(bytes, 0) << 8 | at(bytes, 1);
  return (mark & 0xFFE0) == 0xFFE0 || mark == 0x0B77;
}

FirstTimes firstTimes(std::span<const std::byte> bytes) {
  FirstTimes times;
  if (isPackets(bytes)) {
    for (; bytes.size() >= packetBytes && bytes[0] == packetMark; bytes = bytes.subspan(packetBytes)) {
      noteTime(bytes.first(packetBytes), times);
      if (times.picture && times.sound) break;
    }
    return times;
  }
  constexpr std::string_view owner("com.apple.streaming.transportStreamTimestamp\0", 45);
  const auto text = textOf(bytes.first(std::min<std::size_t>(bytes.size(), 4096)));
  const auto found = text.starts_with("ID3") ? text.find(owner) : std::string_view::npos;
  if (found == std::string_view::npos || found + owner.size() + 8 > text.size()) return times;
  std::uint64_t ticks = 0;
  for (std::size_t i = 0; i < 8; ++i) ticks = ticks << 8 | at(bytes, found + owner.size() + i);
  times.sound = ticks & ((std::uint64_t{1} << 33) - 1);
  return times;
}

}  // namespace SegmentBegin
