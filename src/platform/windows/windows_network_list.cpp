#include "platform/windows/windows_network_list.h"

#include <memory>
#include <vector>

#include "platform/windows/library_call.h"

namespace corvane::platform::windows {

namespace {

// Holds one reference to an object of the system. Whoever got it ends it by Release, which gives
// the reference back; as a destructor does so, it passes in every thread.
template <typename Interface, typename System>
class Held : public Interface {
 public:
  explicit Held(System* object) : m_pObject(object) {}

  ULONG Release() final {
    System* const object = m_pObject;
    delete this;
    OrFault([object] { return object->Release(); });
    return 0;
  }

 protected:
  virtual ~Held() = default;
  System* const m_pObject;
};

// The wrapper for what an operation gave.
template <typename Wrapper, typename Interface, typename System>
HRESULT Give(HRESULT result, System* object, Interface** wrapped) {
  if (result < 0) return result;
  if (!object) return E_FAIL;
  *wrapped = new Wrapper(object);
  return result;
}

// `get` gives a BSTR, which is the caller's to free.
template <typename Get>
HRESULT ReadText(const char* operation, std::u16string* text, Get&& get) {
  ::BSTR given = nullptr;
  const HRESULT result = Forward(operation, [&] { return get(&given); });
  const std::unique_ptr<wchar_t, decltype(&::SysFreeString)> owner(given, &::SysFreeString);
  if (result < 0) return result;
  text->clear();
  if (!given) return S_FALSE;
  text->assign(reinterpret_cast<const char16_t*>(given), ::SysStringLen(given));
  return S_OK;
}

// `get` gives -1 for true.
template <typename Get>
HRESULT ReadFlag(const char* operation, bool* flag, Get&& get) {
  ::VARIANT_BOOL given = VARIANT_FALSE;
  const HRESULT result = Forward(operation, [&] { return get(&given); });
  if (result >= 0) *flag = given != VARIANT_FALSE;
  return result;
}

class HeldNetwork final : public Held<INetwork, ::INetwork> {
 public:
  using Held::Held;

  HRESULT GetName(std::u16string* name) override {
    return ReadText("INetwork::GetName", name,
                    [this](::BSTR* given) { return m_pObject->GetName(given); });
  }
  HRESULT GetDescription(std::u16string* description) override {
    return ReadText("INetwork::GetDescription", description,
                    [this](::BSTR* given) { return m_pObject->GetDescription(given); });
  }
  HRESULT GetCategory(LONG* category) override {
    return Forward("INetwork::GetCategory",
                   [&] { return m_pObject->GetCategory(As<::NLM_NETWORK_CATEGORY>(category)); });
  }
  HRESULT GetConnectivity(DWORD* flags) override {
    return Forward("INetwork::GetConnectivity",
                   [&] { return m_pObject->GetConnectivity(As<::NLM_CONNECTIVITY>(flags)); });
  }
  HRESULT GetTimeCreatedAndConnected(FILETIME* created, FILETIME* connected) override {
    return Forward("INetwork::GetTimeCreatedAndConnected", [&] {
      return m_pObject->GetTimeCreatedAndConnected(
          As32(&created->dwLowDateTime), As32(&created->dwHighDateTime),
          As32(&connected->dwLowDateTime), As32(&connected->dwHighDateTime));
    });
  }
  HRESULT get_IsConnected(bool* connected) override {
    return ReadFlag("INetwork::get_IsConnected", connected,
                    [this](::VARIANT_BOOL* given) { return m_pObject->get_IsConnected(given); });
  }
  HRESULT get_IsConnectedToInternet(bool* connected) override {
    return ReadFlag(
        "INetwork::get_IsConnectedToInternet", connected,
        [this](::VARIANT_BOOL* given) { return m_pObject->get_IsConnectedToInternet(given); });
  }
};

class HeldConnection final : public Held<INetworkConnection, ::INetworkConnection> {
 public:
  using Held::Held;

