// The network list: COM objects of the system's types onto a simulated list.

#include "platform/windows/windows_network_list.h"
#include "windows/system_functions.h"

namespace corvane::test {

using platform::windows::SystemLibrary;
using platform::windows::Wide;
using platform::windows::WindowsNetworkList;

namespace {

int g_Objects = 0;  // of the system's types that live
bool g_bFaults = false;

void FaultIfAsked() {
  if (g_bFaults) ReadNowhere();
}
::HRESULT NotThere() { return E_NOTIMPL; }

// What each of the system's objects is: counted, of no type library. `It` is the seam's object
// behind it, which it ends.
template <typename Interface, typename It>
class Object : public Interface {
 public:
  explicit Object(It* it) : m_pIt(it) { ++g_Objects; }
  virtual ~Object() {
    m_pIt->Release();
    --g_Objects;
  }
  ::HRESULT STDMETHODCALLTYPE QueryInterface(REFIID, void**) override { return E_NOINTERFACE; }
  ::ULONG STDMETHODCALLTYPE AddRef() override { return ++m_References; }
  ::ULONG STDMETHODCALLTYPE Release() override {
    FaultIfAsked();
    const ::ULONG left = --m_References;
    if (left == 0) delete this;
    return left;
  }
  ::HRESULT STDMETHODCALLTYPE GetTypeInfoCount(UINT*) override { return NotThere(); }
  ::HRESULT STDMETHODCALLTYPE GetTypeInfo(UINT, LCID, ITypeInfo**) override { return NotThere(); }
  ::HRESULT STDMETHODCALLTYPE GetIDsOfNames(REFIID, LPOLESTR*, UINT, LCID, DISPID*) override {
    return NotThere();
  }
  ::HRESULT STDMETHODCALLTYPE Invoke(DISPID, REFIID, LCID, ::WORD, DISPPARAMS*, VARIANT*,
                                     EXCEPINFO*, UINT*) override {
    return NotThere();
  }

 protected:
  ::HRESULT Text(::HRESULT result, const std::u16string& text, ::BSTR* given) {
    *given = nullptr;
    if (result != S_OK) return result == S_FALSE ? S_OK : result;  // a null BSTR
    *given = ::SysAllocStringLen(Wide(text.c_str()), static_cast<UINT>(text.size()));
    return S_OK;
  }
  ::HRESULT Flag(::HRESULT result, bool flag, ::VARIANT_BOOL* given) {
    FaultIfAsked();
    *given = flag ? VARIANT_TRUE : VARIANT_FALSE;
    return result;
  }

  It* const m_pIt;

