#pragma once
#include <cstdint>
#include <type_traits>

#include "foundation/smart_obj.h"

namespace corvane {

// Sum, cached mean and count; T is int or double. The sum of int values is kept in 64 bits.
template <typename T>
class CAveragerBase {
 public:
  void Add(T value) {
    m_Sum += value;
    ++m_Count;
    m_Mean = T{};
  }
  // `noValue` for an empty average. For int the division is integral.
  T Mean(T noValue = static_cast<T>(-1)) {
    if (m_Count == 0) return noValue;
    if (m_Mean == T{}) m_Mean = static_cast<T>(m_Sum / m_Count);
    return m_Mean;
  }
  void Reset() { m_Sum = Sum{}, m_Mean = T{}, m_Count = 0; }
  int Count() const { return m_Count; }

 private:
  using Sum = std::conditional_t<std::is_integral_v<T>, std::int64_t, T>;

  Sum m_Sum{};
  T m_Mean{};
  int m_Count = 0;
};

template <typename T>
class CAveragerEmbedded : public SmartObjEmbedded, public CAveragerBase<T> {
 public:
  using SmartObjEmbedded::SmartObjEmbedded;
  const char* GetClassName() const override { return "CAveragerEmbedded"; }
};

}  // namespace corvane
