// Native Wifi: each operation through a library's functions onto a simulated adapter.

#include <stdexcept>

#include "platform/windows/windows_wlan.h"
#include "windows/system_functions.h"

namespace corvane::test {

using platform::windows::SystemLibrary;
using platform::windows::WindowsWlan;

namespace {

constexpr DWORD kAcm = WLAN_NOTIFICATION_SOURCE_ACM;

// The system's header lacks it.
using IhvControl = ::DWORD(::HANDLE client, const ::GUID* adapter, ::WLAN_IHV_CONTROL_TYPE type,
                           ::DWORD inputSize, void* input, ::DWORD outputSize, void* output,
                           ::DWORD* returned);

#define CORVANE_WLAN(name) FunctionOf<&WlanApi::name, decltype(::name)>(#name)
const SystemFunction kFunctions[] = {
    CORVANE_WLAN(WlanOpenHandle),
    CORVANE_WLAN(WlanCloseHandle),
    CORVANE_WLAN(WlanRegisterNotification),
    CORVANE_WLAN(WlanEnumInterfaces),
    CORVANE_WLAN(WlanGetInterfaceCapability),
    CORVANE_WLAN(WlanQueryInterface),
    CORVANE_WLAN(WlanFreeMemory),
    CORVANE_WLAN(WlanScan),
    CORVANE_WLAN(WlanGetAvailableNetworkList),
    CORVANE_WLAN(WlanGetNetworkBssList),
    CORVANE_WLAN(WlanConnect),
    CORVANE_WLAN(WlanDisconnect),
    CORVANE_WLAN(WlanReasonCodeToString),
    CORVANE_WLAN(WlanGetProfile),
    CORVANE_WLAN(WlanGetProfileList),
    CORVANE_WLAN(WlanSetProfile),
    CORVANE_WLAN(WlanDeleteProfile),
    CORVANE_WLAN(WlanGetFilterList),
    FunctionOf<&WlanApi::WlanIhvControl, IhvControl>("WlanIhvControl"),
};
#undef CORVANE_WLAN

const SystemLibrary kSimulated(+[](const char* name) { return FindIn(kFunctions, name); });

class WindowsWlanTest : public SystemPcTest {
 protected:
  void Start(const World& world) { SystemPcTest::Start(world, {.wlan = &m_Wlan}); }

  // The XML text of a profile, empty when there is none of the name.
  std::u16string ProfileText(const char16_t* name) {
    char16_t* xml = nullptr;
    DWORD flags = 77, access = 0;
    const DWORD code =
        Os().wlan.WlanGetProfile(listener->client, &guid, name, nullptr, &xml, &flags, &access);
    if (code != ERROR_SUCCESS) return {};
    EXPECT_EQ(flags, 0u);
    EXPECT_EQ(access, WLAN_WRITE_ACCESS);
    std::u16string text = xml;
    Os().wlan.WlanFreeMemory(xml);
    return text;
  }

