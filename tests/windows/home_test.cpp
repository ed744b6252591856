// The folders of an installation, and who may change what the service relies on.

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

#include "any_host/temp_directory.h"
#include "platform/utf.h"
#include "platform/windows/trusted_owner.h"
#include "platform/windows/win32.h"
#include "platform/windows/windows_error.h"
#include "platform/windows/windows_home.h"
#include "platform/windows/windows_instance.h"

namespace corvane::test {

using namespace platform;
using namespace platform::windows;

namespace {

constexpr wchar_t kRunningMutex[] = L"Global\\OstrelNetworks.Corvane.Running";
constexpr wchar_t kStopEvent[] = L"Global\\OstrelNetworks.Corvane.Stop";

// An event whose security is described so.
HANDLE EventOf(const wchar_t* sddl, const wchar_t* name = nullptr) {
  ::SECURITY_ATTRIBUTES attributes{sizeof(attributes), nullptr, FALSE};
  ::ConvertStringSecurityDescriptorToSecurityDescriptorW(sddl, SDDL_REVISION_1,
                                                         &attributes.lpSecurityDescriptor, nullptr);
  const HANDLE event = ::CreateEventW(&attributes, TRUE, TRUE, name);
  ::LocalFree(attributes.lpSecurityDescriptor);
  return event;
}

std::wstring RightsOf(const std::string& path) {
  char descriptor[4096] = {};
  ::DWORD size = 0;
  wchar_t* text = nullptr;
  ::GetFileSecurityW(Wide(ToUtf16(path).c_str()), DACL_SECURITY_INFORMATION, descriptor,
                     sizeof(descriptor), &size);
  ::ConvertSecurityDescriptorToStringSecurityDescriptorW(descriptor, SDDL_REVISION_1,
                                                         DACL_SECURITY_INFORMATION, &text, nullptr);
  const std::wstring rights = text ? text : L"";
  ::LocalFree(text);
  return rights;
}

void OpenToAll(const std::string& path) {
  void* descriptor = nullptr;
  ::ConvertStringSecurityDescriptorToSecurityDescriptorW(L"D:P(A;;FA;;;WD)", SDDL_REVISION_1,
                                                         &descriptor, nullptr);
  EXPECT_TRUE(
      ::SetFileSecurityW(Wide(ToUtf16(path).c_str()), DACL_SECURITY_INFORMATION, descriptor));
  ::LocalFree(descriptor);
}

}  // namespace

TEST(WindowsHome, SetsTheRightsOfWhatIsThereAnew) {
  const TempDirectory root;
  const std::string folder = root / "OstrelNetworks/Corvane/private";
  const std::string key = folder + "/client_key.dpapi";
  { const WindowsHome home(root.Path()); }
  std::ofstream(key) << "moved in from elsewhere";
  OpenToAll(folder);
  OpenToAll(key);
  EXPECT_NE(RightsOf(key).find(L";WD)"), std::wstring::npos) << RightsOf(key);
  const WindowsHome home(root.Path());
  EXPECT_FALSE(RightsOf(key).empty());
  EXPECT_EQ(RightsOf(key).find(L";WD)"), std::wstring::npos) << RightsOf(key);
  EXPECT_EQ(RightsOf(folder).find(L";WD)"), std::wstring::npos) << RightsOf(folder);
  std::ofstream(key) << "and is the service's to write";
  EXPECT_GT(std::filesystem::file_size(key), 25u);
}

TEST(WindowsHome, IsRemovedWithAllThatIsInIt) {
  const TempDirectory root;
  WindowsHome::Remove(root.Path());  // nothing is there
  const std::string folder = root / "OstrelNetworks/Corvane";
  const auto fill = [&] {
    const WindowsHome home(root.Path());
    std::filesystem::create_directories(folder + "/log/older");
    for (const char* const file : {"/a.log", "/log/b.log", "/log/older/c.log", "/private/key"})
      std::ofstream(folder + file) << "text";
  };
  fill();
  std::ofstream(root / "OstrelNetworks/other") << "of another product of the maker's";
  WindowsHome::Remove(root.Path());
  EXPECT_FALSE(std::filesystem::exists(folder));
  EXPECT_TRUE(std::filesystem::exists(root / "OstrelNetworks/other"));
  fill();
  std::filesystem::remove(root / "OstrelNetworks/other");
  WindowsHome::Remove(root.Path());
  EXPECT_FALSE(std::filesystem::exists(root / "OstrelNetworks"));
  EXPECT_TRUE(std::filesystem::exists(root.Path()));
}

TEST(WindowsHome, TakesNoFileForAFolder) {
  const TempDirectory root;
  std::filesystem::create_directories(root / "OstrelNetworks");
  std::ofstream(root / "OstrelNetworks/Corvane") << "a file";
  EXPECT_THROW(WindowsHome{root.Path()}, WindowsError);
}

TEST(TrustedOwner, IsTheSystemAnAdministratorOrThisAccount) {
  const struct {
    const wchar_t* sddl;
    bool isTrusted;
  } kCases[] = {{L"O:SYD:(A;;GA;;;WD)", true},
                {L"O:BAD:(A;;GA;;;WD)", true},
                {L"D:(A;;GA;;;WD)", true},  // of whoever makes it
                {L"O:BUD:(A;;GA;;;WD)", false},
                {L"O:S-1-5-21-1-2-3-1001D:(A;;GA;;;WD)", false}};
  for (const auto& one : kCases) {
    const HANDLE event = EventOf(one.sddl);
    EXPECT_EQ(HasTrustedOwner(event), one.isTrusted) << &one - kCases;
    ::CloseHandle(event);
  }
  EXPECT_FALSE(HasTrustedOwner(nullptr));
}

// Any user can take the name; he keeps the service from its start, but does not pass for it.
TEST(WindowsInstance, IsNotToldOfByAMutexOfAnotherAccount) {
  for (const wchar_t* const sddl : {L"O:BUD:(A;;GA;;;WD)", L"O:BUD:(A;;0x100000;;;WD)"}) {
    ::SECURITY_ATTRIBUTES attributes{sizeof(attributes), nullptr, FALSE};
    ::ConvertStringSecurityDescriptorToSecurityDescriptorW(
        sddl, SDDL_REVISION_1, &attributes.lpSecurityDescriptor, nullptr);
    const HANDLE foreign = ::CreateMutexW(&attributes, FALSE, kRunningMutex);
    ::LocalFree(attributes.lpSecurityDescriptor);
    ASSERT_TRUE(foreign);
    EXPECT_FALSE(WindowsInstance::IsRunning());
    try {
      const WindowsInstance instance(false);
      ADD_FAILURE() << "it has started";
    } catch (const WindowsError& e) {
      EXPECT_NE(std::string(e.what()).find("taken by another account"), std::string::npos)
          << e.what();
    }
    ::CloseHandle(foreign);
  }
  const WindowsInstance instance(false);
  EXPECT_TRUE(WindowsInstance::IsRunning());
}

// Whoever owns the event that stops the service could stop it at will.
TEST(WindowsInstance, StartsWithNoStopEventOfAnotherAccount) {
  const HANDLE foreign = EventOf(L"O:BUD:(A;;GA;;;WD)", kStopEvent);
  ASSERT_TRUE(foreign);
  EXPECT_THROW(WindowsInstance{false}, WindowsError);
  EXPECT_FALSE(WindowsInstance::IsRunning()) << "nothing is left of the attempt";
  ::CloseHandle(foreign);
  const HANDLE asked = EventOf(L"D:(A;;GA;;;WD)", kStopEvent);  // of an earlier --stop, and set
  {
    const WindowsInstance instance(false);
    EXPECT_EQ(::WaitForSingleObject(instance.StopEvent(), 0), ::DWORD{WAIT_TIMEOUT});
    EXPECT_TRUE(WindowsInstance::IsRunning());
  }
  ::CloseHandle(asked);
}

}  // namespace corvane::test