 private:
  ::ULONG m_References = 1;
};

class SystemNetwork final : public Object<::INetwork, INetwork> {
 public:
  using Object::Object;
  ::HRESULT STDMETHODCALLTYPE GetName(::BSTR* name) override {
    FaultIfAsked();
    std::u16string text;
    const ::HRESULT result = m_pIt->GetName(&text);
    return Text(result, text, name);
  }
  ::HRESULT STDMETHODCALLTYPE SetName(::BSTR) override { return NotThere(); }
  ::HRESULT STDMETHODCALLTYPE GetDescription(::BSTR* description) override {
    FaultIfAsked();
    std::u16string text;
    const ::HRESULT result = m_pIt->GetDescription(&text);
    return Text(result, text, description);
  }
  ::HRESULT STDMETHODCALLTYPE SetDescription(::BSTR) override { return NotThere(); }
  ::HRESULT STDMETHODCALLTYPE GetNetworkId(::GUID*) override { return NotThere(); }
  ::HRESULT STDMETHODCALLTYPE GetDomainType(::NLM_DOMAIN_TYPE*) override { return NotThere(); }
  ::HRESULT STDMETHODCALLTYPE GetNetworkConnections(::IEnumNetworkConnections**) override {
    return NotThere();
  }
  ::HRESULT STDMETHODCALLTYPE GetTimeCreatedAndConnected(::DWORD* createdLow, ::DWORD* createdHigh,
                                                         ::DWORD* connectedLow,
                                                         ::DWORD* connectedHigh) override {
    FaultIfAsked();
    FILETIME created, connected;
    const ::HRESULT result = m_pIt->GetTimeCreatedAndConnected(&created, &connected);
    *createdLow = created.dwLowDateTime;
    *createdHigh = created.dwHighDateTime;
    *connectedLow = connected.dwLowDateTime;
    *connectedHigh = connected.dwHighDateTime;
    return result;
  }
  ::HRESULT STDMETHODCALLTYPE get_IsConnectedToInternet(::VARIANT_BOOL* given) override {
    bool flag = false;
    const ::HRESULT result = m_pIt->get_IsConnectedToInternet(&flag);
    return Flag(result, flag, given);
  }
  ::HRESULT STDMETHODCALLTYPE get_IsConnected(::VARIANT_BOOL* given) override {
    bool flag = false;
    const ::HRESULT result = m_pIt->get_IsConnected(&flag);
    return Flag(result, flag, given);
  }
  ::HRESULT STDMETHODCALLTYPE GetConnectivity(::NLM_CONNECTIVITY* connectivity) override {
    FaultIfAsked();
    DWORD flags = 0;
    const ::HRESULT result = m_pIt->GetConnectivity(&flags);
    *connectivity = static_cast<::NLM_CONNECTIVITY>(flags);
    return result;
  }
  ::HRESULT STDMETHODCALLTYPE GetCategory(::NLM_NETWORK_CATEGORY* category) override {
    FaultIfAsked();
    LONG number = 0;
    const ::HRESULT result = m_pIt->GetCategory(&number);
    *category = static_cast<::NLM_NETWORK_CATEGORY>(number);
    return result;
  }
  ::HRESULT STDMETHODCALLTYPE SetCategory(::NLM_NETWORK_CATEGORY) override { return NotThere(); }
};

class SystemConnection final : public Object<::INetworkConnection, INetworkConnection> {
 public:
  using Object::Object;
  ::HRESULT STDMETHODCALLTYPE GetNetwork(::INetwork** network) override {
    FaultIfAsked();
    INetwork* it = nullptr;
    const ::HRESULT result = m_pIt->GetNetwork(&it);
    if (result == S_OK) *network = new SystemNetwork(it);
    return result;
  }
  ::HRESULT STDMETHODCALLTYPE get_IsConnectedToInternet(::VARIANT_BOOL*) override {
    return NotThere();
  }
  ::HRESULT STDMETHODCALLTYPE get_IsConnected(::VARIANT_BOOL*) override { return NotThere(); }
  ::HRESULT STDMETHODCALLTYPE GetConnectivity(::NLM_CONNECTIVITY*) override { return NotThere(); }
  ::HRESULT STDMETHODCALLTYPE GetConnectionId(::GUID*) override { return NotThere(); }
  ::HRESULT STDMETHODCALLTYPE GetAdapterId(::GUID* adapter) override {
    FaultIfAsked();
    return m_pIt->GetAdapterId(reinterpret_cast<GUID*>(adapter));
  }
  ::HRESULT STDMETHODCALLTYPE GetDomainType(::NLM_DOMAIN_TYPE*) override { return NotThere(); }
};

template <typename Interface, typename It, typename SystemItem, typename Item, typename Wrapper>
class SystemEnumerator final : public Object<Interface, It> {
 public:
  using Object<Interface, It>::Object;
  ::HRESULT STDMETHODCALLTYPE get__NewEnum(IEnumVARIANT**) override { return NotThere(); }
  ::HRESULT STDMETHODCALLTYPE Next(::ULONG count, SystemItem** items, ::ULONG* fetched) override {
    FaultIfAsked();
    std::vector<Item*> its(count);
    ULONG got = 0;
    const ::HRESULT result = this->m_pIt->Next(count, its.data(), &got);
    for (ULONG i = 0; i < got; ++i) items[i] = new Wrapper(its[i]);
    *fetched = got;
    return result;
  }
  ::HRESULT STDMETHODCALLTYPE Skip(::ULONG) override { return NotThere(); }
  ::HRESULT STDMETHODCALLTYPE Reset() override { return NotThere(); }
  ::HRESULT STDMETHODCALLTYPE Clone(Interface**) override { return NotThere(); }
};
using SystemNetworks =
    SystemEnumerator<::IEnumNetworks, IEnumNetworks, ::INetwork, INetwork, SystemNetwork>;
using SystemConnections =
    SystemEnumerator<::IEnumNetworkConnections, IEnumNetworkConnections, ::INetworkConnection,
                     INetworkConnection, SystemConnection>;

class SystemManager final : public Object<::INetworkListManager, INetworkListManager> {
 public:
  using Object::Object;
  ::HRESULT STDMETHODCALLTYPE GetNetworks(::NLM_ENUM_NETWORK flags,
                                          ::IEnumNetworks** networks) override {
    FaultIfAsked();
    IEnumNetworks* it = nullptr;
    const ::HRESULT result = m_pIt->GetNetworks(static_cast<DWORD>(flags), &it);
    if (result == S_OK) *networks = new SystemNetworks(it);
    return result;
  }
  ::HRESULT STDMETHODCALLTYPE GetNetwork(::GUID, ::INetwork**) override { return NotThere(); }
  ::HRESULT STDMETHODCALLTYPE
  GetNetworkConnections(::IEnumNetworkConnections** connections) override {
    FaultIfAsked();
    IEnumNetworkConnections* it = nullptr;
    const ::HRESULT result = m_pIt->GetNetworkConnections(&it);
    if (result == S_OK) *connections = new SystemConnections(it);
    return result;
  }
  ::HRESULT STDMETHODCALLTYPE GetNetworkConnection(::GUID, ::INetworkConnection**) override {
    return NotThere();
  }
  ::HRESULT STDMETHODCALLTYPE IsConnectedToInternet(::VARIANT_BOOL* given) override {
    bool flag = false;
    const ::HRESULT result = m_pIt->get_IsConnectedToInternet(&flag);
    return Flag(result, flag, given);
  }
  ::HRESULT STDMETHODCALLTYPE IsConnected(::VARIANT_BOOL*) override { return NotThere(); }
  ::HRESULT STDMETHODCALLTYPE GetConnectivity(::NLM_CONNECTIVITY*) override { return NotThere(); }
};

::HRESULT WINAPI CreateInstance(REFCLSID of, IUnknown*, ::DWORD, REFIID as, void** object) {
  if (!IsEqualGUID(of, CLSID_NetworkListManager) || !IsEqualGUID(as, IID_INetworkListManager)) {
    return REGDB_E_CLASSNOTREG;
  }
  INetworkListManager* it = nullptr;
  const ::HRESULT result = g_pBehind<NetworkListApi>->CoCreateNetworkListManager(&it);
  if (result == S_OK) *object = static_cast<::INetworkListManager*>(new SystemManager(it));
  return result;
}
::HRESULT WINAPI Initialize(void*, ::DWORD model) {
  return g_pBehind<NetworkListApi>->CoInitializeEx(model);
}
void WINAPI Uninitialize() { g_pBehind<NetworkListApi>->CoUninitialize(); }

const SystemFunction kFunctions[] = {
    {"CoInitializeEx", reinterpret_cast<void*>(&Initialize), nullptr},
    {"CoUninitialize", reinterpret_cast<void*>(&Uninitialize), nullptr},
    {"CoCreateInstance", reinterpret_cast<void*>(&CreateInstance), nullptr},
};
const SystemLibrary kSimulated(+[](const char* name) { return FindIn(kFunctions, name); });

World OfficeAndNameless() {
  World world = TwoNetworks();
  world.adapters[0].connectedTo = Mac{2, 0, 0, 0, 1, 1};
  platform::sim::Network office, nameless;
  office.name = u"Office 2";
  office.description = u"Office";
  office.ssid = "Office";
  office.category = 1;
  nameless.nullName = true;
  nameless.createdSecs = 1'700'000'000;
  nameless.connectedSecs = 1'700'000'077;
  world.networks = {office, nameless};
  return world;
}

class WindowsNetworkListTest : public SystemPcTest {
 protected:
  void Start() {
    SystemPcTest::Start(OfficeAndNameless(), {.networkList = &m_List});
    ASSERT_EQ(m_List.CoInitializeEx(0), S_OK);
    ASSERT_EQ(m_List.CoCreateNetworkListManager(&manager), S_OK);
  }
  void TearDown() override {
    m_List.CoUninitialize();
    EXPECT_EQ(g_Objects, 0) << "each reference is given back";
    SystemPcTest::TearDown();
  }

