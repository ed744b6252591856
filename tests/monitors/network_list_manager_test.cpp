#include "monitors/network_list_manager.h"

#include <functional>

#include "foundation/exception.h"
#include "support/pc_fixture.h"

namespace corvane {
namespace {

using namespace platform;

struct NetworkSpec {
  WString name;
  WString desc;
  LONG category = 0;
  bool connected = false;
  bool internet = false;
  DWORD connectivity = 0;
  DWORD connectedTime = 0;
  bool nullName = false, failCategory = false, failConnectivity = false;
};

bool s_bFaultInRelease = false;

// Counts the objects that nobody has released.
template <class Interface>
class Counted : public Interface {
 public:
  explicit Counted(int* live) : m_pLive(live) { ++*live; }
  ULONG Release() override {
    --*m_pLive;
    delete this;
    if (s_bFaultInRelease) throw PlatformFault{0xC0000005};
    return 0;
  }
  virtual ~Counted() = default;

 protected:
  int* m_pLive;
};

class Network : public Counted<INetwork> {
 public:
  Network(int* live, const NetworkSpec& spec) : Counted(live), m_Spec(spec) {}
  HRESULT GetName(std::u16string* name) override {
    if (m_Spec.nullName) return S_FALSE;
    *name = m_Spec.name;
    return S_OK;
  }
  HRESULT GetDescription(std::u16string* text) override { return *text = m_Spec.desc, S_OK; }
  HRESULT GetCategory(LONG* category) override {
    if (m_Spec.failCategory) return E_FAIL;
    return *category = m_Spec.category, S_OK;
  }
  HRESULT GetConnectivity(DWORD* flags) override {
    *flags = m_Spec.connectivity;
    return m_Spec.failConnectivity ? E_FAIL : S_OK;
  }
  HRESULT GetTimeCreatedAndConnected(FILETIME*, FILETIME* connected) override {
    connected->dwHighDateTime = m_Spec.connectedTime;
    return S_OK;
  }
  HRESULT get_IsConnected(bool* yes) override { return *yes = m_Spec.connected, S_OK; }
  HRESULT get_IsConnectedToInternet(bool* yes) override { return *yes = m_Spec.internet, S_OK; }

 private:
  NetworkSpec m_Spec;
};

struct Connection {
  GUID adapter;
  NetworkSpec network;
};

struct Script {
  std::vector<NetworkSpec> networks;
  std::vector<Connection> connections;
  HRESULT failCreate = S_OK, failInit = S_OK, failConnections = S_OK;
  std::function<HRESULT(int call)> getNetworks = [](int) { return S_OK; };
  int calls = 0, inits = 0, live = 0;
};

class Networks : public Counted<IEnumNetworks> {
 public:
  explicit Networks(Script* script) : Counted(&script->live), m_pScript(script) {}
  HRESULT Next(ULONG count, INetwork** networks, ULONG* fetched) override {
    for (*fetched = 0; *fetched < count && m_Position < m_pScript->networks.size(); ++*fetched) {
      networks[*fetched] = new Network(m_pLive, m_pScript->networks[m_Position++]);
    }
    return *fetched == count ? S_OK : S_FALSE;
  }

 private:
  Script* m_pScript;
  std::size_t m_Position = 0;
};

class OneConnection : public Counted<INetworkConnection> {
 public:
  OneConnection(int* live, const Connection& connection)
      : Counted(live), m_Connection(connection) {}
  HRESULT GetAdapterId(GUID* adapter) override { return *adapter = m_Connection.adapter, S_OK; }
  HRESULT GetNetwork(INetwork** network) override {
    *network = new Network(m_pLive, m_Connection.network);
    return S_OK;
  }

 private:
  Connection m_Connection;
};

class Connections : public Counted<IEnumNetworkConnections> {
 public:
  explicit Connections(Script* script) : Counted(&script->live), m_pScript(script) {}
  HRESULT Next(ULONG, INetworkConnection** connections, ULONG* fetched) override {
    *fetched = 0;
    if (m_Position == m_pScript->connections.size()) return S_FALSE;
    connections[(*fetched)++] = new OneConnection(m_pLive, m_pScript->connections[m_Position++]);
    return S_OK;
  }

 private:
  Script* m_pScript;
  std::size_t m_Position = 0;
};

class Manager : public Counted<INetworkListManager> {
 public:
  explicit Manager(Script* script) : Counted(&script->live), m_pScript(script) {}
  HRESULT GetNetworks(DWORD, IEnumNetworks** networks) override {
    const HRESULT result = m_pScript->getNetworks(++m_pScript->calls);
    if (result >= 0) *networks = new Networks(m_pScript);
    return result;
  }
  HRESULT GetNetworkConnections(IEnumNetworkConnections** connections) override {
    if (m_pScript->failConnections < 0) return m_pScript->failConnections;
    *connections = new Connections(m_pScript);
    return S_OK;
  }

