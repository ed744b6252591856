#include "platform/rsa_blobs.h"

#include <algorithm>
#include <cstdint>
#include <cstring>

namespace corvane::platform {

namespace {

constexpr std::string_view kCapiHead("\x07\x02\x00\x00\x00\xA4\x00\x00", 8);  // CALG_RSA_KEYX
constexpr std::uint32_t kCapiPrivate = 0x32415352;                            // "RSA2"
constexpr std::uint32_t kCngPublic = 0x31415352;                              // "RSA1"
constexpr std::uint32_t kCngPrivate = 0x32415352;                             // "RSA2"
constexpr std::uint32_t kCngFullPrivate = 0x33415352;                         // "RSA3"
constexpr std::size_t kMostBits = 65'536;
constexpr std::size_t kWordBytes = 4;

void AddWord(std::string* out, std::size_t value) {
  const auto word = static_cast<std::uint32_t>(value);
  for (int shift = 0; shift < 32; shift += 8) *out += static_cast<char>(word >> shift & 0xFF);
}

std::string WithoutZeros(std::string_view number) {
  return std::string(number.substr(std::min(number.find_first_not_of('\0'), number.size())));
}

std::size_t BitsOf(std::string_view number) {
  if (number.empty()) return 0;
  std::size_t bits = (number.size() - 1) * 8;
  for (auto first = static_cast<std::uint8_t>(number[0]); first != 0; first >>= 1) ++bits;
  return bits;
}

// Takes what stands at the front of a blob, and fails once it is at its end.
class BlobReader {
 public:
  explicit BlobReader(std::string_view blob) : m_Left(blob) {}

  std::string_view Take(std::size_t size) {
    m_bGood = m_bGood && size <= m_Left.size();
    if (!m_bGood) return {};
    const std::string_view bytes = m_Left.substr(0, size);
    m_Left.remove_prefix(size);
    return bytes;
  }
  std::uint32_t TakeWord() {
    std::uint32_t word = 0;
    const std::string_view bytes = Take(4);
    for (std::size_t i = bytes.size(); i-- > 0;)
      word = word << 8 | static_cast<std::uint8_t>(bytes[i]);
    return word;
  }
  std::string TakeBigEndian(std::size_t size) { return WithoutZeros(Take(size)); }
  std::string TakeLittleEndian(std::size_t size) {
    std::string bytes(Take(size));
    std::ranges::reverse(bytes);
    return WithoutZeros(bytes);
  }
  bool IsAtEnd() const { return m_bGood && m_Left.empty(); }

 private:
  std::string_view m_Left;
  bool m_bGood = true;
};

// False when the number has no such room.
bool AddLittleEndian(std::string* out, std::string_view number, std::size_t size) {
  if (number.size() > size) return false;
  out->append(number.rbegin(), number.rend());
  out->append(size - number.size(), '\0');
  return true;
}

std::string CngBlob(std::uint32_t magic, const RsaPublicKey& key, std::string_view prime1,
                    std::string_view prime2) {
  std::string blob;
  blob.reserve(6 * kWordBytes + key.exponent.size() + key.modulus.size() + prime1.size() +
               prime2.size());
  AddWord(&blob, magic);
  AddWord(&blob, BitsOf(key.modulus));
  for (const std::size_t size :
       {key.exponent.size(), key.modulus.size(), prime1.size(), prime2.size()}) {
    AddWord(&blob, size);
  }
  blob += key.exponent;
  blob += key.modulus;
  blob += prime1;
  blob += prime2;
  return blob;
}

}  // namespace

std::string ToCapiPrivateBlob(const RsaPrivateKey& key) {
  const std::size_t whole = key.modulus.size();
  const std::size_t half = (whole + 1) / 2;
  std::string blob;
  blob.reserve(kCapiHead.size() + 3 * kWordBytes + 2 * whole + 5 * half);
  blob += kCapiHead;
  AddWord(&blob, kCapiPrivate);
  AddWord(&blob, BitsOf(key.modulus));
  const bool fits =
      AddLittleEndian(&blob, key.exponent, 4) && AddLittleEndian(&blob, key.modulus, whole) &&
      AddLittleEndian(&blob, key.prime1, half) && AddLittleEndian(&blob, key.prime2, half) &&
      AddLittleEndian(&blob, key.exponent1, half) && AddLittleEndian(&blob, key.exponent2, half) &&
      AddLittleEndian(&blob, key.coefficient, half) &&
      AddLittleEndian(&blob, key.privateExponent, whole);
  return fits && whole > 0 ? blob : std::string();
}

std::optional<RsaPrivateKey> FromCapiPrivateBlob(std::string_view blob) {
  BlobReader reader(blob);
  const bool isPrivate = reader.Take(kCapiHead.size()) == kCapiHead;
  if (!isPrivate || reader.TakeWord() != kCapiPrivate) return std::nullopt;
  const std::size_t bits = reader.TakeWord();
  if (bits == 0 || bits > kMostBits) return std::nullopt;
  const std::size_t whole = (bits + 7) / 8;
  const std::size_t half = (whole + 1) / 2;
  RsaPrivateKey key;
  key.exponent = reader.TakeLittleEndian(4);
  key.modulus = reader.TakeLittleEndian(whole);
  for (std::string* number :
       {&key.prime1, &key.prime2, &key.exponent1, &key.exponent2, &key.coefficient}) {
    *number = reader.TakeLittleEndian(half);
  }
  key.privateExponent = reader.TakeLittleEndian(whole);
  if (!reader.IsAtEnd() || BitsOf(key.modulus) != bits) return std::nullopt;
  return key;
}

std::string ToCngPrivateBlob(const RsaPrivateKey& key) {
  return CngBlob(kCngPrivate, key, key.prime1, key.prime2);
}

std::string ToCngPublicBlob(const RsaPublicKey& key) { return CngBlob(kCngPublic, key, {}, {}); }

std::optional<RsaPrivateKey> FromCngFullPrivateBlob(std::string_view blob) {
  BlobReader reader(blob);
  if (reader.TakeWord() != kCngFullPrivate) return std::nullopt;
  const std::size_t bits = reader.TakeWord();
  const std::size_t exponent = reader.TakeWord();
  const std::size_t modulus = reader.TakeWord();
  const std::size_t prime1 = reader.TakeWord();
  const std::size_t prime2 = reader.TakeWord();
  RsaPrivateKey key;
  key.exponent = reader.TakeBigEndian(exponent);
  key.modulus = reader.TakeBigEndian(modulus);
  key.prime1 = reader.TakeBigEndian(prime1);
  key.prime2 = reader.TakeBigEndian(prime2);
  key.exponent1 = reader.TakeBigEndian(prime1);
  key.exponent2 = reader.TakeBigEndian(prime2);
  key.coefficient = reader.TakeBigEndian(prime1);
  key.privateExponent = reader.TakeBigEndian(modulus);
  if (!reader.IsAtEnd() || BitsOf(key.modulus) != bits) return std::nullopt;
  return key;
}

}  // namespace corvane::platform
