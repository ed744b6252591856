#include "platform/windows/windows_home.h"

#include <vector>

#include "platform/sim/kernel/sim_text.h"
#include "platform/utf.h"
#include "platform/windows/long_path.h"
#include "platform/windows/win32.h"
#include "platform/windows/windows_error.h"

namespace corvane::platform::windows {

namespace {

constexpr std::u16string_view kFolder = u"\\OstrelNetworks\\Corvane";
// Protected from what is inherited; what is made inside inherits these rights.
constexpr wchar_t kOpenRights[] =
    L"D:P(A;OICI;GA;;;SY)(A;OICI;GA;;;BA)(A;OICI;GA;;;%s)(A;OICI;GRGX;;;BU)";
constexpr wchar_t kPrivateRights[] = L"D:P(A;OICI;GA;;;SY)(A;OICI;GA;;;%s)";

[[noreturn]] void Unusable(const std::u16string& path, DWORD error) {
  throw WindowsError("the folder " + sim::ToUtf8(path) + " cannot be used: " + ErrorText(error));
}

std::u16string ProgramData() {
  char16_t folder[MAX_PATH] = {};
  const auto result =
      ::SHGetFolderPathW(nullptr, CSIDL_COMMON_APPDATA, nullptr, SHGFP_TYPE_CURRENT, Wide(folder));
  return result == S_OK ? folder : u"";
}

// The account of this process as "S-1-...": it must be able to write what it keeps.
std::wstring OwnSid() {
  HANDLE token = nullptr;
  std::wstring sid = L"SY";
  if (!::OpenProcessToken(::GetCurrentProcess(), TOKEN_QUERY, &token)) return sid;
  ::DWORD size = 0;
  ::GetTokenInformation(token, TokenUser, nullptr, 0, &size);
  std::vector<char> user(size);
  wchar_t* text = nullptr;
  if (size > 0 && ::GetTokenInformation(token, TokenUser, user.data(), size, &size) &&
      ::ConvertSidToStringSidW(reinterpret_cast<TOKEN_USER*>(user.data())->User.Sid, &text)) {
    sid = text;
    ::LocalFree(text);
  }
  ::CloseHandle(token);
  return sid;
}

void MakeFolder(const std::u16string& path, const wchar_t* rights) {
  std::wstring sddl = rights;
  sddl.replace(sddl.find(L"%s"), 2, OwnSid());
  SECURITY_ATTRIBUTES attributes;
  if (!::ConvertStringSecurityDescriptorToSecurityDescriptorW(
          sddl.c_str(), SDDL_REVISION_1, &attributes.lpSecurityDescriptor, nullptr)) {
    Unusable(path, ::GetLastError());
  }
  const std::wstring name = LongPath(path);
  DWORD error = ERROR_SUCCESS;
  if (!::CreateDirectoryW(name.c_str(), As<::SECURITY_ATTRIBUTES>(&attributes))) {
    error = ::GetLastError();
    if (error == ERROR_ALREADY_EXISTS) {
      error = ::SetFileSecurityW(name.c_str(), DACL_SECURITY_INFORMATION,
                                 attributes.lpSecurityDescriptor)
                  ? ERROR_SUCCESS
                  : ::GetLastError();
    }
  }
  ::LocalFree(attributes.lpSecurityDescriptor);
  if (error != ERROR_SUCCESS) Unusable(path, error);
}

}  // namespace

bool IsAdministrator() { return ::IsUserAnAdmin() != FALSE; }

std::u16string WindowsHome::Locate(const std::string& root) {
  std::u16string path = root.empty() ? ProgramData() : ToUtf16(root);
  for (char16_t& c : path) {
    if (c == u'/') c = u'\\';
  }
  while (path.ends_with(u'\\')) path.pop_back();
  if (!path.empty()) path += kFolder;
  return path;
}

WindowsHome::WindowsHome(const std::string& root) : m_Path(Locate(root)) {
  if (m_Path.empty()) throw WindowsError("the system does not tell where %ProgramData% is");
  m_Root = m_Path.substr(0, m_Path.size() - kFolder.size());
  // The parents as they come: a folder of the test's, and the maker's.
  for (std::size_t at = m_Path.find(u'\\', 3); at != m_Path.npos; at = m_Path.find(u'\\', at + 1)) {
    const std::u16string parent = m_Path.substr(0, at);
    if (!::CreateDirectoryW(LongPath(parent).c_str(), nullptr)) {
      const DWORD error = ::GetLastError();
      if (error != ERROR_ALREADY_EXISTS && error != ERROR_ACCESS_DENIED) Unusable(parent, error);
    }
  }
  MakeFolder(m_Path, kOpenRights);
  MakeFolder(PrivatePath(), kPrivateRights);
}

}  // namespace corvane::platform::windows