 private:
  WindowsWlan m_Wlan{kSimulated};
};

std::vector<Operation<WlanApi>> Operations() {
  static GUID guid;
  static DWORD number;
  static LONG type;
  static HANDLE handle;
  static void* data;
  static char16_t text[8];
  static char16_t* xml;
  static WLAN_INTERFACE_INFO_LIST* adapters;
  static WLAN_INTERFACE_CAPABILITY* capability;
  static WLAN_AVAILABLE_NETWORK_LIST* networks;
  static WLAN_BSS_LIST* entries;
  static WLAN_PROFILE_INFO_LIST* profiles;
  static DOT11_NETWORK_LIST* filters;
  static WLAN_CONNECTION_PARAMETERS parameters;
  static const auto callback = +[](WLAN_NOTIFICATION_DATA*, void*) {};
  return {
      {"WlanOpenHandle", [](auto& it) { return it.WlanOpenHandle(2, nullptr, &number, &handle); }},
      {"WlanCloseHandle", [](auto& it) { return it.WlanCloseHandle(handle, nullptr); }},
      {"WlanRegisterNotification",
       [](auto& it) {
         return it.WlanRegisterNotification(handle, WLAN_NOTIFICATION_SOURCE_ACM, FALSE, callback,
                                            nullptr, nullptr, &number);
       }},
      {"WlanEnumInterfaces",
       [](auto& it) { return it.WlanEnumInterfaces(handle, nullptr, &adapters); }},
      {"WlanGetInterfaceCapability",
       [](auto& it) { return it.WlanGetInterfaceCapability(handle, &guid, nullptr, &capability); }},
      {"WlanQueryInterface",
       [](auto& it) {
         return it.WlanQueryInterface(handle, &guid, 6, nullptr, &number, &data, &type);
       }},
      {"WlanScan", [](auto& it) { return it.WlanScan(handle, &guid, nullptr, nullptr, nullptr); }},
      {"WlanGetAvailableNetworkList",
       [](auto& it) {
         return it.WlanGetAvailableNetworkList(handle, &guid, 0, nullptr, &networks);
       }},
      {"WlanGetNetworkBssList",
       [](auto& it) {
         return it.WlanGetNetworkBssList(handle, &guid, nullptr, 3, 0, nullptr, &entries);
       }},
      {"WlanConnect", [](auto& it) { return it.WlanConnect(handle, &guid, &parameters, nullptr); }},
      {"WlanDisconnect", [](auto& it) { return it.WlanDisconnect(handle, &guid, nullptr); }},
      {"WlanReasonCodeToString",
       [](auto& it) { return it.WlanReasonCodeToString(0, 8, text, nullptr); }},
      {"WlanGetProfile",
       [](auto& it) {
         return it.WlanGetProfile(handle, &guid, u"a", nullptr, &xml, &number, &number);
       }},
      {"WlanGetProfileList",
       [](auto& it) { return it.WlanGetProfileList(handle, &guid, nullptr, &profiles); }},
      {"WlanSetProfile",
       [](auto& it) {
         return it.WlanSetProfile(handle, &guid, 0, u"a", nullptr, TRUE, nullptr, &number);
       }},
      {"WlanDeleteProfile",
       [](auto& it) { return it.WlanDeleteProfile(handle, &guid, u"a", nullptr); }},
      {"WlanGetFilterList",
       [](auto& it) { return it.WlanGetFilterList(handle, 0, nullptr, &filters); }},
      {"WlanIhvControl",
       [](auto& it) { return it.WlanIhvControl(handle, &guid, 1, 8, text, 8, text, &number); }},
  };
}

void AskTheDriver(WlanApi& wlan, HANDLE client, const GUID& guid) {
  BYTE input[28] = {9}, output[28] = {};
  DWORD returned = 0;
  EXPECT_EQ(wlan.WlanIhvControl(client, &guid, wlan_ihv_control_type_driver, sizeof input, input,
                                sizeof output, output, &returned),
            ERROR_SUCCESS);
  EXPECT_EQ(returned, 28u);
  EXPECT_EQ(output[0], 9);
  EXPECT_EQ(output[27], 4);
}

void LookAtTheFilter(WlanApi& wlan, HANDLE client) {
  DOT11_NETWORK_LIST* filters = nullptr;
  ASSERT_EQ(wlan.WlanGetFilterList(client, wlan_filter_list_type_user_deny, nullptr, &filters),
            ERROR_SUCCESS);
  ASSERT_EQ(filters->dwNumberOfItems, 1u);
  EXPECT_EQ(filters->Network[0].dot11Ssid.uSSIDLength, 6u);
  wlan.WlanFreeMemory(filters);
}

void SetTheOneProfile(WlanApi& wlan, HANDLE client, const GUID& guid, const std::u16string& xml) {
  DWORD why = 77;
  EXPECT_EQ(wlan.WlanSetProfile(client, &guid, 0, xml.c_str(), nullptr, FALSE, nullptr, &why),
            ERROR_SUCCESS);
  EXPECT_EQ(why, WLAN_REASON_CODE_SUCCESS);
  WLAN_PROFILE_INFO_LIST* profiles = nullptr;
  ASSERT_EQ(wlan.WlanGetProfileList(client, &guid, nullptr, &profiles), ERROR_SUCCESS);
  ASSERT_EQ(profiles->dwNumberOfItems, 1u);
  EXPECT_EQ(std::u16string(profiles->ProfileInfo[0].strProfileName), u"Office");
  wlan.WlanFreeMemory(profiles);
}

}  // namespace

TEST_F(WindowsWlanTest, AStoryPassesThroughEachOfTheSystemsFunctions) {
  World world = TwoNetworks();
  world.adapters[0].privateInterface = true;
  world.filters = {{wlan_filter_list_type_user_deny, "Cellar", dot11_BSS_type_infrastructure}};
  Start(world);
  WlanApi& wlan = Os().wlan;
  const HANDLE client = listener->client;

  WLAN_INTERFACE_INFO_LIST* adapters = nullptr;
  ASSERT_EQ(wlan.WlanEnumInterfaces(client, nullptr, &adapters), ERROR_SUCCESS);
  ASSERT_EQ(adapters->dwNumberOfItems, 1u);
  EXPECT_EQ(adapters->InterfaceInfo[0].InterfaceGuid, guid);
  EXPECT_EQ(std::u16string(adapters->InterfaceInfo[0].strInterfaceDescription),
            world.adapters[0].description);
  wlan.WlanFreeMemory(adapters);
  WLAN_INTERFACE_CAPABILITY* capability = nullptr;
  ASSERT_EQ(wlan.WlanGetInterfaceCapability(client, &guid, nullptr, &capability), ERROR_SUCCESS);
  EXPECT_EQ(capability->dwNumberOfSupportedPhys, 3u);
  EXPECT_EQ(capability->dot11PhyTypes[2], dot11_phy_type_vht);
  wlan.WlanFreeMemory(capability);

  ASSERT_EQ(Scan("Attic"), ERROR_SUCCESS);
  RunFor(4s);
  EXPECT_EQ(listener->Codes(kAcm), "7 26");
  EXPECT_EQ(BssNames(), "Office 1:1, Office 1:2, Attic 2:1");
  EXPECT_EQ(Available().size(), 2u);
  listener->told.clear();
  constexpr Mac kTwo{2, 0, 0, 0, 1, 2};
  ASSERT_EQ(Connect(u"Office", &kTwo), ERROR_SUCCESS);
  RunFor(3s);
  EXPECT_EQ(listener->Codes(kAcm), "9 10");
  EXPECT_EQ(listener->Last(kAcm, wlan_notification_acm_connection_complete)
                ->As<WLAN_CONNECTION_NOTIFICATION_DATA>()
                .wlanReasonCode,
            0u);
  EXPECT_EQ(ConnectedBssid(), kApTwo);
  ASSERT_EQ(wlan.WlanDisconnect(client, &guid, nullptr), ERROR_SUCCESS);
  RunFor(1s);
  EXPECT_EQ(ConnectedBssid(), "error 5023");

  char16_t reason[16] = {};
  EXPECT_EQ(wlan.WlanReasonCodeToString(WLAN_REASON_CODE_USER_CANCELLED, 16, reason, nullptr),
            ERROR_SUCCESS);
  EXPECT_EQ(std::u16string(reason).size(), 15u) << "cut to the buffer, in characters";
  AskTheDriver(wlan, client, guid);
  LookAtTheFilter(wlan, client);

  // A profile goes and comes back.
  const std::u16string xml = ProfileText(u"Office");
  EXPECT_EQ(xml, world.profiles[0].xml);
  EXPECT_EQ(wlan.WlanDeleteProfile(client, &guid, u"Office", nullptr), ERROR_SUCCESS);
  EXPECT_EQ(ProfileText(u"Office"), u"");
  SetTheOneProfile(wlan, client, guid, xml);

  // Nothing is told when the client has asked for nothing any more.
  DWORD before = 0;
  EXPECT_EQ(wlan.WlanRegisterNotification(client, WLAN_NOTIFICATION_SOURCE_NONE, FALSE, nullptr,
                                          nullptr, nullptr, &before),
            ERROR_SUCCESS);
  EXPECT_EQ(before, 0xFFFFu);
  listener->told.clear();
  ASSERT_EQ(Scan(), ERROR_SUCCESS);
  RunFor(4s);
  EXPECT_TRUE(listener->told.empty());
  listener.reset();
  EXPECT_EQ(wlan.WlanScan(client, &guid, nullptr, nullptr, nullptr), ERROR_INVALID_HANDLE);
  for (const SystemFunction& function : kFunctions) EXPECT_GT(*function.calls, 0) << function.name;
  EXPECT_EQ(CallsOf(kFunctions, "WlanFreeMemory"), 8) << "once for each that was given out";
}

TEST(WindowsWlan, AFaultOrAMissingLibraryIsTheFailureOfOneOperation) {
  WindowsWlan missing(kMissing), faulting(kFaulting);
  ExpectFailures<WlanApi>(Operations(), missing, faulting);
  missing.WlanFreeMemory(nullptr);
  EXPECT_EQ(FaultCodeOf([&] { faulting.WlanFreeMemory(&missing); }), EXCEPTION_ACCESS_VIOLATION);
}

namespace {

// What the system was given to call back.
struct Asked {
  ::WLAN_NOTIFICATION_CALLBACK callback = nullptr;
  void* context = nullptr;
};
std::vector<Asked> g_Asked;
::DWORD g_Answer = 0;

::DWORD WINAPI TakeCallback(::HANDLE, ::DWORD, ::WINBOOL, ::WLAN_NOTIFICATION_CALLBACK callback,
                            void* context, void*, ::DWORD*) {
  g_Asked.push_back({callback, context});
  return g_Answer;
}
::DWORD WINAPI CloseHandleOf(::HANDLE, void*) { return g_Answer; }

const SystemFunction kCallbackFunctions[] = {
    {"WlanRegisterNotification", reinterpret_cast<void*>(&TakeCallback), nullptr},
    {"WlanCloseHandle", reinterpret_cast<void*>(&CloseHandleOf), nullptr}};

// Notes what it is told, and fails.
void NoteAndThrow(WLAN_NOTIFICATION_DATA* data, void* context) {
  static_cast<std::vector<WLAN_NOTIFICATION_DATA>*>(context)->push_back(*data);
  throw std::runtime_error("of the callback");
}

}  // namespace

TEST(WindowsWlan, ACallbackGetsItsDataAndLetsNothingOut) {
  const SystemLibrary library(+[](const char* name) { return FindIn(kCallbackFunctions, name); });
  WindowsWlan wlan(library);
  g_Asked.clear();
  int handles[2] = {};
  std::vector<WLAN_NOTIFICATION_DATA> first, second;
  const auto ask = [&](DWORD source, std::vector<WLAN_NOTIFICATION_DATA>* told) {
    return wlan.WlanRegisterNotification(&handles[0], source, FALSE, told ? &NoteAndThrow : nullptr,
                                         told, nullptr, nullptr);
  };
  const auto tell = [](const Asked& asked, ::DWORD code) {
    ::WLAN_NOTIFICATION_DATA data{};
    data.NotificationSource = 8;
    data.NotificationCode = code;
    data.InterfaceGuid.Data1 = 0xA1;
    asked.callback(&data, asked.context);
  };
  EXPECT_EQ(ask(WLAN_NOTIFICATION_SOURCE_ACM, &first), 0u);
  EXPECT_EQ(ask(WLAN_NOTIFICATION_SOURCE_ACM, &second), 0u);
  ASSERT_EQ(g_Asked.size(), 2u);
  tell(g_Asked[1], 10);
  tell(g_Asked[0], 9);  // the system was about to call it when the second came
  ASSERT_EQ(first.size(), 1u);
  ASSERT_EQ(second.size(), 1u);
  EXPECT_EQ(first[0].NotificationCode, 9u);
  EXPECT_EQ(second[0].NotificationCode, 10u);
  EXPECT_EQ(second[0].NotificationSource, 8u);
  EXPECT_EQ(second[0].InterfaceGuid.Data1, 0xA1u);

  // A failed call takes nothing away.
  g_Answer = ERROR_INVALID_PARAMETER;
  EXPECT_EQ(ask(WLAN_NOTIFICATION_SOURCE_NONE, nullptr), ERROR_INVALID_PARAMETER);
  EXPECT_EQ(ask(WLAN_NOTIFICATION_SOURCE_ACM, &first), ERROR_INVALID_PARAMETER);
  EXPECT_EQ(wlan.WlanCloseHandle(&handles[0], nullptr), ERROR_INVALID_PARAMETER);
  EXPECT_EQ(wlan.Registrations(), 2u);
  g_Answer = 0;
  EXPECT_EQ(ask(WLAN_NOTIFICATION_SOURCE_NONE, &first), 0u);
  EXPECT_EQ(g_Asked.back().callback, nullptr);
  EXPECT_EQ(wlan.Registrations(), 0u);
  // Those of another client stay.
  EXPECT_EQ(ask(WLAN_NOTIFICATION_SOURCE_ACM, &first), 0u);
  EXPECT_EQ(wlan.WlanCloseHandle(&handles[1], nullptr), 0u);
  EXPECT_EQ(wlan.Registrations(), 1u);
  EXPECT_EQ(wlan.WlanCloseHandle(&handles[0], nullptr), 0u);
  EXPECT_EQ(wlan.Registrations(), 0u);
}

}  // namespace corvane::test
