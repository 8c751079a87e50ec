#include "platform/avfoundation/hls/HLSDecryption.h"

#include <openssl/evp.h>

#include <algorithm>
#include <climits>

struct HLSDecryption::Cipher {
  EVP_CIPHER_CTX* context = EVP_CIPHER_CTX_new();
  bool works = false;
  ~Cipher() { EVP_CIPHER_CTX_free(context); }
};

HLSDecryption::HLSDecryption(const Block& key, const Block& iv) : cipher_(std::make_unique<Cipher>()) {
  cipher_->works =
      cipher_->context && EVP_DecryptInit_ex(cipher_->context, EVP_aes_128_cbc(), nullptr, key.data(), iv.data()) == 1;
}

HLSDecryption::~HLSDecryption() = default;

std::vector<std::byte> HLSDecryption::take(std::span<const std::byte> bytes) {
  constexpr std::size_t most = INT_MAX / 2;
  if (!cipher_->works || bytes.size() > most) return {};
  std::vector<std::byte> plain(bytes.size() + sizeof(Block));
  int count = 0;
  const bool isDone =
      EVP_DecryptUpdate(cipher_->context, reinterpret_cast<unsigned char*>(plain.data()), &count,
                        reinterpret_cast<const unsigned char*>(bytes.data()), static_cast<int>(bytes.size())) == 1;
  plain.resize(isDone ? static_cast<std::size_t>(count) : 0);
  return plain;
}

std::vector<std::byte> HLSDecryption::finish() {
  std::vector<std::byte> plain(sizeof(Block));
  int count = 0;
  const bool isDone =
      cipher_->works &&
      EVP_DecryptFinal_ex(cipher_->context, reinterpret_cast<unsigned char*>(plain.data()), &count) == 1;
  plain.resize(isDone ? static_cast<std::size_t>(count) : 0);
  return plain;
}
