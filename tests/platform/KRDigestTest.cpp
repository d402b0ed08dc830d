#include "platform/KRDigest.h"

#include <gtest/gtest.h>

#include <string>

#include "platform/KRValue.h"

namespace {

// The test suite of RFC 1321.
TEST(KRDigest, AgreesWithThePublishedValues) {
  const struct {
    const char* text;
    const char* digest;
  } kRows[] = {
      {"", "d41d8cd98f00b204e9800998ecf8427e"},
      {"a", "0cc175b9c0f1b6a831c399e269772661"},
      {"abc", "900150983cd24fb0d6963f7d28e17f72"},
      {"message digest", "f96b697d7cb7938d525a2f31aaf161d0"},
      {"abcdefghijklmnopqrstuvwxyz", "c3fcd3d76192e4007dfb496cca67e13b"},
      {"ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789", "d174ab98d277d9f5a5611c2c9f419d9f"},
      {"12345678901234567890123456789012345678901234567890123456789012345678901234567890",
       "57edf4a22be3c955ac49da2e2107b67a"},
  };
  for (const auto& row : kRows) {
    EXPECT_EQ(KRDigest::md5(std::string_view(row.text)), row.digest);
    EXPECT_EQ(KRDigest::md5(krMake<KRData>(std::string_view(row.text)).get()), row.digest);
  }
}

// The examples of FIPS 180-4.
TEST(KRDigest, AgreesWithThePublishedValuesOfSHA256) {
  EXPECT_EQ(KRDigest::sha256(""), "e3b0c44298fc1c149afbf4c8996fb92427ae41e4649b934ca495991b7852b855");
  EXPECT_EQ(KRDigest::sha256("abc"), "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad");
  EXPECT_EQ(KRDigest::sha256("abcdbcdecdefdefgefghfghighijhijkijkljklmklmnlmnomnopnopq"),
            "248d6a61d20638b8e5c026930c3e6039a33ce45964ff2167f6ecedd419db06c1");
}

TEST(KRDigest, AbsentDataHasNone) {
  EXPECT_TRUE(KRDigest::md5(static_cast<const KRData*>(nullptr)).isNothing());
}

TEST(KRDigest, ReadsEveryByte) {
  const std::string zeros(3, '\0');
  EXPECT_NE(KRDigest::md5(zeros), KRDigest::md5(zeros + '\0'));
}

}  // namespace
