#include "platform/windows/windows_home.h"

#include <vector>

#include "platform/sim/kernel/sim_text.h"
#include "platform/utf.h"
#include "platform/windows/long_path.h"
#include "platform/windows/process_user.h"
#include "platform/windows/trusted_owner.h"
#include "platform/windows/win32.h"
#include "platform/windows/windows_error.h"

namespace corvane::platform::windows {

namespace {

constexpr std::u16string_view kFolder = u"\\OstrelNetworks\\Corvane";
constexpr std::u16string_view kMakersFolder = kFolder.substr(0, kFolder.rfind(u'\\'));
// Protected from what is inherited; what is made inside inherits these rights.
constexpr wchar_t kOpenRights[] = L"D:P(A;OICI;FA;;;SY)(A;OICI;FA;;;BA)(A;OICI;FRFX;;;BU)";
constexpr wchar_t kPrivateRights[] = L"D:P(A;OICI;FA;;;SY)(A;OICI;FA;;;%s)";
constexpr wchar_t kPrivateFileRights[] = L"D:P(A;;FA;;;SY)(A;;FA;;;%s)";

[[noreturn]] void Unusable(const std::u16string& path, DWORD error) {
  throw WindowsError("the folder " + sim::ToUtf8(path) + " cannot be used: " + ErrorText(error));
}

std::u16string ProgramData() {
  char16_t folder[MAX_PATH] = {};
  const auto result =
      ::SHGetFolderPathW(nullptr, CSIDL_COMMON_APPDATA, nullptr, SHGFP_TYPE_CURRENT, Wide(folder));
  return result == S_OK ? folder : u"";
}

// Rights by their text, in which %s is the account of this process: it must be able to write what
// it keeps.
class Rights {
 public:
  Rights(const std::u16string& path, std::wstring sddl) {
    if (const std::size_t at = sddl.find(L"%s"); at != sddl.npos) {
      const std::wstring own = ProcessUser().SidText();
      sddl.replace(at, 2, own.empty() ? L"SY" : own);
    }
    if (!::ConvertStringSecurityDescriptorToSecurityDescriptorW(sddl.c_str(), SDDL_REVISION_1,
                                                                &m_pDescriptor, nullptr)) {
      Unusable(path, ::GetLastError());
    }
  }
  ~Rights() { ::LocalFree(m_pDescriptor); }
  Rights(const Rights&) = delete;
  Rights& operator=(const Rights&) = delete;

  void* Descriptor() const { return m_pDescriptor; }

 private:
  void* m_pDescriptor = nullptr;
};

// A folder that is there. %ProgramData% lets every user make one of any name beforehand: what
// belongs to such a user, or leads elsewhere, is refused.
class ExistingFolder {
 public:
  explicit ExistingFolder(const std::u16string& path)
      : m_Path(path),
        m_Folder(::CreateFileW(
            LongPath(path).c_str(), READ_CONTROL | WRITE_DAC,
            FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr, OPEN_EXISTING,
            FILE_FLAG_BACKUP_SEMANTICS | FILE_FLAG_OPEN_REPARSE_POINT, nullptr)) {
    if (m_Folder == INVALID_HANDLE_VALUE) Unusable(path, ::GetLastError());
    try {
      Check();
    } catch (...) {
      ::CloseHandle(m_Folder);
      throw;
    }
  }
  ~ExistingFolder() { ::CloseHandle(m_Folder); }
  ExistingFolder(const ExistingFolder&) = delete;
  ExistingFolder& operator=(const ExistingFolder&) = delete;

  // Of the folder that was looked at, whatever has its name by now.
  void Set(const Rights& rights) const {
    if (!::SetKernelObjectSecurity(m_Folder, DACL_SECURITY_INFORMATION, rights.Descriptor()))
      Unusable(m_Path, ::GetLastError());
  }

