#include "platform/avfoundation/hls/HLSPlaylist.h"

#include <algorithm>
#include <charconv>

#include "platform/avfoundation/hls/HLSTags.h"

using namespace HLSTags;
using namespace HLSLimits;

namespace {

constexpr std::string_view byteOrderMark = "\xEF\xBB\xBF";

HLSFault malformed(std::string reason) {
  return {HLSFault::Kind::malformed, std::move(reason)};
}

// Reads the lines of one text, whichever kind of playlist it turns out to be.
class Reader {
 public:
  // Nothing more is read after a fault.
  std::optional<HLSFault> take(std::string_view line);
  HLSPlaylist finish();

 private:
  std::optional<HLSFault> takeAddress(std::string_view line);
  std::optional<HLSFault> takeSegment(std::string_view line);
  std::optional<HLSFault> takeTag(std::string_view line);
  bool takeMasterTag(std::string_view line);
  bool takeListTag(std::string_view line);
  void takeVariant(const Attributes& attributes);
  void takeRendition(const Attributes& attributes);
  std::optional<HLSFault> takeKey(const Attributes& attributes);
  std::optional<HLSFault> takeMap(const Attributes& attributes);
  std::optional<HLSByteRange> range(std::string_view text, std::string_view uri, bool isOfMap);

