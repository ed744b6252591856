#pragma once
#include "platform/types.h"

namespace corvane::platform {

// The part of the Network List Manager's COM interfaces (netlistmgr.h) that the program uses. Each
// object is released once by whoever got it; texts come as strings instead of BSTRs.
struct INetwork {
  virtual ULONG Release() = 0;
  virtual HRESULT GetName(std::u16string* name) = 0;  // S_FALSE stands for a null BSTR
  virtual HRESULT GetDescription(std::u16string* description) = 0;
  virtual HRESULT GetCategory(LONG* category) = 0;    // 0 public, 1 private, 2 domain
  virtual HRESULT GetConnectivity(DWORD* flags) = 0;  // NLM_CONNECTIVITY
  virtual HRESULT GetTimeCreatedAndConnected(FILETIME* created, FILETIME* connected) = 0;
  virtual HRESULT get_IsConnected(bool* connected) = 0;
  virtual HRESULT get_IsConnectedToInternet(bool* connected) = 0;

 protected:
  ~INetwork() = default;
};

struct INetworkConnection {
  virtual ULONG Release() = 0;
  virtual HRESULT GetAdapterId(GUID* adapter) = 0;
  virtual HRESULT GetNetwork(INetwork** network) = 0;

 protected:
  ~INetworkConnection() = default;
};

struct IEnumNetworks {
  virtual ULONG Release() = 0;
  virtual HRESULT Next(ULONG count, INetwork** networks, ULONG* fetched) = 0;

 protected:
  ~IEnumNetworks() = default;
};

struct IEnumNetworkConnections {
  virtual ULONG Release() = 0;
  virtual HRESULT Next(ULONG count, INetworkConnection** connections, ULONG* fetched) = 0;

 protected:
  ~IEnumNetworkConnections() = default;
};

inline constexpr DWORD NLM_ENUM_NETWORK_ALL = 3;

struct INetworkListManager {
  virtual ULONG Release() = 0;
  virtual HRESULT GetNetworks(DWORD flags, IEnumNetworks** networks) = 0;
  virtual HRESULT GetNetworkConnections(IEnumNetworkConnections** connections) = 0;
  virtual HRESULT get_IsConnectedToInternet(bool*) { return E_NOTIMPL; }  // of the machine

 protected:
  ~INetworkListManager() = default;
};

class NetworkListApi {
 public:
  virtual ~NetworkListApi() = default;
  // COINIT_MULTITHREADED is 0, COINIT_APARTMENTTHREADED is 2. Objects belong to the thread that
  // made them; each success is matched by one CoUninitialize on the same thread.
  virtual HRESULT CoInitializeEx(DWORD model);
  virtual void CoUninitialize();
  // CoCreateInstance(CLSID_NetworkListManager).
  virtual HRESULT CoCreateNetworkListManager(INetworkListManager** manager);
};

}  // namespace corvane::platform
