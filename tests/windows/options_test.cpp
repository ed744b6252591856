// What the environment asks of the service's host.

#include <gmock/gmock.h>

#include "platform/windows/win32.h"
#include "platform/windows/windows_error.h"
#include "platform/windows/windows_options.h"
#include "support/source_dir.h"

namespace corvane::test {

using namespace platform;
using namespace platform::windows;
using testing::HasSubstr;

namespace {

// What the tests' own process was given comes back at the end.
class Variable {
 public:
  Variable(const wchar_t* name, const std::string& value) : m_Name(name) {
    m_Before.resize(::GetEnvironmentVariableW(name, m_Before.data(), 0));
    m_Before.resize(
        ::GetEnvironmentVariableW(name, m_Before.data(), static_cast<::DWORD>(m_Before.size())));
    ::SetEnvironmentVariableW(name, std::wstring(value.begin(), value.end()).c_str());
  }
  ~Variable() { ::SetEnvironmentVariableW(m_Name, m_Before.empty() ? nullptr : m_Before.c_str()); }
  Variable(const Variable&) = delete;
  Variable& operator=(const Variable&) = delete;

 private:
  const wchar_t* m_Name;
  std::wstring m_Before;
};

std::string Refusal() {
  try {
    ReadWindowsOptions();
  } catch (const WindowsError& error) {
    return error.what();
  }
  return {};
}

}  // namespace

TEST(WindowsOptions, NameTheRulesOfAWorldAndOfNothingElse) {
  const Variable world(L"CORVANE_WORLD", SourceDir() + "/worlds/home.json");
  const Variable speed(L"CORVANE_SPEED", "");
  {
    const Variable profile(L"CORVANE_PROFILE", "balanced");
    const sim::World loaded = LoadWorld(ReadWindowsOptions());
    ASSERT_FALSE(loaded.registry.empty());
    EXPECT_EQ(loaded.registry.back().name, u"PolicyProfile");
    EXPECT_EQ(loaded.registry.back().number, 1u);
    const Variable none(L"CORVANE_WORLD", "");
    EXPECT_THAT(Refusal(), HasSubstr("corvane-client profile balanced"));
  }
  const Variable profile(L"CORVANE_PROFILE", "fast");
  EXPECT_THAT(Refusal(), HasSubstr("not \"fast\""));
}

}  // namespace corvane::test
