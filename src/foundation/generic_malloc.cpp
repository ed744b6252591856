#include "foundation/generic_malloc.h"

#include <cstdlib>
#include <cstring>

#include "foundation/log_lines.h"

namespace corvane {

CGenericMalloc::~CGenericMalloc() { std::free(m_pData); }

void CGenericMalloc::Initialize(std::uint32_t size) {
  std::free(std::exchange(m_pData, nullptr));
  m_Size = 0;
  // A block of no bytes is still a block.
  m_pData = static_cast<std::uint8_t*>(std::calloc(size ? size : 1, 1));
  if (!m_pData) {
    LOG_ERROR(u"CGenericMalloc::Initialize() - malloc %u failed", size);
    throw Exception("CGenericMalloc::Initialize() - malloc %u failed", size);
  }
  m_Size = size;
}

void CGenericMalloc::Initialize(const void* data, std::uint32_t size, std::uint32_t minimum) {
  if (!data) throw Exception("CGenericMalloc::Initialize() - pData is NULL");
  if (size < minimum)
    throw Exception("CGenericMalloc::Initialize() - dwDataSize %u too small", size);
  Initialize(size);
  std::memcpy(m_pData, data, size);
}

}  // namespace corvane
