#include "platform/sim/kernel/sim_token_cipher.h"

#include "platform/sim/kernel/seeded_random.h"

namespace corvane::platform::sim::token_cipher {

namespace {

constexpr std::size_t kHalf = kBlockSize / 2;
constexpr int kRounds = 4;

std::uint64_t Digest(std::string_view text, std::uint64_t start) {
  std::uint64_t digest = start ^ 0xCBF29CE484222325;
  for (const char c : text) {
    digest = (digest ^ static_cast<std::uint8_t>(c)) * 0x100000001B3;
  }
  return digest;
}

// A round of a Feistel network: one half is covered by what the other half and the key make.
void Cover(std::string* half, std::string_view other, std::string_view key, int round) {
  SeededRandom stream(Digest(other, Digest(key, static_cast<std::uint64_t>(round))));
  for (char& c : *half) c = static_cast<char>(c ^ static_cast<char>(stream.Next()));
}

}  // namespace

std::optional<std::string> Encrypt(std::string_view plain, std::string_view key) {
  if (plain.size() > kMostPlain) return std::nullopt;
  std::string block{'\0', '\x02'};
  SeededRandom filling(Digest(plain, 0));
  while (block.size() < kBlockSize - plain.size() - 1) {
    block += static_cast<char>(1 + filling.Below(255));
  }
  block += '\0';
  block += plain;
  std::string left = block.substr(0, kHalf), right = block.substr(kHalf);
  for (int round = 0; round < kRounds; ++round) {
    Cover(round % 2 == 0 ? &right : &left, round % 2 == 0 ? left : right, key, round);
  }
  return left + right;
}

std::optional<std::string> Decrypt(std::string_view block, std::string_view key) {
  if (block.size() != kBlockSize) return std::nullopt;
  std::string left(block.substr(0, kHalf)), right(block.substr(kHalf));
  for (int round = kRounds - 1; round >= 0; --round) {
    Cover(round % 2 == 0 ? &right : &left, round % 2 == 0 ? left : right, key, round);
  }
  const std::string opened = left + right;
  const std::size_t end = opened.find('\0', 2);
  if (opened[0] != '\0' || opened[1] != '\x02' || end == opened.npos || end < 10) {
    return std::nullopt;
  }
  return opened.substr(end + 1);
}

}  // namespace corvane::platform::sim::token_cipher
