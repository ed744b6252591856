#include "platform/windows/inherited_handles.h"

#include <algorithm>

namespace corvane::platform::windows {

InheritedHandles::InheritedHandles(const ::STARTUPINFOW& startup, bool inherit) {
  m_Startup.StartupInfo = startup;
  m_Startup.StartupInfo.cb = sizeof(m_Startup);
  if (!inherit || (startup.dwFlags & STARTF_USESTDHANDLES) == 0) return;
  // Each once: a handle that comes twice is an invalid parameter.
  auto end = m_Handles.begin();
  for (const HANDLE handle : {startup.hStdInput, startup.hStdOutput, startup.hStdError}) {
    if (handle && std::find(m_Handles.begin(), end, handle) == end) *end++ = handle;
  }
  const auto bytes = static_cast<std::size_t>(end - m_Handles.begin()) * sizeof(HANDLE);
  ::SIZE_T size = 0;
  if (bytes == 0) return;
  ::InitializeProcThreadAttributeList(nullptr, 1, 0, &size);
  m_List.resize((size + sizeof(m_List[0]) - 1) / sizeof(m_List[0]));
  auto* const list = reinterpret_cast<::LPPROC_THREAD_ATTRIBUTE_LIST>(m_List.data());
  if (size == 0 || !::InitializeProcThreadAttributeList(list, 1, 0, &size)) return;
  if (::UpdateProcThreadAttribute(list, 0, PROC_THREAD_ATTRIBUTE_HANDLE_LIST, m_Handles.data(),
                                  bytes, nullptr, nullptr)) {
    m_Startup.lpAttributeList = list;
  } else {
    ::DeleteProcThreadAttributeList(list);
  }
}

InheritedHandles::~InheritedHandles() {
  if (m_Startup.lpAttributeList) ::DeleteProcThreadAttributeList(m_Startup.lpAttributeList);
}

}  // namespace corvane::platform::windows
