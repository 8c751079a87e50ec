#include "platform/avfoundation/segments/SegmentRecord.h"

#include <algorithm>
#include <cstring>
#include <string_view>

namespace {

constexpr std::int64_t microsecond = 1000;
constexpr unsigned textBits = 8, timeBits = 44;
constexpr std::int64_t timeLimit = (std::int64_t{1} << timeBits) - 1;

std::string oneLine(std::string text) {
  constexpr std::size_t fieldBytesLimit = 300;
  text.resize(std::min(text.size(), fieldBytesLimit));
  std::ranges::replace_if(
      text, [](unsigned char c) { return c < 0x20; }, ' ');
  return text;
}

std::string_view takeUntil(std::string_view& text, char mark) {
  const auto end = std::min(text.find(mark), text.size());
  const auto taken = text.substr(0, end);
  text.remove_prefix(std::min(end + 1, text.size()));
  return taken;
}

}  // namespace

std::vector<std::byte> bytesOf(SegmentRecord record, std::span<const std::byte> content) {
  record.size = static_cast<std::uint32_t>(content.size());
  std::vector<std::byte> bytes(sizeof record + content.size());
  std::memcpy(bytes.data(), &record, sizeof record);
  std::ranges::copy(content, bytes.begin() + sizeof record);
  return bytes;
}

std::optional<SegmentRecord> segmentRecord(std::span<const std::byte> head) {
  SegmentRecord record;
  if (head.size() != sizeof record) return std::nullopt;
  std::memcpy(&record, head.data(), sizeof record);
  const bool isOurs = record.mark == SegmentRecord::madeByUs && record.kind >= SegmentRecord::Kind::facts &&
                      record.kind <= SegmentRecord::Kind::over && record.size <= SegmentRecord::sizeLimit;
  return isOurs ? std::optional(record) : std::nullopt;
}

std::vector<std::byte> bytesOf(const SegmentFacts& facts) {
  std::string text = (facts.hasAudioTrack ? "+" : "-") + oneLine(facts.audioLanguage) + "\n";
  for (const auto& each : facts.texts) text += oneLine(each.language) + "\t" + oneLine(each.name) + "\n";
  const auto bytes = std::as_bytes(std::span(text));
  return {bytes.begin(), bytes.end()};
}

SegmentFacts segmentFacts(std::span<const std::byte> bytes) {
  std::string_view text(reinterpret_cast<const char*>(bytes.data()), bytes.size());
  SegmentFacts facts;
  auto audio = takeUntil(text, '\n');
  facts.hasAudioTrack = audio.starts_with('+');
  audio.remove_prefix(std::min<std::size_t>(1, audio.size()));
  facts.audioLanguage = audio;
  while (!text.empty() && facts.texts.size() < SegmentWish::textsLimit) {
    auto line = takeUntil(text, '\n');
    const auto language = takeUntil(line, '\t');
    facts.texts.push_back({std::string(language), std::string(line)});
  }
  return facts;
}

std::uint64_t SegmentWish::packed() const {
  const auto at = static_cast<std::uint64_t>(std::clamp<std::int64_t>(time / microsecond, 0, timeLimit));
  const std::uint64_t which = text ? std::min(*text, textsLimit - 1) + 1 : 0;
  return (std::uint64_t{number % numbers} << (textBits + timeBits)) | (which << timeBits) | at;
}

SegmentWish SegmentWish::unpacked(std::uint64_t packed) {
  SegmentWish wish;
  wish.time = static_cast<std::int64_t>(packed & timeLimit) * microsecond;
  const auto which = static_cast<unsigned>(packed >> timeBits) & ((1u << textBits) - 1);
  if (which > 0) wish.text = which - 1;
  wish.number = static_cast<unsigned>(packed >> (textBits + timeBits)) % numbers;
  return wish;
}
