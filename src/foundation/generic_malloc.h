#pragma once
#include <cstddef>
#include <cstdint>

#include "foundation/smart_obj.h"

namespace corvane {

// A counted byte block for platform buffers.
class CGenericMalloc : public SmartObjEx<CGenericMalloc, SmartObj<CNoLock>> {
 public:
  ~CGenericMalloc() override;
  const char* GetClassName() const override { return "CGenericMalloc"; }

  // Frees the old block. All forms throw Exception.
  void Initialize(std::uint32_t size);                                           // zero-filled
  void Initialize(const void* data, std::uint32_t size, std::uint32_t minimum);  // a copy

  const std::uint8_t* GetData() const { return m_pData; }
  std::uint8_t* GetData() { return m_pData; }
  std::uint32_t GetSize() const { return m_Size; }

 private:
  std::uint8_t* m_pData = nullptr;
  std::uint32_t m_Size = 0;
};

}  // namespace corvane