  INetworkListManager* manager = nullptr;

 private:
  WindowsNetworkList m_List{kSimulated};
};

}  // namespace

TEST_F(WindowsNetworkListTest, ReadsNetworksAndConnectionsOfTheSystemsTypes) {
  Start();
  IEnumNetworks* networks = nullptr;
  ASSERT_EQ(manager->GetNetworks(NLM_ENUM_NETWORK_ALL, &networks), S_OK);
  INetwork* found[3] = {};
  ULONG fetched = 77;
  ASSERT_EQ(networks->Next(3, found, &fetched), S_FALSE) << "there are but two";
  ASSERT_EQ(fetched, 2u);
  EXPECT_EQ(networks->Next(1, &found[2], &fetched), S_FALSE);
  EXPECT_EQ(fetched, 0u);
  std::u16string name = u"old", description;
  EXPECT_EQ(found[0]->GetName(&name), S_OK);
  EXPECT_EQ(name, u"Office 2");
  EXPECT_EQ(found[1]->GetName(&name), S_FALSE);
  EXPECT_EQ(name, u"");
  EXPECT_EQ(found[0]->GetDescription(&description), S_OK);
  EXPECT_EQ(description, u"Office");
  LONG category = 0;
  EXPECT_EQ(found[0]->GetCategory(&category), S_OK);
  EXPECT_EQ(category, 1);
  DWORD connectivity = 0;
  EXPECT_EQ(found[0]->GetConnectivity(&connectivity), S_OK);
  EXPECT_EQ(connectivity, 0x40u);
  FILETIME created, connected;
  EXPECT_EQ(found[1]->GetTimeCreatedAndConnected(&created, &connected), S_OK);
  EXPECT_EQ(connected.dwLowDateTime - created.dwLowDateTime, 770'000'000u);
  EXPECT_GT(created.dwHighDateTime, 0u);
  bool isConnected = false, internet = true;
  EXPECT_EQ(found[0]->get_IsConnected(&isConnected), S_OK);
  EXPECT_TRUE(isConnected);
  EXPECT_EQ(found[1]->get_IsConnectedToInternet(&internet), S_OK);
  EXPECT_FALSE(internet);
  EXPECT_EQ(manager->get_IsConnectedToInternet(&internet), S_OK);
  EXPECT_TRUE(internet);

  IEnumNetworkConnections* connections = nullptr;
  ASSERT_EQ(manager->GetNetworkConnections(&connections), S_OK);
  INetworkConnection* connection = nullptr;
  ASSERT_EQ(connections->Next(1, &connection, nullptr), S_OK);
  GUID adapter;
  EXPECT_EQ(connection->GetAdapterId(&adapter), S_OK);
  EXPECT_EQ(adapter, guid);
  INetwork* network = nullptr;
  ASSERT_EQ(connection->GetNetwork(&network), S_OK);
  EXPECT_EQ(network->GetName(&name), S_OK);
  EXPECT_EQ(name, u"Office 2");
  // Each has a life of its own, whatever it came from.
  manager->Release();
  connections->Release();
  networks->Release();
  EXPECT_EQ(g_Objects, 4);
  connection->Release();
  EXPECT_EQ(network->GetCategory(&category), S_OK);
  network->Release();
  for (INetwork* const one : {found[0], found[1]}) one->Release();
}

TEST_F(WindowsNetworkListTest, AFaultOrAFailureIsThatOfOneOperation) {
  Start();
  IEnumNetworks *networks = nullptr, *others = nullptr;
  IEnumNetworkConnections *connections = nullptr, *otherConnections = nullptr;
  INetwork *network = nullptr, *next = nullptr;
  INetworkConnection *connection = nullptr, *nextConnection = nullptr;
  ULONG fetched = 0;
  ASSERT_EQ(manager->GetNetworks(NLM_ENUM_NETWORK_ALL, &networks), S_OK);
  ASSERT_EQ(networks->Next(1, &network, &fetched), S_OK);
  ASSERT_EQ(manager->GetNetworkConnections(&connections), S_OK);
  ASSERT_EQ(connections->Next(1, &connection, &fetched), S_OK);
  std::u16string name = u"old";
  LONG category = 0;
  DWORD flags = 0;
  FILETIME created, connected;
  bool flag = false;
  GUID id;
  const std::function<void()> kOperations[] = {
      [&] { manager->GetNetworks(3, &others); },
      [&] { manager->GetNetworkConnections(&otherConnections); },
      [&] { manager->get_IsConnectedToInternet(&flag); },
      [&] { networks->Next(1, &next, &fetched); },
      [&] { connections->Next(1, &nextConnection, &fetched); },
      [&] { connection->GetAdapterId(&id); },
      [&] { connection->GetNetwork(&next); },
      [&] { network->GetName(&name); },
      [&] { network->GetDescription(&name); },
      [&] { network->GetCategory(&category); },
      [&] { network->GetConnectivity(&flags); },
      [&] { network->GetTimeCreatedAndConnected(&created, &connected); },
      [&] { network->get_IsConnected(&flag); },
      [&] { network->get_IsConnectedToInternet(&flag); },
  };
  g_bFaults = true;
  for (const auto& operation : kOperations) {
    EXPECT_EQ(FaultCodeOf(operation), EXCEPTION_ACCESS_VIOLATION) << &operation - kOperations;
  }
  g_bFaults = false;
  EXPECT_EQ(name, u"old");
  EXPECT_TRUE(!others && !otherConnections && !next && !nextConnection);
  Pc().Devices().Do(R"({"do": "networkList", "on": false})");
  EXPECT_EQ(network->GetName(&name), HRESULT_FROM_WIN32(ERROR_SERVICE_NOT_ACTIVE));
  EXPECT_EQ(manager->GetNetworks(NLM_ENUM_NETWORK_ALL, &others),
            HRESULT_FROM_WIN32(ERROR_SERVICE_NOT_ACTIVE));
  EXPECT_EQ(others, nullptr);
  connection->Release();
  connections->Release();
  network->Release();
  networks->Release();
  manager->Release();
}

TEST(WindowsNetworkList, AFaultOrAMissingLibraryIsTheFailureOfOneOperation) {
  static INetworkListManager* manager;
  const std::vector<Operation<NetworkListApi>> operations = {
      {"CoInitializeEx", [](auto& it) { return it.CoInitializeEx(0); }},
      {"CoCreateNetworkListManager",
       [](auto& it) { return it.CoCreateNetworkListManager(&manager); }}};
  WindowsNetworkList missing(kMissing), faulting(kFaulting);
  ExpectFailures<NetworkListApi>(operations, missing, faulting, E_NOTIMPL);
  missing.CoUninitialize();
  EXPECT_EQ(FaultCodeOf([&] { faulting.CoUninitialize(); }), EXCEPTION_ACCESS_VIOLATION);
}

// The system's own list. What it holds is this machine's; each answer is one, or a documented
// failure (Wine has no names: E_NOTIMPL).
TEST(WindowsNetworkList, TheSystemsOwnListAnswers) {
  WindowsNetworkList list;
  INetworkListManager* manager = nullptr;
  EXPECT_EQ(list.CoCreateNetworkListManager(&manager), CO_E_NOTINITIALIZED);
  ASSERT_EQ(list.CoInitializeEx(0), S_OK);
  EXPECT_EQ(list.CoInitializeEx(0), S_FALSE) << "once more on this thread";
  list.CoUninitialize();
  ASSERT_EQ(list.CoCreateNetworkListManager(&manager), S_OK);
  bool internet = false;
  EXPECT_GE(manager->get_IsConnectedToInternet(&internet), 0);
  IEnumNetworks* networks = nullptr;
  ASSERT_EQ(manager->GetNetworks(NLM_ENUM_NETWORK_ALL, &networks), S_OK);
  INetwork* network = nullptr;
  ULONG fetched = 0;
  int count = 0;
  while (networks->Next(1, &network, &fetched) == S_OK) {
    ++count;
    std::u16string name;
    const HRESULT named = network->GetName(&name);
    EXPECT_TRUE(named >= 0 || named == E_NOTIMPL) << named;
    LONG category = -1;
    EXPECT_EQ(network->GetCategory(&category), S_OK);
    EXPECT_TRUE(category >= 0 && category <= 2) << category;
    network->Release();
  }
  EXPECT_EQ(fetched, 0u);
  IEnumNetworkConnections* connections = nullptr;
  ASSERT_EQ(manager->GetNetworkConnections(&connections), S_OK);
  INetworkConnection* connection = nullptr;
  int connected = 0;
  while (connections->Next(1, &connection, &fetched) == S_OK) {
    GUID adapter;
    EXPECT_EQ(connection->GetAdapterId(&adapter), S_OK);
    EXPECT_NE(adapter, GUID{});
    connection->Release();
    ++connected;
  }
  EXPECT_TRUE(count > 0 || connected == 0);
  connections->Release();
  networks->Release();
  manager->Release();
  list.CoUninitialize();
  EXPECT_EQ(list.CoCreateNetworkListManager(&manager), CO_E_NOTINITIALIZED);
}

}  // namespace corvane::test