  HRESULT GetAdapterId(GUID* adapter) override {
    return Forward("INetworkConnection::GetAdapterId",
                   [&] { return m_pObject->GetAdapterId(As<::GUID>(adapter)); });
  }
  HRESULT GetNetwork(INetwork** network) override {
    ::INetwork* given = nullptr;
    const HRESULT result =
        Forward("INetworkConnection::GetNetwork", [&] { return m_pObject->GetNetwork(&given); });
    return Give<HeldNetwork>(result, given, network);
  }
};

// Wraps each object that the system's enumerator fetched.
template <typename Wrapper, typename Item, typename System, typename Enumerator>
HRESULT FetchNext(const char* operation, Enumerator* enumerator, ULONG count, Item** items,
                  ULONG* fetched) {
  if (fetched) *fetched = 0;
  std::vector<System*> given(count);
  ::ULONG got = 0;
  const HRESULT result =
      Forward(operation, [&] { return enumerator->Next(count, given.data(), &got); });
  if (result < 0) return result;
  for (::ULONG i = 0; i < got; ++i) items[i] = new Wrapper(given[i]);
  if (fetched) *fetched = got;
  return result;
}

class HeldNetworks final : public Held<IEnumNetworks, ::IEnumNetworks> {
 public:
  using Held::Held;

  HRESULT Next(ULONG count, INetwork** networks, ULONG* fetched) override {
    return FetchNext<HeldNetwork, INetwork, ::INetwork>("IEnumNetworks::Next", m_pObject, count,
                                                        networks, fetched);
  }
};

class HeldConnections final : public Held<IEnumNetworkConnections, ::IEnumNetworkConnections> {
 public:
  using Held::Held;

  HRESULT Next(ULONG count, INetworkConnection** connections, ULONG* fetched) override {
    return FetchNext<HeldConnection, INetworkConnection, ::INetworkConnection>(
        "IEnumNetworkConnections::Next", m_pObject, count, connections, fetched);
  }
};

class HeldManager final : public Held<INetworkListManager, ::INetworkListManager> {
 public:
  using Held::Held;

  HRESULT GetNetworks(DWORD flags, IEnumNetworks** networks) override {
    ::IEnumNetworks* given = nullptr;
    const HRESULT result = Forward("INetworkListManager::GetNetworks", [&] {
      return m_pObject->GetNetworks(static_cast<::NLM_ENUM_NETWORK>(flags), &given);
    });
    return Give<HeldNetworks>(result, given, networks);
  }
  HRESULT GetNetworkConnections(IEnumNetworkConnections** connections) override {
    ::IEnumNetworkConnections* given = nullptr;
    const HRESULT result = Forward("INetworkListManager::GetNetworkConnections",
                                   [&] { return m_pObject->GetNetworkConnections(&given); });
    return Give<HeldConnections>(result, given, connections);
  }
  HRESULT get_IsConnectedToInternet(bool* connected) override {
    return ReadFlag(
        "INetworkListManager::get_IsConnectedToInternet", connected,
        [this](::VARIANT_BOOL* given) { return m_pObject->IsConnectedToInternet(given); });
  }
};

}  // namespace

HRESULT WindowsNetworkList::CoInitializeEx(DWORD model) {
  const auto call = CORVANE_FIND(m_Library, CoInitializeEx);
  if (!call) return E_NOTIMPL;
  return Forward("CoInitializeEx", [&] { return call(nullptr, model); });
}

// Passes in every thread, as it matches what one has begun.
void WindowsNetworkList::CoUninitialize() {
  const auto call = CORVANE_FIND(m_Library, CoUninitialize);
  if (call) OrFault([&] { call(); });
}

HRESULT WindowsNetworkList::CoCreateNetworkListManager(INetworkListManager** manager) {
  const auto call = CORVANE_FIND(m_Library, CoCreateInstance);
  if (!call) return E_NOTIMPL;
  void* given = nullptr;
  const HRESULT result = Forward("CoCreateNetworkListManager", [&] {
    return call(::CLSID_NetworkListManager, nullptr, CLSCTX_ALL, ::IID_INetworkListManager, &given);
  });
  return Give<HeldManager>(result, static_cast<::INetworkListManager*>(given), manager);
}

}  // namespace corvane::platform::windows