  HLSMasterPlaylist master_;
  HLSMediaPlaylist list_;
  bool isMaster_ = false;
  bool hasTarget_ = false;
  std::int64_t whole_ = 0;
  // Of the address that comes next.
  std::optional<HLSVariant> variant_;
  std::optional<std::int64_t> duration_;
  std::string rangeText_;
  bool isGap_ = false;
  // Of all that follow.
  std::optional<std::size_t> key_, map_;
  bool isKeyUnusable_ = false, wasKeyTag_ = false;
  std::string unusableKey_;
  std::uint64_t discontinuity_ = 0;
  std::string rangeUri_;
  std::uint64_t rangeEnd_ = 0;  // where the range before has ended in rangeUri_
};

std::optional<HLSFault> Reader::take(std::string_view line) {
  if (line.empty()) return std::nullopt;
  if (line[0] != '#') return takeAddress(line);
  if (!line.starts_with("#EXT")) return std::nullopt;
  return takeTag(line);
}

std::optional<HLSFault> Reader::takeTag(std::string_view line) {
  const bool isKey = line.starts_with("#EXT-X-KEY:");
  if (!isKey) wasKeyTag_ = false;
  if (takeMasterTag(line) || takeListTag(line)) return std::nullopt;
  if (const auto key = valueOf(line, "#EXT-X-KEY")) return takeKey(Attributes(*key));
  if (const auto map = valueOf(line, "#EXT-X-MAP")) return takeMap(Attributes(*map));
  if (const auto length = valueOf(line, "#EXTINF")) {
    duration_ = seconds(*length);
    if (!duration_ || *duration_ > durationLimit) return malformed("a segment has no length");
  }
  return std::nullopt;
}

bool Reader::takeMasterTag(std::string_view line) {
  if (const auto variant = valueOf(line, "#EXT-X-STREAM-INF")) {
    isMaster_ = true;
    takeVariant(Attributes(*variant));
  } else if (const auto rendition = valueOf(line, "#EXT-X-MEDIA")) {
    isMaster_ = true;
    takeRendition(Attributes(*rendition));
  } else {
    return false;
  }
  return true;
}

bool Reader::takeListTag(std::string_view line) {
  if (const auto target = valueOf(line, "#EXT-X-TARGETDURATION")) {
    const auto value = seconds(*target);
    hasTarget_ = value.has_value();
    list_.targetDuration = std::min(value.value_or(0), durationLimit);
  } else if (const auto sequence = valueOf(line, "#EXT-X-MEDIA-SEQUENCE")) {
    // Held far from where counting up would wrap.
    if (list_.segments.empty()) list_.firstSequence = std::min(number(*sequence).value_or(0), UINT64_MAX / 4);
  } else if (const auto first = valueOf(line, "#EXT-X-DISCONTINUITY-SEQUENCE")) {
    if (list_.segments.empty()) discontinuity_ = std::min(number(*first).value_or(0), UINT64_MAX / 4);
  } else if (valueOf(line, "#EXT-X-DISCONTINUITY")) {
    ++discontinuity_;
  } else if (valueOf(line, "#EXT-X-ENDLIST")) {
    list_.hasEnded = true;
  } else if (valueOf(line, "#EXT-X-GAP")) {
    isGap_ = true;
  } else if (const auto range = valueOf(line, "#EXT-X-BYTERANGE")) {
    rangeText_ = *range;
  } else {
    return false;
  }
  return true;
}

void Reader::takeVariant(const Attributes& attributes) {
  HLSVariant variant;
  variant.bandwidth = number(attributes.value("BANDWIDTH")).value_or(0);
  const auto size = attributes.value("RESOLUTION");
  const auto cross = size.find('x');
  if (cross != std::string_view::npos) {
    constexpr std::uint64_t sideLimit = 65'535;
    variant.width = static_cast<int>(std::min(number(size.substr(0, cross)).value_or(0), sideLimit));
    variant.height = static_cast<int>(std::min(number(size.substr(cross + 1)).value_or(0), sideLimit));
  }
  variant.codecs = attributes.value("CODECS");
  variant.audioGroup = attributes.value("AUDIO");
  variant.textGroup = attributes.value("SUBTITLES");
  variant_ = std::move(variant);
}

void Reader::takeRendition(const Attributes& attributes) {
  const auto type = attributes.value("TYPE");
  const bool isAudio = type == "AUDIO";
  HLSRendition rendition{
      .kind = isAudio ? HLSRendition::Kind::audio : HLSRendition::Kind::text,
      .group = std::string(attributes.value("GROUP-ID")),
      .name = std::string(attributes.value("NAME")),
      .language = std::string(attributes.value("LANGUAGE")),
      .uri = std::string(attributes.value("URI")),
      .isDefault = attributes.isYes("DEFAULT"),
  };
  const bool isUsable = isAudio || (type == "SUBTITLES" && !rendition.uri.empty());
  if (isUsable && master_.renditions.size() < renditionsLimit) master_.renditions.push_back(std::move(rendition));
}

// Of several keys in a row, each for another system, one that is known will do.
std::optional<HLSFault> Reader::takeKey(const Attributes& attributes) {
  const auto method = attributes.value("METHOD"), format = attributes.value("KEYFORMAT");
  const bool isPlain = format.empty() || format == "identity";
  const bool isUsable = method == "AES-128" && isPlain && !attributes.value("URI").empty();
  const bool isAnother = wasKeyTag_ && key_;  // one before it will do
  wasKeyTag_ = true;
  if (isAnother && !isUsable) return std::nullopt;
  key_.reset();
  isKeyUnusable_ = false;
  if (method == "NONE") return std::nullopt;
  if (!isUsable) {
    isKeyUnusable_ = true;
    unusableKey_ = std::string(method.empty() ? "no method" : method.substr(0, 40));
    if (!isPlain) unusableKey_ += ", DRM";
    return std::nullopt;
  }
  HLSKey key{.uri = std::string(attributes.value("URI")), .iv = {}};
  auto iv = attributes.value("IV");
  if (iv.starts_with("0x") || iv.starts_with("0X")) {
    iv.remove_prefix(2);
    auto& bytes = key.iv.emplace();
    for (std::size_t digit = 0; digit < std::min<std::size_t>(iv.size(), 32); ++digit) {
      // From the last digit on; what is not written is zero.
      const char* place = iv.data() + iv.size() - 1 - digit;
      std::uint8_t value = 0;
      if (std::from_chars(place, place + 1, value, 16).ec != std::errc()) return malformed("a key's IV is no number");
      bytes[15 - digit / 2] = static_cast<std::uint8_t>(bytes[15 - digit / 2] | value << (digit % 2 * 4));
    }
  }
  if (list_.keys.size() >= keysLimit) return malformed("it has too many keys");
  list_.keys.push_back(std::move(key));
  key_ = list_.keys.size() - 1;
  return std::nullopt;
}

std::optional<HLSFault> Reader::takeMap(const Attributes& attributes) {
  HLSMap map{.uri = std::string(attributes.value("URI")), .range = {}, .key = key_};
  if (map.uri.empty()) return malformed("a map has no address");
  if (list_.maps.size() >= keysLimit) return malformed("it has too many maps");
  if (const auto text = attributes.value("BYTERANGE"); !text.empty()) {
    map.range = range(text, map.uri, true);
    if (!map.range) return malformed("a byte range is none");
  }
  list_.maps.push_back(std::move(map));
  map_ = list_.maps.size() - 1;
  return std::nullopt;
}

std::optional<HLSByteRange> Reader::range(std::string_view text, std::string_view uri, bool isOfMap) {
  constexpr std::uint64_t placesLimit = std::uint64_t{1} << 60;
  const auto at = text.find('@');
  const auto length = number(text.substr(0, at));
  std::uint64_t first = !isOfMap && rangeUri_ == uri ? rangeEnd_ : 0;
  if (at != std::string_view::npos) {
    const auto told = number(text.substr(at + 1));
    if (!told) return std::nullopt;
    first = *told;
  }
  if (!length || *length == 0 || *length > placesLimit || first > placesLimit) return std::nullopt;
  if (!isOfMap) {
    if (rangeUri_ != uri) rangeUri_ = uri;
    rangeEnd_ = first + *length;
  }
  return HLSByteRange{first, *length};
}

std::optional<HLSFault> Reader::takeAddress(std::string_view line) {
  wasKeyTag_ = false;
  if (!variant_) return takeSegment(line);
  variant_->uri = line;
  if (master_.variants.size() < variantsLimit) master_.variants.push_back(std::move(*variant_));
  variant_.reset();
  return std::nullopt;
}

std::optional<HLSFault> Reader::takeSegment(std::string_view line) {
  if (isMaster_) return std::nullopt;
  if (!duration_) return malformed("a segment has no length");
  if (isKeyUnusable_) {
    return HLSFault{HLSFault::Kind::isProtected,
                    "it is protected in a way that can't be played (" + unusableKey_ + ")"};
  }
  whole_ += *duration_;
  if (list_.segments.size() >= segmentsLimit || whole_ > listDurationLimit) return malformed("it is too long");
  HLSSegment segment{.uri = std::string(line), .duration = *duration_};
  if (!rangeText_.empty()) {
    segment.range = range(rangeText_, line, false);
    if (!segment.range) return malformed("a byte range is none");
  }
  segment.key = key_;
  segment.map = map_;
  segment.isGap = isGap_;
  segment.discontinuity = discontinuity_;
  list_.segments.push_back(std::move(segment));
  duration_.reset();
  rangeText_.clear();
  isGap_ = false;
  return std::nullopt;
}

HLSPlaylist Reader::finish() {
  if (isMaster_) {
    if (master_.variants.empty()) return malformed("it names no streams");
    return std::move(master_);
  }
  if (!hasTarget_) return malformed("it has no target duration");
  for (const HLSSegment& segment : list_.segments) {
    list_.targetDuration = std::max(list_.targetDuration, segment.duration);
  }
  if (list_.hasEnded && list_.segments.empty()) return malformed("it names no segments");
  return std::move(list_);
}

}  // namespace

std::int64_t HLSMediaPlaylist::duration() const {
  std::int64_t sum = 0;
  for (const HLSSegment& segment : segments) sum += segment.duration;
  return sum;
}

HLSPlaylist readHLSPlaylist(std::string_view text) {
  if (text.size() > textBytesLimit) return malformed("it is too long");
  if (text.starts_with(byteOrderMark)) text.remove_prefix(byteOrderMark.size());
  text.remove_prefix(std::min(text.find_first_not_of(" \t\r\n"), text.size()));
  if (!valueOf(takeLine(text), "#EXTM3U")) return malformed("it is no playlist");
  Reader reader;
  while (!text.empty()) {
    const auto line = takeLine(text);
    if (line.size() > lineBytesLimit) return malformed("a line is too long");
    if (line.find('\0') != std::string_view::npos) return malformed("it is no text");
    if (auto fault = reader.take(line)) return std::move(*fault);
  }
  return reader.finish();
}