 private:
  Script* m_pScript;
};

class NetworkList : public NetworkListApi {
 public:
  HRESULT CoInitializeEx(DWORD) override { return ++script.inits, script.failInit; }
  HRESULT CoCreateNetworkListManager(INetworkListManager** manager) override {
    if (script.failCreate == CO_E_NOTINITIALIZED && script.inits > 1) script.failCreate = S_OK;
    if (script.failCreate < 0) return script.failCreate;
    *manager = new Manager(&script);
    return S_OK;
  }
  Script script;
};

class NetworkListManager : public test::KernelTest {
 protected:
  NetworkListManager() : script(Install<NetworkList>().script) {}
  void TearDown() override {
    CNetworkListManager::SetDebugLevel(0);
    KernelTest::TearDown();
    EXPECT_EQ(script.live, 0) << "COM objects not released";
  }

  CNetworkListManager& Nlm() { return CNetworkListManager::GetInstance(); }
  void Refresh(std::vector<NetworkSpec> networks) {
    script.networks = std::move(networks);
    EXPECT_EQ(Nlm().RefreshNetworkCategories(), S_OK);
  }
  // -1 for an unknown base. Tells which instance speaks, as the tests give each its own.
  std::int32_t Category(WStringView base) {
    std::int32_t category = -1;
    return Nlm().GetCatForBaseNetname(base, &category, true) ? category : -1;
  }
  std::string Names(WStringView base) {
    std::list<WString> names;
    if (!Nlm().GetNameForBaseNetname(base, &names)) return "unknown";
    std::string text;
    for (const WString& name : names) text += (text.empty() ? "" : "|") + Narrow(name);
    return text;
  }

