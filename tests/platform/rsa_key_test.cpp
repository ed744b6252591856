#include "platform/rsa_key.h"

#include <gtest/gtest.h>

#include "any_host/rsa_vectors.h"
#include "platform/base64.h"
#include "platform/rsa_blobs.h"

namespace corvane::test {

using namespace platform;

namespace {

RsaPrivateKey VectorKey() { return DecodePrivateKey(*FromBase64WithHeaders(kVectorKey)).value(); }

std::string Words(std::initializer_list<std::uint32_t> words) {
  std::string bytes;
  for (const std::uint32_t word : words) {
    for (int shift = 0; shift < 32; shift += 8) bytes += static_cast<char>(word >> shift & 0xFF);
  }
  return bytes;
}

}  // namespace

TEST(RsaKey, ReadsAndWritesTheTextsOfOtherPrograms) {
  const RsaPrivateKey key = VectorKey();
  EXPECT_EQ(key.modulus.size(), 256u);
  EXPECT_EQ(key.exponent, std::string("\1\0\1", 3));
  EXPECT_EQ(key.prime1.size(), 128u);
  EXPECT_EQ(ToPem("RSA PRIVATE KEY", EncodePrivateKey(key)), kVectorKey);
  EXPECT_EQ(ToPem("PUBLIC KEY", EncodePublicKey(key)), kVectorPublicKey);
  EXPECT_EQ(DecodePublicKey(*FromBase64WithHeaders(kVectorPublicKey)), RsaPublicKey(key));
}

TEST(RsaKey, TakesNothingThatIsNotExactlyAKey) {
  for (const bool isPrivate : {true, false}) {
    const std::string der = *FromBase64WithHeaders(isPrivate ? kVectorKey : kVectorPublicKey);
    const auto reads = [&](std::string_view bytes) {
      return isPrivate ? DecodePrivateKey(bytes).has_value() : DecodePublicKey(bytes).has_value();
    };
    EXPECT_TRUE(reads(der));
    EXPECT_FALSE(reads(der + '\0'));
    for (std::size_t size = 0; size < der.size(); ++size) {
      EXPECT_FALSE(reads(std::string_view(der).substr(0, size))) << size;
    }
    for (const std::size_t head : {0u, 1u, 4u, 5u}) {  // tags, lengths, the first element
      std::string other = der;
      other[head] = static_cast<char>(other[head] ^ 0x11);
      EXPECT_FALSE(reads(other)) << head;
    }
  }
  std::string threePrimes = EncodePrivateKey(VectorKey());
  threePrimes[6] = 1;  // the version
  EXPECT_FALSE(DecodePrivateKey(threePrimes));
  EXPECT_FALSE(DecodePrivateKey(std::string("\x30\x85\1\1\1\1\1", 7)));
  EXPECT_FALSE(DecodePublicKey(EncodePublicKey({})));
}

TEST(RsaBlobs, HoldAllNumbersOfAPrivateKey) {
  const RsaPrivateKey key = VectorKey();
  const std::string blob = ToCapiPrivateBlob(key);
  // A BLOBHEADER and an RSAPUBKEY, 2.5 times the modulus in halves, and two more.
  EXPECT_EQ(blob.size(), 20u + 256 + 5 * 128 + 256);
  EXPECT_EQ(blob.substr(0, 20), Words({0x207, 0xA400, 0x32415352, 2048, 65537}));
  EXPECT_EQ(blob[20], key.modulus.back());  // little-endian
  EXPECT_EQ(FromCapiPrivateBlob(blob), key);

  EXPECT_FALSE(FromCapiPrivateBlob(blob + '\0'));
  EXPECT_FALSE(FromCapiPrivateBlob(std::string_view(blob).substr(0, blob.size() - 1)));
  EXPECT_FALSE(FromCapiPrivateBlob(std::string_view(blob).substr(0, 20)));
  for (const std::size_t head : {0u, 8u, 12u, 15u}) {  // type, magic, bits
    std::string other = blob;
    other[head] = static_cast<char>(other[head] ^ 0x1);
    EXPECT_FALSE(FromCapiPrivateBlob(other)) << head;
  }
  // Numbers with zero bytes before them keep their places.
  RsaPrivateKey small = key;
  small.coefficient.erase(0, 2);
  EXPECT_EQ(FromCapiPrivateBlob(ToCapiPrivateBlob(small)), small);
  small.exponent = "\1\1\1\1\1";
  EXPECT_EQ(ToCapiPrivateBlob(small), "");
  EXPECT_EQ(ToCapiPrivateBlob({}), "");
}

TEST(RsaBlobs, GiveCngWhatItReads) {
  const RsaPrivateKey key = VectorKey();
  EXPECT_EQ(ToCngPublicBlob(key),
            Words({0x31415352, 2048, 3, 256, 0, 0}) + key.exponent + key.modulus);
  const std::string primes = key.prime1 + key.prime2;
  EXPECT_EQ(ToCngPrivateBlob(key),
            Words({0x32415352, 2048, 3, 256, 128, 128}) + key.exponent + key.modulus + primes);
  std::string full = Words({0x33415352, 2048, 3, 256, 128, 128}) + key.exponent + key.modulus +
                     primes + key.exponent1 + key.exponent2 + key.coefficient + key.privateExponent;
  EXPECT_EQ(FromCngFullPrivateBlob(full), key);
  EXPECT_FALSE(FromCngFullPrivateBlob(ToCngPrivateBlob(key)));
  EXPECT_FALSE(FromCngFullPrivateBlob(full.substr(1)));
  EXPECT_FALSE(FromCngFullPrivateBlob(full + '\0'));
  EXPECT_FALSE(FromCngFullPrivateBlob(""));
  full[8] = '\xFF';  // an exponent that is longer than the blob
  full[11] = '\x7F';
  EXPECT_FALSE(FromCngFullPrivateBlob(full));
}

}  // namespace corvane::test
