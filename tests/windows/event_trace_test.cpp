// Event tracing and power.

#include <stdexcept>

#include "platform/windows/windows_event_trace.h"
#include "platform/windows/windows_power.h"
#include "windows/system_functions.h"

namespace corvane::test {

using platform::windows::SystemLibrary;
using platform::windows::WindowsEventTrace;
using platform::windows::WindowsPower;

namespace {

// The system's side: one provider, and what has been written.
struct Provider {
  ::PENABLECALLBACK callback = nullptr;
  void* context = nullptr;
  ::ULONG registered = 0;  // what EventRegister answers
  std::string written;
} g_Provider;

void Tell(::ULONG code, ::UCHAR level) {
  const ::GUID source{0xA1, 0, 0, {}};
  g_Provider.callback(&source, code, level, 3, 4, nullptr, g_Provider.context);
}
::ULONG WINAPI Register(::LPCGUID id, ::PENABLECALLBACK callback, void* context,
                        ::REGHANDLE* handle) {
  g_Provider.callback = callback;
  g_Provider.context = context;
  if (callback) Tell(EVENT_CONTROL_CODE_ENABLE_PROVIDER, 5);  // a session listens already
  *handle = id->Data1;
  return g_Provider.registered;
}
::ULONG WINAPI Unregister(::REGHANDLE) {
  Tell(EVENT_CONTROL_CODE_DISABLE_PROVIDER, 0);
  return 0;
}
::ULONG WINAPI SetInformation(::REGHANDLE handle, ::EVENT_INFO_CLASS kind, void* data,
                              ::ULONG length) {
  g_Provider.written += std::to_string(handle) + ":" + std::to_string(kind) + ":" +
                        std::string(static_cast<const char*>(data), length) + " ";
  return 0;
}
::ULONG WINAPI Write(::REGHANDLE handle, ::PCEVENT_DESCRIPTOR event, ::LPCGUID activity,
                     ::LPCGUID related, ::ULONG count, ::PEVENT_DATA_DESCRIPTOR data) {
  g_Provider.written += std::to_string(handle) + ":" + std::to_string(event->Level) + ":" +
                        std::to_string(activity ? activity->Data1 : 0) + ":" +
                        std::to_string(related ? related->Data1 : 0);
  for (::ULONG i = 0; i < count; ++i) {
    g_Provider.written += ":" + std::to_string(data[i].Reserved) +
                          std::string(reinterpret_cast<const char*>(data[i].Ptr), data[i].Size);
  }
  return 0;
}

const SystemFunction kFunctions[] = {
    {"EventRegister", reinterpret_cast<void*>(&Register), nullptr},
    {"EventUnregister", reinterpret_cast<void*>(&Unregister), nullptr},
    {"EventSetInformation", reinterpret_cast<void*>(&SetInformation), nullptr},
    {"EventWriteTransfer", reinterpret_cast<void*>(&Write), nullptr},
};
const SystemLibrary kSimulated(+[](const char* name) { return FindIn(kFunctions, name); });

constexpr GUID kProvider{0x77, 0, 0, {}};

// What a session has told, as "state level " each; then the callback fails.
void NoteAndThrow(const GUID* source, DWORD isEnabled, BYTE level, ULONGLONG any, ULONGLONG all,
                  void* filter, void* context) {
  EXPECT_EQ(source->Data1, 0xA1u);
  EXPECT_EQ(any, 3u);
  EXPECT_EQ(all, 4u);
  EXPECT_EQ(filter, nullptr);
  *static_cast<std::string*>(context) +=
      std::to_string(isEnabled) + " " + std::to_string(level) + " ";
  throw std::runtime_error("of the callback");
}

std::vector<Operation<EventTraceApi>> Operations() {
  static REGHANDLE handle;
  static EVENT_DESCRIPTOR event;
  return {
      {"EventRegister",
       [](auto& it) { return it.EventRegister(&kProvider, nullptr, nullptr, &handle); }},
      {"EventSetInformation",
       [](auto& it) { return it.EventSetInformation(1, EventProviderSetTraits, "a", 1); }},
      {"EventWriteTransfer",
       [](auto& it) { return it.EventWriteTransfer(1, &event, nullptr, nullptr, 0, nullptr); }},
      {"EventUnregister", [](auto& it) { return it.EventUnregister(1); }},
  };
}

}  // namespace

TEST(WindowsEventTrace, ASessionIsHeardUntilTheProviderGoesAndNothingLeavesTheCallback) {
  WindowsEventTrace trace(kSimulated);
  g_Provider = {};
  std::string told;
  REGHANDLE handle = 0;
  ASSERT_EQ(trace.EventRegister(&kProvider, &NoteAndThrow, &told, &handle), 0u);
  EXPECT_EQ(handle, 0x77u);
  EXPECT_EQ(told, "1 5 ") << "within the registration";
  Tell(EVENT_CONTROL_CODE_CAPTURE_STATE, 4);
  EXPECT_EQ(told, "1 5 2 4 ");
  EXPECT_EQ(trace.EventUnregister(0), 0u);  // of a registration that failed: it ends no other
  EXPECT_EQ(trace.EventUnregister(handle), 0u);
  EXPECT_EQ(told, "1 5 2 4 0 0 0 0 ");
  Tell(EVENT_CONTROL_CODE_ENABLE_PROVIDER, 5);  // the system was about to tell it
  EXPECT_EQ(told, "1 5 2 4 0 0 0 0 ");
  // One that was refused.
  g_Provider.registered = ERROR_NOT_ENOUGH_MEMORY;
  EXPECT_EQ(trace.EventRegister(&kProvider, &NoteAndThrow, &told, &handle),
            ERROR_NOT_ENOUGH_MEMORY);
}

TEST(WindowsEventTrace, AnEventIsWrittenWithAllItsParts) {
  WindowsEventTrace trace(kSimulated);
  g_Provider = {};
  EVENT_DESCRIPTOR event;
  event.Level = 5;
  EVENT_DATA_DESCRIPTOR parts[2];
  parts[0] = {reinterpret_cast<std::uint64_t>("meta"), 4,
              EVENT_DATA_DESCRIPTOR_TYPE_PROVIDER_METADATA, 0, 0};
  parts[1] = {reinterpret_cast<std::uint64_t>("data"), 4, EVENT_DATA_DESCRIPTOR_TYPE_NONE, 0, 0};
  constexpr GUID activity{7, 0, 0, {}}, related{8, 0, 0, {}};
  EXPECT_EQ(trace.EventSetInformation(9, EventProviderSetTraits, "traits", 6), 0u);
  EXPECT_EQ(trace.EventWriteTransfer(9, &event, &activity, &related, 2, parts), 0u);
  EXPECT_EQ(g_Provider.written, "9:2:traits 9:5:7:8:2meta:0data");
}

TEST(WindowsEventTrace, AFaultOrAMissingLibraryIsTheFailureOfOneOperation) {
  WindowsEventTrace missing(kMissing), faulting(kFaulting);
  ExpectFailures<EventTraceApi>(Operations(), missing, faulting);
}

TEST(WindowsEventTrace, TheSystemTakesAProviderAndItsEvents) {
  WindowsEventTrace trace;
  REGHANDLE handle = 0;
  ASSERT_EQ(trace.EventRegister(&kProvider, nullptr, nullptr, &handle), 0u);
  EXPECT_NE(handle, 0u);
  static constexpr char kTraits[] = "\x0b\0Corvane.T";  // size, name and NUL
  EXPECT_EQ(trace.EventSetInformation(handle, EventProviderSetTraits, kTraits, 11), 0u);
  EVENT_DESCRIPTOR event;
  EVENT_DATA_DESCRIPTOR part;
  EXPECT_EQ(trace.EventWriteTransfer(handle, &event, nullptr, nullptr, 1, &part), 0u);
  EXPECT_EQ(trace.EventUnregister(handle), 0u);
}

TEST(WindowsPower, TellsMainsAndBattery) {
  WindowsPower power;
  SYSTEM_POWER_STATUS status;
  status.ACLineStatus = 77;
  ASSERT_EQ(power.GetSystemPowerStatus(&status), TRUE);
  EXPECT_TRUE(status.ACLineStatus <= 1 || status.ACLineStatus == 255);
  EXPECT_TRUE(status.BatteryLifePercent <= 100 || status.BatteryLifePercent == 255);
  EXPECT_EQ(FaultCodeOf([&] { power.GetSystemPowerStatus(nullptr); }), EXCEPTION_ACCESS_VIOLATION);
}

}  // namespace corvane::test
