#include "platform/KRDigest.h"

#include <array>

#include "platform/KROpenSSL.h"
#include "platform/KRValue.h"

namespace {

KRString digestOf(std::string_view bytes, const EVP_MD* kind) {
  std::array<unsigned char, EVP_MAX_MD_SIZE> digest = {};
  unsigned size = 0;
  if (EVP_Digest(bytes.data(), bytes.size(), digest.data(), &size, kind, nullptr) != 1) return {};
  constexpr std::string_view kDigits = "0123456789abcdef";
  std::array<char, 2 * EVP_MAX_MD_SIZE> text = {};
  for (size_t i = 0; i < size; ++i) {
    text[2 * i] = kDigits[digest[i] >> 4U];
    text[2 * i + 1] = kDigits[digest[i] & 0xFU];
  }
  return KRString::trusted({text.data(), size_t{2} * size});
}

}  // namespace

KRString KRDigest::md5(const KRData* data) {
  return data == nullptr ? KRString() : md5(data->bytes());
}

KRString KRDigest::md5(std::string_view bytes) {
  return digestOf(bytes, EVP_md5());
}

KRString KRDigest::sha256(std::string_view bytes) {
  return digestOf(bytes, EVP_sha256());
}
