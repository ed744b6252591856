#include "platform/sim/devices/sim_network_list.h"

#include <algorithm>
#include <vector>

namespace corvane::platform::sim {

namespace {

constexpr DWORD kOrdinary = static_cast<DWORD>(E_FAIL);

FILETIME ToFileTime(std::uint64_t unixSecs) {
  const std::uint64_t units = (unixSecs + 11'644'473'600) * 10'000'000;
  return {static_cast<DWORD>(units), static_cast<DWORD>(units >> 32)};
}

}  // namespace

// The COM objects. Each is owned by whoever got it.
class SimNetworkListObjects {
 public:
  struct Connection {
    GUID adapter;
    std::size_t network;
  };

  class Base {
   protected:
    explicit Base(SimNetworkList& list) : m_List(list) { ++list.m_ObjectsOut; }
    ~Base() { --m_List.m_ObjectsOut; }
    SimNetworkList& m_List;
  };

  class NetworkObject final : public INetwork, private Base {
   public:
    NetworkObject(SimNetworkList& list, std::size_t network) : Base(list), m_Network(network) {}
    ULONG Release() override {
      delete this;
      return 0;
    }
    HRESULT GetName(std::u16string* name) override {
      return m_List.Read("INetwork::GetName", m_Network, [&](const Network& network) {
        name->clear();
        if (network.nullName) return S_FALSE;
        *name = network.name;
        return S_OK;
      });
    }
    HRESULT GetDescription(std::u16string* description) override {
      return m_List.Read("INetwork::GetDescription", m_Network, [&](const Network& network) {
        *description = network.description;
        return S_OK;
      });
    }
    HRESULT GetCategory(LONG* category) override {
      return m_List.Read("INetwork::GetCategory", m_Network, [&](const Network& network) {
        *category = network.category;
        return S_OK;
      });
    }
    HRESULT GetConnectivity(DWORD* flags) override {
      return m_List.Read("INetwork::GetConnectivity", m_Network, [&](const Network& network) {
        *flags = m_List.IsConnected(m_Network) ? network.connectivity : 0;
        return S_OK;
      });
    }
    HRESULT GetTimeCreatedAndConnected(FILETIME* created, FILETIME* connected) override {
      return m_List.Read("INetwork::GetTimeCreatedAndConnected", m_Network,
                         [&](const Network& network) {
                           *created = ToFileTime(network.createdSecs);
                           *connected = ToFileTime(network.connectedSecs);
                           return S_OK;
                         });
    }
    HRESULT get_IsConnected(bool* connected) override {
      return m_List.Read("INetwork::get_IsConnected", m_Network, [&](const Network&) {
        *connected = m_List.IsConnected(m_Network);
        return S_OK;
      });
    }
    HRESULT get_IsConnectedToInternet(bool* connected) override {
      return m_List.Read("INetwork::get_IsConnectedToInternet", m_Network,
                         [&](const Network& network) {
                           *connected = network.internet && m_List.IsConnected(m_Network);
                           return S_OK;
                         });
    }

   private:
    ~NetworkObject() = default;
    const std::size_t m_Network;
  };

  class ConnectionObject final : public INetworkConnection, private Base {
   public:
    ConnectionObject(SimNetworkList& list, const Connection& connection)
        : Base(list), m_Connection(connection) {}
    ULONG Release() override {
      delete this;
      return 0;
    }
    HRESULT GetAdapterId(GUID* adapter) override {
      const HRESULT result = m_List.Enter("INetworkConnection::GetAdapterId");
      if (result == S_OK) *adapter = m_Connection.adapter;
      return result;
    }
    HRESULT GetNetwork(INetwork** network) override {
      const HRESULT result = m_List.Enter("INetworkConnection::GetNetwork");
      if (result == S_OK) *network = new NetworkObject(m_List, m_Connection.network);
      return result;
    }

   private:
    ~ConnectionObject() = default;
    const Connection m_Connection;
  };

  // Hands out what the list held when the enumeration began.
  template <class Interface, class Item, class Object, class What>
  class Enumeration final : public Interface, private Base {
   public:
    Enumeration(SimNetworkList& list, const char* operation, std::vector<What> items)
        : Base(list), m_Operation(operation), m_Items(std::move(items)) {}
    ULONG Release() override {
      delete this;
      return 0;
    }
    HRESULT Next(ULONG count, Item** items, ULONG* fetched) override {
      if (fetched) *fetched = 0;
      const HRESULT result = m_List.Enter(m_Operation);
      if (result != S_OK) return result;
      ULONG given = 0;
      while (given < count && m_Next < m_Items.size()) {
        items[given++] = new Object(m_List, m_Items[m_Next++]);
      }
      if (fetched) *fetched = given;
      return given == count ? S_OK : S_FALSE;
    }