 private:
  void Check() const {
    ::BY_HANDLE_FILE_INFORMATION facts{};
    if (!::GetFileInformationByHandle(m_Folder, &facts)) Unusable(m_Path, ::GetLastError());
    if ((facts.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) == 0) Unusable(m_Path, ERROR_DIRECTORY);
    if ((facts.dwFileAttributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0) {
      throw WindowsError("the folder " + sim::ToUtf8(m_Path) +
                         " is a link to another place; remove it");
    }
    if (!HasTrustedOwner(m_Folder)) {
      throw WindowsError("the folder " + sim::ToUtf8(m_Path) +
                         " belongs to another account, which could change what is kept in it; "
                         "rename or remove it");
    }
  }

  const std::u16string m_Path;
  const HANDLE m_Folder;
};

void MakeFolder(const std::u16string& path, const wchar_t* text) {
  const Rights rights(path, text);
  SECURITY_ATTRIBUTES attributes;
  attributes.lpSecurityDescriptor = rights.Descriptor();
  if (::CreateDirectoryW(LongPath(path).c_str(), As<::SECURITY_ATTRIBUTES>(&attributes))) return;
  const DWORD error = ::GetLastError();
  if (error != ERROR_ALREADY_EXISTS) Unusable(path, error);
  ExistingFolder(path).Set(rights);
}

// A file keeps the rights that it was made with: by the service when it ran as another account, or
// elsewhere, when somebody has moved it here.
void SetRightsOfFiles(const std::u16string& folder, const wchar_t* text) {
  const Rights rights(folder, text);
  ::WIN32_FIND_DATAW found{};
  const HANDLE search = ::FindFirstFileW(LongPath(folder + u"\\*").c_str(), &found);
  if (search == INVALID_HANDLE_VALUE) return;
  do {
    if ((found.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0) continue;
    const auto* const name = reinterpret_cast<const char16_t*>(found.cFileName);
    const std::u16string path = folder + u'\\' + name;
    if (::SetFileSecurityW(LongPath(path).c_str(), DACL_SECURITY_INFORMATION, rights.Descriptor()))
      continue;
    const DWORD error = ::GetLastError();
    ::FindClose(search);
    Unusable(path, error);
  } while (::FindNextFileW(search, &found));
  ::FindClose(search);
}

[[noreturn]] void Unremovable(const std::u16string& path, DWORD error) {
  throw WindowsError(sim::ToUtf8(path) + " cannot be removed: " + ErrorText(error));
}

// With all that is in it. Of a link inside only the link goes, not what it leads to.
void RemoveFolder(const std::u16string& folder) {
  ::WIN32_FIND_DATAW found{};
  const HANDLE search = ::FindFirstFileW(LongPath(folder + u"\\*").c_str(), &found);
  if (search == INVALID_HANDLE_VALUE) Unremovable(folder, ::GetLastError());
  std::vector<::WIN32_FIND_DATAW> entries;
  do {
    entries.push_back(found);
  } while (::FindNextFileW(search, &found));
  ::FindClose(search);
  for (const ::WIN32_FIND_DATAW& entry : entries) {
    const std::u16string name = reinterpret_cast<const char16_t*>(entry.cFileName);
    if (name == u"." || name == u"..") continue;
    const std::u16string path = folder + u'\\' + name;
    const bool isFolder = (entry.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
    if (isFolder && (entry.dwFileAttributes & FILE_ATTRIBUTE_REPARSE_POINT) == 0) {
      RemoveFolder(path);
    } else if (!(isFolder ? ::RemoveDirectoryW(LongPath(path).c_str())
                          : ::DeleteFileW(LongPath(path).c_str()))) {
      Unremovable(path, ::GetLastError());
    }
  }
  if (!::RemoveDirectoryW(LongPath(folder).c_str())) Unremovable(folder, ::GetLastError());
}

bool IsThere(const std::u16string& path) {
  return ::GetFileAttributesW(LongPath(path).c_str()) != INVALID_FILE_ATTRIBUTES;
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
  static_cast<void>(ExistingFolder(m_Root + std::u16string(kMakersFolder)));
  MakeFolder(m_Path, kOpenRights);
  MakeFolder(PrivatePath(), kPrivateRights);
  SetRightsOfFiles(PrivatePath(), kPrivateFileRights);
}

void WindowsHome::Remove(const std::string& root) {
  const std::u16string path = Locate(root);
  if (path.empty() || !IsThere(path)) return;
  const std::u16string makers = path.substr(0, path.rfind(u'\\'));
  for (const std::u16string& folder : {makers, path}) static_cast<void>(ExistingFolder(folder));
  RemoveFolder(path);
  ::RemoveDirectoryW(LongPath(makers).c_str());  // fails where something else is in it
}

}  // namespace corvane::platform::windows
