#include "platform/windows/process_user.h"

#include "platform/windows/win32.h"

namespace corvane::platform::windows {

namespace {

std::vector<char> Read(HANDLE token, TOKEN_INFORMATION_CLASS what) {
  ::DWORD size = 0;
  ::GetTokenInformation(token, what, nullptr, 0, &size);
  std::vector<char> facts(size);
  if (!::GetTokenInformation(token, what, facts.data(), size, &size)) facts.clear();
  return facts;
}

}  // namespace

ProcessUser::ProcessUser() {
  HANDLE token = nullptr;
  if (!::OpenProcessToken(::GetCurrentProcess(), TOKEN_QUERY, &token)) return;
  m_User = Read(token, TokenUser);
  m_Owner = Read(token, TokenOwner);
  ::CloseHandle(token);
}

void* ProcessUser::Sid() const {
  return m_User.empty() ? nullptr : reinterpret_cast<const TOKEN_USER*>(m_User.data())->User.Sid;
}

void* ProcessUser::OwnerSid() const {
  return m_Owner.empty() ? nullptr : reinterpret_cast<const TOKEN_OWNER*>(m_Owner.data())->Owner;
}

std::wstring ProcessUser::SidText() const {
  wchar_t* text = nullptr;
  if (!Sid() || !::ConvertSidToStringSidW(Sid(), &text)) return {};
  const std::wstring sid = text;
  ::LocalFree(text);
  return sid;
}

}  // namespace corvane::platform::windows
