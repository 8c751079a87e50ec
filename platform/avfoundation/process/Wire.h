#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <variant>
#include <vector>

#include "platform/avfoundation/engine/MediaEngine.h"

// What a host and its media process say to each other: one message a datagram of their socket. Both are of one build,
// and the first word of the process says of which; so numbers go as they lie in memory.
//
// The process trusts the host. The host trusts nothing: decode() lets nothing pass that is not what it says here.
namespace wire {

// Of a message, encoded.
inline constexpr std::size_t messageLimit = 128 * 1024;
// Of texts, in bytes. What is longer is cut where it is sent.
inline constexpr std::size_t wordLimit = 512;       // identifiers, tags, titles, domains
inline constexpr std::size_t sentenceLimit = 8192;  // messages, captions
inline constexpr std::size_t addressLimit = 64 * 1024;
inline constexpr std::size_t tracksLimit = 256;
inline constexpr std::size_t rangesLimit = 64;

// Grows with every change below.
inline constexpr std::uint32_t version = 4;

// ---- To the media process.

// The first, and once. With the descriptor of the shared position (SharedPosition), and that of the file when there is
// one (`hasFile`), or those of the bytes (ByteStoreDescriptors, in their order) when they are brought (`hasBytes`).
struct Load {
  std::string url;
  MediaPurpose purpose = MediaPurpose::programme;
  bool hasFile = false;
  bool hasBytes = false;
  bool areSegments = false;
  bool isNetworkAllowed = false;  // what fetches is the media library
  bool isWithoutTexts = false;
  bool hasBegun = false;  // in a process before this one
  CMTime start;
  MediaEngineSettings settings;
};
struct SetRate {
  double rate = 0;
};
// A rising number; SeekDone answers it.
struct Seek {
  std::uint64_t number = 0;
  CMTime time;
};
struct SelectLegible {
  std::optional<std::string> identifier;
};
struct SetMuted {
  bool muted = false;
};
// Pictures from now on carry this number, when somebody wants any.
struct SetSink {
  std::uint64_t number = 0;
  bool isWanted = false;
};
// Memory for pictures: `count` slots of `slotSize` bytes, in the descriptor that comes with it. Answers AreaWanted.
struct Area {
  std::uint32_t number = 0;
  std::uint64_t slotSize = 0;
  std::uint32_t count = 0;
};
// Nobody looks at the picture any more.
struct GiveBack {
  std::uint64_t picture = 0;
};
using ToProcess = std::variant<Load, SetRate, Seek, SelectLegible, SetMuted, SetSink, Area, GiveBack>;

// ---- To the host.

// The first: libraries are loaded, Load may come.
struct Hello {
  std::uint32_t version = wire::version;
};
// What is known of the media, before Ready and whenever it changes.
struct Facts {
  bool isNewDuration = false;
  bool areNewTracks = false;
  CMTime duration;
  bool isLive = false;
  std::vector<MediaTrack> tracks;
};
struct Ready {};
struct Failed {
  NSError error;
};
struct Buffering {
  bool isEmpty = false;
  bool isLikelyToKeepUp = false;
  std::vector<CMTimeRange> ranges;
};
struct Ended {};
struct Caption {
  std::optional<MediaCaption> caption;
};
struct SeekDone {
  std::uint64_t number = 0;
  bool finished = false;
};
// Room is wanted for pictures of so many bytes each.
struct AreaWanted {
  std::uint64_t slotSize = 0;
};
// The picture that is due. Its pixels stay as they are until GiveBack has come.
struct Picture {
  std::uint64_t number = 0;  // rising
  std::uint64_t sink = 0;    // see SetSink
  // Where they lie: in a slot, or in memory of a decoder's device whose descriptor comes with this.
  bool isOnDevice = false;
  std::uint32_t area = 0;
  std::uint32_t slot = 0;
  // As the media library counts them.
  std::uint32_t format = 0;
  std::uint32_t interlaceMode = 0;
  std::uint32_t flags = 0;
  std::uint32_t chromaSite = 0;
  std::array<std::uint32_t, 4> colours{};  // range, matrix, transfer, primaries
  std::int32_t width = 0, height = 0;
  std::int32_t aspectNumerator = 1, aspectDenominator = 1;
  std::int32_t rateNumerator = 0, rateDenominator = 1;
  std::array<std::uint64_t, 4> offsets{};  // of the planes within the slot, or the memory
  std::array<std::int32_t, 4> strides{};
  std::int32_t rotation = 0;
  bool mirrored = false;
  CMTime time;
};
// A word for the host's log, without control characters; not empty.
struct Remark {
  std::string text;
};
using ToHost =
    std::variant<Hello, Facts, Ready, Failed, Buffering, Ended, Caption, SeekDone, AreaWanted, Picture, Remark>;

// Texts are cut to their limits; empty when it is longer than a message may be.
template <class Message>
std::vector<std::byte> encode(const Message& message);
// nil for anything that encode() does not make: too short, too long, texts that are not UTF-8 or too long, numbers
// that are none, values that nothing has.
template <class Message>
std::optional<Message> decode(std::span<const std::byte> bytes);

}  // namespace wire
