#pragma once
#include <cstdint>
#include <list>
#include <memory>

#include "foundation/crit_sec.h"
#include "foundation/singleton.h"
#include "foundation/text.h"
#include "monitors/nlm_record.h"
#include "platform/network_list_api.h"

namespace corvane {

// The table of networks by base name. The main thread refreshes it; any thread looks things up and
// sees whole records only.
class CNetworkListManager {
 public:
  // Made on first use by the main thread; throws Exception while the system has no network list.
  static CNetworkListManager& GetInstance() {
    return Singleton<CNetworkListManager>::GetInstance();
  }
  // For look-ups: null while there is none, and nothing is known.
  static CNetworkListManager* Find() { return Singleton<CNetworkListManager>::Find(); }
  static std::int32_t CategoryOf(WStringView base);  // NetworkCategory
  // Category and connectivity of all networks at this moment; null while there is no list.
  static std::shared_ptr<const KnownNetworks> Known();
  static bool LogsUnknownNetworks();  // look-ups with a hint log what they do not find

  platform::HRESULT RefreshNetworkCategories();
  platform::HRESULT ResetNLMInstance();

  // Look-ups by base name as given. False and the output left alone when it is not known.
  bool GetCatForBaseNetname(WStringView base, std::int32_t* category, bool hint);
  bool GetConnectivityForBaseNetname(WStringView base, std::uint32_t* connectivity, bool hint);
  bool GetNameForBaseNetname(WStringView base, std::list<WString>* names);
  void SetConnectivityForNetwork(WStringView name, std::uint32_t connectivity);

  // Walks over the adapter's connections.
  platform::HRESULT GetNetworkNamesForInterface(const platform::GUID& adapter,
                                                std::list<WString>* names);
  platform::HRESULT DoesInterfaceHaveInternet(const platform::GUID& adapter, bool* internet,
                                              NlmNetworkRecord* record);
  // 0 when one or more were added, else 1.
  platform::HRESULT GetNetCatInfoForInterface(const platform::GUID& adapter,
                                              std::list<NlmNetworkRecord>* records);

  // The name without a blank and number at its end, and without blanks around it.
  static WString StripInstanceNumFromNetName(WStringView name);

  static void SetDebugLevel(int level);

 private:
  friend class Singleton<CNetworkListManager>;
  CNetworkListManager();
  ~CNetworkListManager();

  struct Impl;
  std::unique_ptr<Impl> m_pImpl;
};

}  // namespace corvane