   private:
    ~Enumeration() = default;
    const char* const m_Operation;
    const std::vector<What> m_Items;
    std::size_t m_Next = 0;
  };
  using Networks = Enumeration<IEnumNetworks, INetwork, NetworkObject, std::size_t>;
  using Connections =
      Enumeration<IEnumNetworkConnections, INetworkConnection, ConnectionObject, Connection>;

  class Manager final : public INetworkListManager, private Base {
   public:
    explicit Manager(SimNetworkList& list) : Base(list) {}
    ULONG Release() override {
      delete this;
      return 0;
    }
    HRESULT GetNetworks(DWORD flags, IEnumNetworks** networks) override {
      const HRESULT result = m_List.Enter("INetworkListManager::GetNetworks");
      if (result != S_OK) return result;
      std::vector<std::size_t> items;
      m_List.m_Machine.loop.WithLock([&] {
        for (std::size_t i = 0; i < m_List.m_Machine.world.networks.size(); ++i) {
          const DWORD flag = m_List.IsConnected(i) ? 1 : 2;  // NLM_ENUM_NETWORK
          if ((flags & flag) != 0) items.push_back(i);
        }
      });
      *networks = new Networks(m_List, "IEnumNetworks::Next", std::move(items));
      return S_OK;
    }
    HRESULT get_IsConnectedToInternet(bool* connected) override {
      return m_List.Run("INetworkListManager::get_IsConnectedToInternet", [&] {
        const std::vector<Network>& networks = m_List.m_Machine.world.networks;
        *connected = false;
        for (std::size_t i = 0; i < networks.size(); ++i) {
          *connected = *connected || (networks[i].internet && m_List.IsConnected(i));
        }
        return S_OK;
      });
    }
    HRESULT GetNetworkConnections(IEnumNetworkConnections** connections) override {
      const HRESULT result = m_List.Enter("INetworkListManager::GetNetworkConnections");
      if (result != S_OK) return result;
      std::vector<Connection> items;
      m_List.m_Machine.loop.WithLock([&] {
        for (const SimInterface& face :
             InterfacesOf(m_List.m_Machine, m_List.m_Adapters, m_List.m_Traffic)) {
          if (face.network) items.push_back({face.guid, *face.network});
        }
      });
      *connections = new Connections(m_List, "IEnumNetworkConnections::Next", std::move(items));
      return S_OK;
    }

   private:
    ~Manager() = default;
  };
};

HRESULT SimNetworkList::Enter(const char* operation) {
  return Run(operation, [] { return S_OK; });
}

HRESULT SimNetworkList::Run(const char* operation, const std::function<HRESULT()>& work) {
  if (const DWORD code = m_Gate.Enter(operation, kOrdinary); code != ERROR_SUCCESS) {
    return HRESULT_FROM_WIN32(code);
  }
  return m_Machine.loop.WithLock([&] {
    return m_Machine.networkListService ? work() : HRESULT_FROM_WIN32(ERROR_SERVICE_NOT_ACTIVE);
  });
}

HRESULT SimNetworkList::Read(const char* operation, std::size_t network,
                             const std::function<HRESULT(const Network&)>& read) {
  return Run(operation, [&] { return read(m_Machine.world.networks[network]); });
}

// One that is Wi-Fi, or that a listed interface can be on, is connected while somebody is on it;
// any other as the world says.
bool SimNetworkList::IsConnected(std::size_t network) {
  bool hasInterface = !m_Machine.world.networks[network].ssid.empty();
  for (const auto& wireless : m_Adapters) {
    const SimWlanAdapter::Link* link = wireless->Connection();
    if (link && m_Machine.NetworkOf(link->accessPoint) == network) return true;
  }
  for (const OtherAdapter& other : m_Machine.world.otherAdapters) {
    if (other.network != static_cast<int>(network)) continue;
    if (other.present && other.up) return true;
    hasInterface = true;
  }
  return !hasInterface && m_Machine.world.networks[network].connected;
}

HRESULT SimNetworkList::CoInitializeEx(DWORD) {
  if (const DWORD code = m_Gate.Enter("CoInitializeEx", kOrdinary); code != ERROR_SUCCESS) {
    return HRESULT_FROM_WIN32(code);
  }
  return m_bComReady.exchange(true) ? S_FALSE : S_OK;
}

HRESULT SimNetworkList::CoCreateNetworkListManager(INetworkListManager** manager) {
  if (const HRESULT result = Enter("CoCreateInstance"); result != S_OK) return result;
  if (!m_bComReady) return CO_E_NOTINITIALIZED;
  *manager = new SimNetworkListObjects::Manager(*this);
  return S_OK;
}

}  // namespace corvane::platform::sim
