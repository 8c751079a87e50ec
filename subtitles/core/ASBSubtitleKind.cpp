#include "subtitles/core/ASBSubtitleKind.h"

#include <algorithm>
#include <array>

#include "platform/foundation/UTF8.h"

using namespace std::string_view_literals;

namespace {

std::string_view beginningOf(std::string_view bytes) {
  return bytes.substr(0, 4096);
}

// Control characters that no encoding of text uses; of arbitrary bytes one in ten is one.
bool isBinary(std::string_view bytes) {
  const std::string_view sample = beginningOf(bytes);
  const auto isControl = [](unsigned char byte) {
    constexpr std::string_view ofText = "\t\n\v\f\r\x0e\x0f\x1b";  // with the shifts of ISO 2022
    return (byte < 0x20 && ofText.find(static_cast<char>(byte)) == ofText.npos) || byte == 0x7f;
  };
  return static_cast<std::size_t>(std::count_if(sample.begin(), sample.end(), isControl)) * 20 > sample.size();
}

std::string looksOfEightBits(std::string_view bytes) {
  std::size_t good = 0, bad = 0, line = 1, lineOfBad = 0;
  while (!bytes.empty()) {
    const UTF8Character character = firstUTF8Character(bytes);
    line += character.value == '\n';
    good += character.length > 1;
    bad += !character.isValid;
    if (!character.isValid && lineOfBad == 0) lineOfBad = line;
    bytes.remove_prefix(character.length);
  }
  return (good > bad ? "UTF-8 that is damaged, first in line "
                     : "Latin-1 or another eight-bit encoding, first in line ") +
         std::to_string(lineOfBad);
}

}  // namespace

ASBSubtitleKind kindOfContent(std::string_view content) {
  constexpr std::string_view signature = "WEBVTT";
  if (content.starts_with(signature) &&
      (content.size() == signature.size() || " \t\r\n"sv.find(content[signature.size()]) != content.npos)) {
    return ASBSubtitleKind::webVTT;
  }
  if (!endianOfUTF16(content).empty()) return ASBSubtitleKind::utf16;
  return isBinary(content) && content.find("-->") == content.npos ? ASBSubtitleKind::binary : ASBSubtitleKind::subRip;
}

// The times and spaces of subtitles are ASCII in any language, and so have the zeros that nothing else has.
std::string_view endianOfUTF16(std::string_view bytes) {
  constexpr std::size_t fewest = 4;
  const std::string_view sample = beginningOf(bytes);
  std::array<std::size_t, 2> zeros{};  // at even and at odd places
  for (std::size_t i = 0; i < sample.size(); ++i) zeros[i % 2] += sample[i] == '\0';
  const auto isMost = [&](std::size_t here, std::size_t there) {
    return here >= fewest && here * 10 > sample.size() && there * 8 < here;
  };
  if (isMost(zeros[1], zeros[0])) return "little endian";
  return isMost(zeros[0], zeros[1]) ? "big endian" : "";
}

std::string looksOfBytes(std::string_view bytes) {
  if (bytes.starts_with("\x1F\x8B") || bytes.starts_with("PK\x03\x04")) return "a packed file. Unpack it.";
  std::string looks;
  if (bytes.starts_with("\xFF\xFE\0\0"sv) || bytes.starts_with("\0\0\xFE\xFF"sv)) {
    looks = "UTF-32";
  } else if (bytes.starts_with("\xFF\xFE") || bytes.starts_with("\xFE\xFF")) {
    looks = bytes.starts_with('\xFF') ? "UTF-16 (little endian)" : "UTF-16 (big endian)";
  } else if (const auto endian = endianOfUTF16(bytes); !endian.empty()) {
    looks = "UTF-16 (" + std::string(endian) + ", without a byte-order mark)";
  } else if (isBinary(bytes)) {
    return "binary data and no text. Choose another file.";
  } else {
    looks = looksOfEightBits(bytes);
  }
  return looks + ". Save it as UTF-8.";
}