  Script& script;
};

NetworkSpec Live(WStringView name, LONG category) {
  return {WString(name), WString(name), category, true};
}
NetworkSpec Dead(WStringView name, LONG category) {
  return {WString(name), WString(name), category};
}

TEST(NetworkName, LosesItsInstanceNumber) {
  const std::pair<WStringView, WStringView> cases[] = {{u"Office 3", u"Office"},
                                                       {u"Office ", u"Office"},
                                                       {u"Office-3", u"Office-3"},
                                                       {u"Room 12 A", u"Room 12 A"},
                                                       {u"Office 3 ", u"Office 3"},
                                                       {u"", u""},
                                                       {u"12", u"12"},
                                                       {u" 12", u""},
                                                       {u"\tA B 10", u"A B"},
                                                       {u"   ", u""},
                                                       {u"Cafe 2 3", u"Cafe 2"}};
  for (const auto& [name, base] : cases) {
    EXPECT_EQ(Narrow(CNetworkListManager::StripInstanceNumFromNetName(name)), Narrow(base))
        << Narrow(name);
  }
}

TEST_F(NetworkListManager, TheSeedPrefersTheInstanceLastConnected) {
  NetworkSpec old = Dead(u"Cafe", 0), recent = Dead(u"Cafe 2", 1), older = Dead(u"Cafe 3", 2);
  old.connectedTime = 5;
  recent.connectedTime = 9;
  older.connectedTime = 9;  // no later than what is there
  Refresh({old, recent, older});
  EXPECT_EQ(Category(u"Cafe"), 1);
  EXPECT_EQ(Names(u"Cafe"), "Cafe|Cafe 2|Cafe 3");
}

TEST_F(NetworkListManager, AnEmptySystemSeedsAgainNextTime) {
  Refresh({});
  EXPECT_EQ(Category(u"Cafe"), -1);
  NetworkSpec recent = Dead(u"Cafe 2", 1);
  recent.connectedTime = 1;
  Refresh({Dead(u"Cafe", 0), recent});
  EXPECT_EQ(Category(u"Cafe"), 1);
}

TEST_F(NetworkListManager, ALiveInstanceTakesOverFromADeadOne) {
  Refresh({Dead(u"Cafe", 0), Live(u"Cafe 2", 1)});
  EXPECT_EQ(Category(u"Cafe"), 1);
  EXPECT_EQ(Names(u"Cafe"), "Cafe|Cafe 2");

  // The stored instance's own row comes first and clears it, so the swap happens at once.
  Refresh({Dead(u"Cafe 2", 1), Live(u"Cafe", 0)});
  EXPECT_EQ(Category(u"Cafe"), 0);
  // The other way round the stale state holds it off until the next refresh.
  Refresh({Live(u"Cafe 2", 1), Dead(u"Cafe", 0)});
  EXPECT_EQ(Category(u"Cafe"), 0);
  Refresh({Live(u"Cafe 2", 1), Dead(u"Cafe", 0)});
  EXPECT_EQ(Category(u"Cafe"), 1);

  // Internet alone is life too.
  NetworkSpec internet = Dead(u"Cafe 3", 2);
  internet.internet = true;
  Refresh({Dead(u"Cafe 2", 1), internet});
  EXPECT_EQ(Category(u"Cafe"), 2);
}

TEST_F(NetworkListManager, AGoneInstanceGivesItsPlaceToTheFirstThatIsLeftAndNothingIsForgotten) {
  Refresh({Live(u"Cafe 2", 1), Dead(u"Cafe", 0), Live(u"Home", 1)});
  Refresh({Dead(u"Cafe 4", 0), Dead(u"Cafe", 2)});
  EXPECT_EQ(Category(u"Cafe"), 0);
  EXPECT_EQ(Names(u"Cafe"), "Cafe|Cafe 2|Cafe 4");
  EXPECT_EQ(Category(u"Home"), 1);
}

TEST_F(NetworkListManager, WhatTheStrictPassDropsTheLoosePassStores) {
  Refresh({Live(u"Home", 1)});
  NetworkSpec odd = Dead(u"Guest", 0);
  odd.desc = u"something else";
  NetworkSpec plain = Dead(u"Guest 2", 1);  // fits the strict rule, though it comes second
  Refresh({odd, plain});
  EXPECT_EQ(Category(u"Guest"), 1);
  NetworkSpec alone = Dead(u"Lab", 2);
  alone.desc = u"something else";
  Refresh({alone});
  EXPECT_EQ(Category(u"Lab"), 2);
}

TEST_F(NetworkListManager, OnlyNamedNetworksCountAndFailedFactsKeepTheirDefaults) {
  NetworkSpec nameless = Live(u"Ghost", 1), unknown = Live(u"Home", 1);
  nameless.nullName = true;
  unknown.failCategory = true;
  unknown.failConnectivity = true;
  unknown.connectivity = 0x440;
  std::vector<NetworkSpec> networks(101, Live(u"Many", 0));  // more than one batch
  networks.push_back(nameless);
  networks.push_back(unknown);
  Refresh(networks);
  EXPECT_EQ(Category(u"Ghost"), -1);
  EXPECT_EQ(Category(u"Home"), 2);
  std::uint32_t flags = 7;
  EXPECT_TRUE(Nlm().GetConnectivityForBaseNetname(u"Home", &flags, false));
  EXPECT_EQ(flags, 0u);
}

TEST_F(NetworkListManager, WhatTheScorePassLearnsReplacesTheConnectivity) {
  Refresh({Live(u"Office 3", 1), Live(u"Floor 2", 1)});
  const auto connectivity = [this](WStringView base) {
    std::uint32_t flags = 0xFFFF;
    Nlm().GetConnectivityForBaseNetname(base, &flags, true);
    return flags;
  };
  Nlm().SetConnectivityForNetwork(u"Office", 0x40);
  EXPECT_EQ(connectivity(u"Office"), 0x40u);
  Nlm().SetConnectivityForNetwork(u"Office 7", 0x2);
  EXPECT_EQ(connectivity(u"Office"), 0x2u) << "found by its base name";
  Nlm().SetConnectivityForNetwork(u"Elsewhere", 0x40);
  EXPECT_EQ(connectivity(u"Elsewhere"), 0xFFFFu) << "unknown, left alone";
  EXPECT_EQ(connectivity(u"Floor 2"), 0xFFFFu) << "look-ups strip nothing";
}

TEST_F(NetworkListManager, AFaultInAReleaseEndsThere) {
  s_bFaultInRelease = true;
  Refresh({Live(u"Home", 1)});
  EXPECT_EQ(Category(u"Home"), 1);
  EXPECT_EQ(Nlm().ResetNLMInstance(), S_OK);
  EXPECT_EQ(Nlm().RefreshNetworkCategories(), S_OK);
  EXPECT_EQ(script.live, 1) << "the manager of now alone is left";
  test::ResetProcessState();
  s_bFaultInRelease = false;
}

TEST_F(NetworkListManager, AFailedRefreshLeavesTheTableAndAResetRecovers) {
  Refresh({Live(u"Home", 1)});
  script.getNetworks = [](int) { return E_FAIL; };
  EXPECT_EQ(Nlm().RefreshNetworkCategories(), E_FAIL);
  script.getNetworks = [](int) -> HRESULT { throw PlatformFault{0xC0000005}; };
  EXPECT_LT(Nlm().RefreshNetworkCategories(), 0);
  EXPECT_EQ(Category(u"Home"), 1);

  script.failCreate = E_FAIL;
  EXPECT_EQ(Nlm().ResetNLMInstance(), E_FAIL);
  const GUID adapter{1};
  bool internet = true;
  NlmNetworkRecord record;
  std::list<WString> names;
  std::list<NlmNetworkRecord> records;
  EXPECT_EQ(Nlm().RefreshNetworkCategories(), E_POINTER);
  EXPECT_EQ(Nlm().GetNetworkNamesForInterface(adapter, &names), E_POINTER);
  EXPECT_EQ(Nlm().DoesInterfaceHaveInternet(adapter, &internet, &record), E_POINTER);
  EXPECT_FALSE(internet);
  EXPECT_EQ(Nlm().GetNetCatInfoForInterface(adapter, &records), E_POINTER);

  script.failCreate = CO_E_NOTINITIALIZED;
  script.failInit = E_FAIL;
  EXPECT_LT(Nlm().ResetNLMInstance(), 0) << "no exception out of a reset";
  script.failInit = S_OK;
  script.getNetworks = [](int) { return S_OK; };
  EXPECT_EQ(Nlm().ResetNLMInstance(), S_OK);
  Refresh({Live(u"Home", 0)});
  EXPECT_EQ(Category(u"Home"), 0);
}

TEST_F(NetworkListManager, TheStrictPassDecidesTheResult) {
  script.networks = {Live(u"Home", 1)};
  script.getNetworks = [](int call) { return call == 2 ? S_OK : E_FAIL; };  // seed and loose fail
  EXPECT_EQ(Nlm().RefreshNetworkCategories(), S_OK);
  EXPECT_EQ(Category(u"Home"), 1);
}

TEST_F(NetworkListManager, ConstructionNeedsComAndTheManager) {
  script.failInit = E_FAIL;
  EXPECT_THROW(Nlm(), Exception);
  script.failInit = S_OK;
  script.failCreate = E_FAIL;
  EXPECT_THROW(Nlm(), Exception);
  script.failCreate = S_OK;
  Refresh({});
}

TEST_F(NetworkListManager, OneConnectionWithInternetIsEnough) {
  const GUID mine{1}, other{2};
  const auto connected = [](WStringView name, LONG category, DWORD flags) {
    NetworkSpec network = Live(name, category);
    network.connectivity = flags;
    return network;
  };
  script.connections = {{other, connected(u"Wired", 2, 0x40)},
                        {mine, connected(u"Nothing", 0, 0)},
                        {mine, connected(u"Local", 0, 0x20)},
                        {mine, connected(u"Net 2", 1, 0x400)},
                        {mine, connected(u"Later", 0, 0x40)}};
  bool internet = false;
  NlmNetworkRecord record;
  EXPECT_EQ(Nlm().DoesInterfaceHaveInternet(mine, &internet, &record), S_OK);
  EXPECT_TRUE(internet);
  EXPECT_EQ(record.name, u"Net 2");
  EXPECT_EQ(record.base, u"Net");

  std::list<WString> names;
  EXPECT_EQ(Nlm().GetNetworkNamesForInterface(mine, &names), S_OK);
  EXPECT_EQ(names, (std::list<WString>{u"Nothing", u"Local", u"Net 2", u"Later"}));
  std::list<NlmNetworkRecord> records;
  EXPECT_EQ(Nlm().GetNetCatInfoForInterface(mine, &records), 0);
  EXPECT_EQ(records.size(), 4u);
  EXPECT_EQ(Nlm().GetNetCatInfoForInterface(GUID{3}, &records), 1);

  script.connections.resize(3);
  EXPECT_EQ(Nlm().DoesInterfaceHaveInternet(mine, &internet, &record), S_OK);
  EXPECT_FALSE(internet);
  EXPECT_EQ(record.name, u"Local");
  script.connections.resize(2);
  EXPECT_EQ(Nlm().DoesInterfaceHaveInternet(mine, &internet, &record), S_OK);
  EXPECT_EQ(record.name, u"") << "neither: no record";
  EXPECT_EQ(record.cat, 2);
  script.failConnections = E_FAIL;
  EXPECT_EQ(Nlm().DoesInterfaceHaveInternet(mine, &internet, &record), E_FAIL);
}

}  // namespace
}  // namespace corvane
