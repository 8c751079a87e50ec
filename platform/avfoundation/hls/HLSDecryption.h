#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <vector>

// Takes AES-128 in CBC mode off a row of bytes, as they come, and the padding at their end. The cipher is OpenSSL's.
class HLSDecryption {
 public:
  using Block = std::array<std::uint8_t, 16>;

  HLSDecryption(const Block& key, const Block& iv);
  ~HLSDecryption();
  HLSDecryption(const HLSDecryption&) = delete;
  HLSDecryption& operator=(const HLSDecryption&) = delete;

  // What can be told by now; some of the last bytes wait for those behind them.
  std::vector<std::byte> take(std::span<const std::byte> bytes);
  // The last of it; nothing when what came was cut, or of another key.
  std::vector<std::byte> finish();

 private:
  struct Cipher;
  const std::unique_ptr<Cipher> cipher_;
};
