#include "platform/avfoundation/process/Wire.h"

#include <cmath>
#include <concepts>
#include <cstring>
#include <type_traits>
#include <utility>

#include "platform/foundation/UTF8.h"

namespace wire {
namespace {

template <class Number>
constexpr bool isPlain = std::is_arithmetic_v<Number> && !std::is_same_v<Number, bool>;

// At most `limit` bytes of it, in whole characters.
std::string_view cut(std::string_view text, std::size_t limit) {
  if (text.size() <= limit) return text;
  text = text.substr(0, limit);
  while (!text.empty() && !lastUTF8Character(text).isValid) text.remove_suffix(1);
  return text;
}

// The last value of each enumeration that goes over the wire.
constexpr auto lastOf(MediaPurpose) {
  return MediaPurpose::anyAdvertisement;
}
constexpr auto lastOf(MediaTrack::Kind) {
  return MediaTrack::Kind::closedCaption;
}
constexpr auto lastOf(MediaEngineSettings::Audio) {
  return MediaEngineSettings::Audio::none;
}

class Writer {
 public:
  static constexpr bool isReader = false;
  std::vector<std::byte> bytes;

  bool raw(const void* data, std::size_t size) {
    const auto* from = static_cast<const std::byte*>(data);
    bytes.insert(bytes.end(), from, from + size);
    return true;
  }
  bool text(const std::string& value, std::size_t limit) {
    const auto kept = cut(value, limit);
    const auto size = static_cast<std::uint32_t>(kept.size());
    return raw(&size, sizeof size) && raw(kept.data(), kept.size());
  }
};

class Reader {
 public:
  static constexpr bool isReader = true;
  std::span<const std::byte> rest;

