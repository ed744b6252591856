#include "platform/windows/system_library.h"

#include "platform/windows/win32.h"

namespace corvane::platform::windows {

void* SystemLibrary::FindAddress(const char* function) const {
  if (m_Resolver) return m_Resolver(function);
  void* module = m_pModule;
  if (!module) {
    module = ::LoadLibraryExW(m_File, nullptr, LOAD_LIBRARY_SEARCH_SYSTEM32);
    m_pModule = module;  // two that come at once find the same
  }
  return module
             ? reinterpret_cast<void*>(::GetProcAddress(static_cast<::HMODULE>(module), function))
             : nullptr;
}

}  // namespace corvane::platform::windows
