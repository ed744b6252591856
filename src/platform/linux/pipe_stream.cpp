#include "platform/linux/pipe_stream.h"

#include <algorithm>
#include <cstring>

namespace corvane::platform::linux_host {

namespace {

constexpr std::size_t kSpareCapacity = 4096;  // kept by a stream that is empty

}  // namespace

bool PipeStream::IsReady(std::size_t room) {
  while (m_End == 0 && m_Scanned + 1 < m_Bytes.size()) {
    // The first byte of a NUL at an even place, if there is any.
    const std::size_t zero = m_Bytes.find('\0', m_Scanned);
    if (zero == m_Bytes.npos) {
      m_Scanned = m_Bytes.size() & ~std::size_t{1};
      break;
    }
    m_Scanned = zero & ~std::size_t{1};
    if (m_Scanned + 1 >= m_Bytes.size()) break;
    if (m_Bytes[m_Scanned] == '\0' && m_Bytes[m_Scanned + 1] == '\0') m_End = m_Scanned + 2;
    m_Scanned += 2;
  }
  return m_End != 0 || m_Bytes.size() >= room;
}

PipeStream::Piece PipeStream::Take(void* target, std::size_t room) {
  const bool whole = m_End != 0 && m_End <= room;
  const std::size_t size = whole ? m_End : std::min(room, m_Bytes.size());
  if (size > 0) std::memcpy(target, m_Bytes.data(), size);
  m_Bytes.erase(0, size);
  m_Scanned = 0;
  m_End = 0;
  if (m_Bytes.empty() && m_Bytes.capacity() > kSpareCapacity) std::string().swap(m_Bytes);
  return {size, whole};
}

void PipeStream::Clear() {
  std::string().swap(m_Bytes);
  m_Scanned = 0;
  m_End = 0;
}

}  // namespace corvane::platform::linux_host
