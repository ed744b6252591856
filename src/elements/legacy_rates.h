#pragma once
#include <array>
#include <bit>
#include <cstdint>
#include <utility>

namespace corvane {

// The recognised rates of elements 1 and 50: an ordered map of kbps to true, held as one bit a
// rate.
class LegacyRates {
 public:
  // The fourteen rates, ascending, in units of 500 kbps (IEEE Std 802.11-2020 9.4.2.3).
  static constexpr std::uint8_t kUnits[14] = {2,  4,  11, 12, 18, 22, 24,
                                              36, 44, 48, 66, 72, 96, 108};

  class Iterator {
   public:
    explicit Iterator(std::uint32_t mask) : m_Mask(mask) {}
    std::pair<std::int32_t, bool> operator*() const {
      return {kUnits[std::countr_zero(m_Mask)] * 500, true};
    }
    Iterator& operator++() {
      m_Mask &= m_Mask - 1;
      return *this;
    }
    bool operator!=(const Iterator& other) const { return m_Mask != other.m_Mask; }

   private:
    std::uint32_t m_Mask;
  };

  // Enters a rate in units of 500 kbps; its kbps, or 0 for one that is not recognised.
  std::int32_t Add(std::uint8_t units) {
    const std::uint32_t bit = units < kBits.size() ? kBits[units] : 0u;
    m_Mask |= bit;
    return bit != 0 ? units * 500 : 0;
  }
  Iterator begin() const { return Iterator(m_Mask); }
  Iterator end() const { return Iterator(0); }
  std::size_t size() const { return static_cast<std::size_t>(std::popcount(m_Mask)); }
  bool empty() const { return m_Mask == 0; }
  void clear() { m_Mask = 0; }

 private:
  // The bit of a rate by its units; 0 for those that are not recognised.
  static constexpr std::array<std::uint16_t, 128> kBits = [] {
    std::array<std::uint16_t, 128> bits{};
    for (unsigned i = 0; i < 14; ++i) bits[kUnits[i]] = static_cast<std::uint16_t>(1u << i);
    return bits;
  }();

  std::uint32_t m_Mask = 0;
};

}  // namespace corvane