  bool raw(void* data, std::size_t size) {
    if (rest.size() < size) return false;
    std::memcpy(data, rest.data(), size);
    rest = rest.subspan(size);
    return true;
  }
  bool text(std::string& value, std::size_t limit) {
    std::uint32_t size = 0;
    if (!raw(&size, sizeof size) || size > limit || size > rest.size()) return false;
    value.resize(size);
    return raw(value.data(), size) && isUTF8(value);
  }
};

// One function a kind of value, for both ways: it writes the value, or reads it and says whether it is one.

template <class Archive, class Number>
requires isPlain<Number>
bool pass(Archive& archive, Number& value) {
  if (!archive.raw(&value, sizeof value)) return false;
  if constexpr (Archive::isReader && std::is_floating_point_v<Number>) return std::isfinite(value);
  return true;
}

template <class Archive>
bool pass(Archive& archive, bool& value) {
  std::uint8_t byte = value;
  if (!archive.raw(&byte, 1) || byte > 1) return false;
  value = byte != 0;
  return true;
}

template <class Archive, class Enumeration>
requires std::is_enum_v<Enumeration>
bool pass(Archive& archive, Enumeration& value) {
  auto number = static_cast<std::uint8_t>(value);
  if (!archive.raw(&number, 1) || number > static_cast<std::uint8_t>(lastOf(Enumeration{}))) return false;
  value = static_cast<Enumeration>(number);
  return true;
}

template <class Archive>
bool pass(Archive& archive, std::string& value) {
  return archive.text(value, wordLimit);
}

template <class Archive, class Number, std::size_t size>
bool pass(Archive& archive, std::array<Number, size>& values) {
  return archive.raw(values.data(), sizeof values);
}

template <class Archive>
bool pass(Archive& archive, CMTime& time) {
  constexpr std::uint32_t known = kCMTimeFlags_Valid | kCMTimeFlags_HasBeenRounded | kCMTimeFlags_ImpliedValueFlagsMask;
  if (!pass(archive, time.value) || !pass(archive, time.timescale) || !pass(archive, time.flags)) return false;
  return (time.flags & ~known) == 0 && (!CMTIME_IS_NUMERIC(time) || time.timescale > 0);
}

template <class Archive>
bool pass(Archive& archive, CMTimeRange& range) {
  return pass(archive, range.start) && pass(archive, range.duration) && CMTIME_IS_NUMERIC(range.start) &&
         CMTIME_IS_NUMERIC(range.duration) && range.duration >= kCMTimeZero;
}

template <class Archive>
bool pass(Archive& archive, MediaTrack& track) {
  constexpr int sideLimit = 1 << 16;
  return pass(archive, track.kind) && pass(archive, track.identifier) && pass(archive, track.languageTag) &&
         pass(archive, track.title) && pass(archive, track.nominalFrameRate) && pass(archive, track.width) &&
         pass(archive, track.height) && track.nominalFrameRate >= 0 && track.width >= 0 && track.width < sideLimit &&
         track.height >= 0 && track.height < sideLimit;
}

template <class Archive>
bool pass(Archive& archive, NSError& error) {
  return pass(archive, error.domain) && pass(archive, error.code) && archive.text(error.message, sentenceLimit);
}

bool isCaptionText(const std::string& text) {
  for (const char c : text) {
    if ((static_cast<unsigned char>(c) < 0x20 && c != '\n') || c == 0x7f) return false;
  }
  return !text.empty();
}

template <class Archive>
bool pass(Archive& archive, MediaCaption& caption) {
  return archive.text(caption.text, sentenceLimit) && pass(archive, caption.isMarkup) &&
         (!Archive::isReader || isCaptionText(caption.text));
}

template <class Archive>
bool pass(Archive& archive, MediaEngineSettings& settings) {
  return pass(archive, settings.firstFrameSilenceLimit) && pass(archive, settings.programmeSilenceLimit) &&
         pass(archive, settings.adOvertimeLimit) && pass(archive, settings.lengthOfUnknownAd) &&
         pass(archive, settings.audio) && archive.text(settings.soundDevice, sentenceLimit);
}

template <class Archive, class Value>
bool pass(Archive& archive, std::optional<Value>& value) {
  bool has = value.has_value();
  if (!pass(archive, has)) return false;
  if (has && !value) value.emplace();
  return !has || pass(archive, *value);
}

// More than the limit are left out.
template <class Archive, class Value>
bool passList(Archive& archive, std::vector<Value>& values, std::size_t limit) {
  auto count = static_cast<std::uint32_t>(std::min(values.size(), limit));
  if (!pass(archive, count) || count > limit) return false;
  for (std::uint32_t i = 0; i < count; ++i) {
    if constexpr (Archive::isReader) values.emplace_back();
    if (!pass(archive, values[i])) return false;
  }
  return true;
}

template <class Archive, class... Fields>
bool passAll(Archive& archive, Fields&... fields) {
  return (pass(archive, fields) && ...);
}

template <class Archive>
bool pass(Archive& a, Load& m) {
  return a.text(m.url, addressLimit) && passAll(a, m.purpose, m.hasFile, m.hasBytes, m.areSegments, m.isNetworkAllowed,
                                                m.isWithoutTexts, m.hasBegun, m.start, m.settings);
}
template <class Archive>
bool pass(Archive& a, SetRate& m) {
  return pass(a, m.rate);
}
template <class Archive>
bool pass(Archive& a, Seek& m) {
  return passAll(a, m.number, m.time);
}
template <class Archive>
bool pass(Archive& a, SelectLegible& m) {
  return pass(a, m.identifier);
}
template <class Archive>
bool pass(Archive& a, SetMuted& m) {
  return pass(a, m.muted);
}
template <class Archive>
bool pass(Archive& a, SetSink& m) {
  return passAll(a, m.number, m.isWanted);
}
template <class Archive>
bool pass(Archive& a, Area& m) {
  return passAll(a, m.number, m.slotSize, m.count);
}
template <class Archive>
bool pass(Archive& a, GiveBack& m) {
  return pass(a, m.picture);
}
template <class Archive>
bool pass(Archive& a, Hello& m) {
  return pass(a, m.version);
}
template <class Archive>
bool pass(Archive& a, Facts& m) {
  return passAll(a, m.isNewDuration, m.areNewTracks, m.duration, m.isLive) && passList(a, m.tracks, tracksLimit) &&
         (!CMTIME_IS_NUMERIC(m.duration) || m.duration >= kCMTimeZero);
}
template <class Archive>
bool pass(Archive&, Ready&) {
  return true;
}
template <class Archive>
bool pass(Archive& a, Failed& m) {
  return pass(a, m.error);
}
template <class Archive>
bool pass(Archive& a, Buffering& m) {
  return passAll(a, m.isEmpty, m.isLikelyToKeepUp) && passList(a, m.ranges, rangesLimit);
}
template <class Archive>
bool pass(Archive&, Ended&) {
  return true;
}
template <class Archive>
bool pass(Archive& a, Caption& m) {
  return pass(a, m.caption);
}
template <class Archive>
bool pass(Archive& a, SeekDone& m) {
  return passAll(a, m.number, m.finished);
}
template <class Archive>
bool pass(Archive& a, AreaWanted& m) {
  return pass(a, m.slotSize);
}
template <class Archive>
bool pass(Archive& a, Picture& m) {
  return passAll(a, m.number, m.sink, m.isOnDevice, m.area, m.slot, m.format, m.interlaceMode, m.flags, m.chromaSite,
                 m.colours, m.width, m.height, m.aspectNumerator, m.aspectDenominator, m.rateNumerator,
                 m.rateDenominator, m.offsets, m.strides, m.rotation, m.mirrored, m.time);
}

template <class Archive>
bool pass(Archive& a, Remark& m) {
  return pass(a, m.text) && (!Archive::isReader || isCaptionText(m.text));
}

template <class Message, std::size_t index = 0>
std::optional<Message> decodeAs(std::size_t wanted, Reader& reader) {
  if constexpr (index < std::variant_size_v<Message>) {
    if (wanted != index) return decodeAs<Message, index + 1>(wanted, reader);
    std::variant_alternative_t<index, Message> message;
    if (pass(reader, message) && reader.rest.empty()) return Message(std::move(message));
  }
  return std::nullopt;
}

}  // namespace

template <class Message>
std::vector<std::byte> encode(const Message& message) {
  Writer writer;
  auto index = static_cast<std::uint32_t>(message.index());
  pass(writer, index);
  // Nothing is changed by writing.
  std::visit([&writer](const auto& value) { pass(writer, const_cast<std::remove_cvref_t<decltype(value)>&>(value)); },
             message);
  if (writer.bytes.size() > messageLimit) writer.bytes.clear();
  return std::move(writer.bytes);
}

template <class Message>
std::optional<Message> decode(std::span<const std::byte> bytes) {
  Reader reader{bytes};
  std::uint32_t index = 0;
  if (bytes.size() > messageLimit || !pass(reader, index)) return std::nullopt;
  return decodeAs<Message>(index, reader);
}

template std::vector<std::byte> encode(const ToProcess&);
template std::vector<std::byte> encode(const ToHost&);
template std::optional<ToProcess> decode(std::span<const std::byte>);
template std::optional<ToHost> decode(std::span<const std::byte>);

}  // namespace wire
