#include "platform/rsa_key.h"

#include <cstdint>

#include "platform/base64.h"
#include "platform/wipe.h"

namespace corvane::platform {

namespace {

constexpr char kInteger = 0x02;
constexpr char kBitString = 0x03;
constexpr char kSequence = 0x30;
// AlgorithmIdentifier: 1.2.840.113549.1.1.1 (rsaEncryption) with the parameter NULL.
constexpr std::string_view kRsaEncryption(
    "\x30\x0D\x06\x09\x2A\x86\x48\x86\xF7\x0D\x01\x01\x01\x05\x00", 15);
constexpr std::size_t kLineChars = 64;
constexpr std::size_t kMostHeadBytes = 2 + sizeof(std::size_t);  // of an element
constexpr std::size_t kMostLengthBytes = 3;  // of what is read: a key is a few thousand bytes

std::uint8_t ByteAt(std::string_view bytes, std::size_t at) {
  return static_cast<std::uint8_t>(bytes[at]);
}

// ---- DER, written ---------------------------------------------------------------------------

void AddHead(std::string* out, char tag, std::size_t size) {
  std::string length;
  for (std::size_t left = size; left > 0; left >>= 8)
    length.insert(length.begin(), static_cast<char>(left & 0xFF));
  *out += tag;
  if (size < 0x80) {
    *out += static_cast<char>(size);
  } else {
    *out += static_cast<char>(0x80 | length.size());
    *out += length;
  }
}

std::string Element(char tag, std::string_view content) {
  std::string out;
  out.reserve(content.size() + kMostHeadBytes);
  AddHead(&out, tag, content.size());
  return out.append(content);
}

// A number is signed: a zero byte keeps one with a high first bit from reading as negative.
void AddInteger(std::string* out, std::string_view number) {
  const bool hasZero = number.empty() || ByteAt(number, 0) >= 0x80;
  AddHead(out, kInteger, number.size() + (hasZero ? 1 : 0));
  if (hasZero) *out += '\0';
  out->append(number);
}

// ---- DER, read ------------------------------------------------------------------------------

// Takes elements from the front of bytes. What is not well formed fails from there on.
class DerReader {
 public:
  explicit DerReader(std::string_view bytes) : m_Left(bytes) {}

  bool IsAtEnd() const { return m_bGood && m_Left.empty(); }
  bool IsGood() const { return m_bGood; }

  // The content of the next element, which has this tag; empty on failure.
  std::string_view Take(char tag) {
    const std::optional<std::size_t> size = m_bGood ? TakeHead(tag) : std::nullopt;
    m_bGood = size && *size <= m_Left.size();
    if (!m_bGood) return {};
    const std::string_view content = m_Left.substr(0, *size);
    m_Left.remove_prefix(*size);
    return content;
  }
  // A number that is not negative.
  std::string TakeNumber() {
    std::string_view number = Take(kInteger);
    m_bGood = m_bGood && !number.empty() && ByteAt(number, 0) < 0x80;
    while (!number.empty() && number[0] == '\0') number.remove_prefix(1);
    return std::string(number);
  }
  bool TakeExactly(std::string_view bytes) {
    m_bGood = m_bGood && m_Left.starts_with(bytes);
    if (m_bGood) m_Left.remove_prefix(bytes.size());
    return m_bGood;
  }

 private:
  // The length of the content that follows.
  std::optional<std::size_t> TakeHead(char tag) {
    if (m_Left.size() < 2 || m_Left[0] != tag) return std::nullopt;
    const std::uint8_t first = ByteAt(m_Left, 1);
    m_Left.remove_prefix(2);
    if (first < 0x80) return first;
    const std::size_t count = first & 0x7F;
    if (count == 0 || count > kMostLengthBytes || count > m_Left.size()) return std::nullopt;
    std::size_t size = 0;
    for (std::size_t i = 0; i < count; ++i) size = size << 8 | ByteAt(m_Left, i);
    m_Left.remove_prefix(count);
    return size;
  }

  std::string_view m_Left;
  bool m_bGood = true;
};

}  // namespace

RsaPrivateKey::~RsaPrivateKey() {
  for (std::string* number :
       {&privateExponent, &prime1, &prime2, &exponent1, &exponent2, &coefficient}) {
    Wipe(number);
  }
}

// Room for all from the beginning, as a text that grows leaves copies behind.
std::string EncodePrivateKey(const RsaPrivateKey& key) {
  const auto all = {&key.modulus, &key.exponent,  &key.privateExponent, &key.prime1,
                    &key.prime2,  &key.exponent1, &key.exponent2,       &key.coefficient};
  std::size_t room = kMostHeadBytes + 1;
  for (const std::string* number : all) room += kMostHeadBytes + 1 + number->size();
  std::string numbers;
  numbers.reserve(room);
  AddInteger(&numbers, "");  // the version: two primes
  for (const std::string* number : all) AddInteger(&numbers, *number);
  std::string der = Element(kSequence, numbers);
  Wipe(&numbers);
  return der;
}

std::optional<RsaPrivateKey> DecodePrivateKey(std::string_view der) {
  DerReader whole(der);
  DerReader numbers(whole.Take(kSequence));
  const bool twoPrimes = numbers.TakeNumber().empty();
  RsaPrivateKey key;
  for (std::string* number : {&key.modulus, &key.exponent, &key.privateExponent, &key.prime1,
                              &key.prime2, &key.exponent1, &key.exponent2, &key.coefficient}) {
    *number = numbers.TakeNumber();
  }
  if (!whole.IsAtEnd() || !numbers.IsAtEnd() || !twoPrimes) return std::nullopt;
  return key;
}

std::string EncodePublicKey(const RsaPublicKey& key) {
  std::string numbers;
  AddInteger(&numbers, key.modulus);
  AddInteger(&numbers, key.exponent);
  const std::string bits = std::string(1, '\0') + Element(kSequence, numbers);
  return Element(kSequence, std::string(kRsaEncryption) + Element(kBitString, bits));
}

std::optional<RsaPublicKey> DecodePublicKey(std::string_view der) {
  DerReader whole(der);
  DerReader parts(whole.Take(kSequence));
  parts.TakeExactly(kRsaEncryption);
  DerReader bits(parts.Take(kBitString));
  bits.TakeExactly(std::string_view("\0", 1));  // no unused bits in the last byte
  DerReader numbers(bits.Take(kSequence));
  RsaPublicKey key;
  key.modulus = numbers.TakeNumber();
  key.exponent = numbers.TakeNumber();
  const bool isWhole = whole.IsAtEnd() && parts.IsAtEnd() && bits.IsAtEnd() && numbers.IsAtEnd();
  if (!isWhole || key.modulus.empty() || key.exponent.empty()) return std::nullopt;
  return key;
}

std::string ToPem(std::string_view label, std::string_view der) {
  const std::string text = ToBase64(der);
  std::string pem = "-----BEGIN " + std::string(label) + "-----\n";
  for (std::size_t at = 0; at < text.size(); at += kLineChars)
    pem += text.substr(at, kLineChars) + "\n";
  return pem + "-----END " + std::string(label) + "-----\n";
}

}  // namespace corvane::platform
