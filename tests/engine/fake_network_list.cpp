#include "engine/fake_machine.h"

namespace corvane::engine_test {

using namespace platform;

namespace {

// A COM object that counts itself and may be told to fail a call.
template <class Interface>
class Com : public Interface {
 public:
  explicit Com(FakeNetworkList& list) : m_List(list) { ++m_List.objects; }
  virtual ~Com() = default;
  ULONG Release() override {
    --m_List.objects;
    delete this;
    return 0;
  }

 protected:
  HRESULT Result(const char* call) const { return m_List.failing.contains(call) ? E_FAIL : S_OK; }
  FakeNetworkList& m_List;
};

class Network : public Com<INetwork> {
 public:
  Network(FakeNetworkList& list, FakeConnection facts) : Com(list), m_Facts(facts) {}
  HRESULT GetName(std::u16string*) override { return E_NOTIMPL; }
  HRESULT GetDescription(std::u16string*) override { return E_NOTIMPL; }
  HRESULT GetCategory(LONG* category) override {
    if (Result("GetCategory") == S_OK) *category = m_Facts.category;
    return Result("GetCategory");
  }
  HRESULT GetConnectivity(DWORD* flags) override {
    if (Result("GetConnectivity") == S_OK) *flags = m_Facts.connectivity;
    return Result("GetConnectivity");
  }
  HRESULT GetTimeCreatedAndConnected(FILETIME*, FILETIME*) override { return E_NOTIMPL; }
  HRESULT get_IsConnected(bool*) override { return E_NOTIMPL; }
  HRESULT get_IsConnectedToInternet(bool* connected) override {
    *connected = m_Facts.internet;
    return S_OK;
  }

 private:
  FakeConnection m_Facts;
};

class Connection : public Com<INetworkConnection> {
 public:
  Connection(FakeNetworkList& list, FakeConnection facts) : Com(list), m_Facts(facts) {}
  HRESULT GetAdapterId(GUID* adapter) override {
    *adapter = GuidOf(m_Facts.adapter);
    return S_OK;
  }
  HRESULT GetNetwork(INetwork** network) override {
    if (Result("GetNetwork") != S_OK) return E_FAIL;
    *network = new Network(m_List, m_Facts);
    return S_OK;
  }

 private:
  FakeConnection m_Facts;
};

class Connections : public Com<IEnumNetworkConnections> {
 public:
  using Com::Com;
  HRESULT Next(ULONG, INetworkConnection** connections, ULONG* fetched) override {
    *fetched = 0;
    if (m_Next == m_List.connections.size()) return S_FALSE;
    *connections = new Connection(m_List, m_List.connections[m_Next++]);
    *fetched = 1;
    return S_OK;
  }

 private:
  std::size_t m_Next = 0;
};

class Manager : public Com<INetworkListManager> {
 public:
  using Com::Com;
  HRESULT GetNetworks(DWORD, IEnumNetworks**) override { return E_NOTIMPL; }
  HRESULT GetNetworkConnections(IEnumNetworkConnections** connections) override {
    *connections = new Connections(m_List);
    return S_OK;
  }
  HRESULT get_IsConnectedToInternet(bool* connected) override {
    *connected = true;
    return Result("get_IsConnectedToInternet");
  }
};

}  // namespace

HRESULT FakeNetworkList::CoInitializeEx(DWORD wanted) {
  model = wanted;
  if (comResult >= 0) ++apartments;
  return comResult;
}

HRESULT FakeNetworkList::CoCreateNetworkListManager(INetworkListManager** manager) {
  *manager = new Manager(*this);
  return S_OK;
}

}  // namespace corvane::engine_test
