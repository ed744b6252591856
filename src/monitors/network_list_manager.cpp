#include "monitors/network_list_manager.h"

#include <atomic>
#include <vector>

#include "foundation/exception.h"
#include "foundation/guarded.h"
#include "foundation/log_lines.h"
#include "monitors/nlm_table.h"
#include "platform/platform.h"
#include "store/address_text.h"

namespace corvane {

namespace {

using platform::HRESULT;
using platform::ULONG;

constexpr char kClassName[] = "CNetworkListManager";
constexpr int kVerbose = 3;  // level from which misses and dumps are logged

std::atomic<int> g_DebugLevel{0};

bool Failed(HRESULT result) { return result < 0; }

struct Releaser {
  template <class T>
  void operator()(T* object) const {
    GiveBack(kClassName, "Release", [object] { object->Release(); });
  }
};

// Releases a COM object at the end of the scope.
template <class T>
using ComPointer = std::unique_ptr<T, Releaser>;

std::uint64_t Ticks(const platform::FILETIME& time) {
  return std::uint64_t{time.dwHighDateTime} << 32 | time.dwLowDateTime;
}

// One network as a record; false when it has no name. `operation` is for the log.
bool ReadNetwork(platform::INetwork& network, const char16_t* operation, NlmNetworkRecord* record) {
  *record = {};
  platform::FILETIME created, connected;
  if (!Failed(network.GetTimeCreatedAndConnected(&created, &connected))) {
    record->createdTime = Ticks(created);
    record->connectedTime = Ticks(connected);
  }
  if (network.GetName(&record->name) != platform::S_OK) return false;
  record->base = CNetworkListManager::StripInstanceNumFromNetName(record->name);
  record->others.emplace(record->name, 1);
  platform::LONG category = 0;
  if (!Failed(network.GetCategory(&category))) record->cat = category;
  network.GetDescription(&record->desc);
  network.get_IsConnected(&record->iscon);
  network.get_IsConnectedToInternet(&record->isinet);
  platform::DWORD connectivity = 0;
  if (const HRESULT result = network.GetConnectivity(&connectivity); Failed(result)) {
    LOG_ERROR(u"CNetworkListManager::%s: pNetwork->GetConnectivity() failed 0x%08x", operation,
              result);
  } else {
    record->connectivity = connectivity;
  }
  return true;
}

const char16_t* ConnectivityWord(std::uint32_t flags, const char16_t* neither) {
  if ((flags & kConnectivityInternet) != 0) return u"[INTERNET]";
  if ((flags & kConnectivityNoInternet) != 0) return u"[NO INTERNET]";
  return neither;
}

}  // namespace

int NlmDebugLevel() { return g_DebugLevel.load(std::memory_order_relaxed); }
void CNetworkListManager::SetDebugLevel(int level) { g_DebugLevel = level; }

// The table is immutable once published: a reader takes the present one and sees whole records.
struct CNetworkListManager::Impl {
  using Table = std::shared_ptr<const NlmTable>;
  using Summary = std::shared_ptr<const KnownNetworks>;
  using Manager = std::shared_ptr<platform::INetworkListManager>;

  Table Present() {
    const CCritSecLock lock(m_TableLock);
    return m_pTable;
  }
  Summary PresentSummary() {
    const CCritSecLock lock(m_TableLock);
    return m_pKnown;
  }
  void Publish(Table table) {
    auto known = std::make_shared<KnownNetworks>();
    for (const auto& [base, record] : table->Records())
      known->emplace_hint(known->end(), base, KnownNetwork{record.cat, record.connectivity});
    Summary summary = std::move(known);
    const CCritSecLock lock(m_TableLock);
    m_pTable.swap(table);
    m_pKnown.swap(summary);
  }

  HRESULT InitInstance() {
    platform::INetworkListManager* manager = nullptr;
    HRESULT result = Os().networkList.CoCreateNetworkListManager(&manager);
    if (result == platform::CO_E_NOTINITIALIZED) {
      InitCom();
      result = Os().networkList.CoCreateNetworkListManager(&manager);
    }
    if (Failed(result)) return result;
    if (!manager) return platform::E_POINTER;
    SetManager(Manager(manager, Releaser()));
    return result;
  }

  static void InitCom() {
    constexpr platform::DWORD kMultithreaded = 0;
    const HRESULT result = Os().networkList.CoInitializeEx(kMultithreaded);
    if (!Failed(result)) return;
    LOG_ERROR(u"CNetworkListManager::InitCom() - CoInitializeEx() failed 0x%08x", result);
    throw Exception("CoInitializeEx(): failed 0x%08x", result);
  }

  void ReleaseInstance() { SetManager(nullptr); }

  // A walk keeps the instance that it began with alive past a reset.
  Manager PresentManager() {
    const CCritSecLock lock(m_TableLock);
    return m_pNLM;
  }
  void SetManager(Manager manager) {
    const CCritSecLock lock(m_TableLock);
    m_pNLM.swap(manager);
  }

  // `operation` names the pass that asks, for the log.
  HRESULT ListNetworks(const char16_t* operation, NlmTable::Listed* listed) {
    constexpr ULONG kBatch = 100;
    const Manager manager = PresentManager();
    if (!manager) {
      LOG_ERROR(u"CNetworkListManager::%s: m_pNLM is NULL!", operation);
      return platform::E_POINTER;
    }
    platform::IEnumNetworks* enumeration = nullptr;
    HRESULT result = manager->GetNetworks(platform::NLM_ENUM_NETWORK_ALL, &enumeration);
    const ComPointer<platform::IEnumNetworks> networks(enumeration);
    if (!Failed(result) && !networks) result = platform::E_POINTER;
    if (Failed(result)) {
      LOG_ERROR(u"CNetworkListManager::%s: ERROR 0x%08x", operation, result);
      return result;
    }
    for (;;) {
      platform::INetwork* batch[kBatch] = {};
      ULONG fetched = 0;
      if (Failed(networks->Next(kBatch, batch, &fetched)) || fetched == 0) return platform::S_OK;
      const std::size_t count = std::min(fetched, kBatch);
      const std::vector<ComPointer<platform::INetwork>> owned(batch, batch + count);
      for (const auto& network : owned) {
        NlmNetworkRecord record;
        if (network && ReadNetwork(*network, operation, &record))
          listed->push_back(std::move(record));
      }
    }
  }

  // Runs the passes on a copy of the table and publishes it; the lists are asked for beforehand, so
  // that the writers' lock waits for no platform call.
  HRESULT Refresh(bool dump) {
    NlmTable::Listed seed, strict, loose;
    if (Present()->IsEmpty()) ListNetworks(u"SeedNetworkCategories_internal", &seed);
    const HRESULT result = ListNetworks(u"RefreshNetworkCategories_internal_strict", &strict);
    if (Failed(result)) return result;
    ListNetworks(u"RefreshNetworkCategories_internal_loose", &loose);

    const CCritSecLock lock(m_WriteLock);
    auto table = std::make_shared<NlmTable>(*Present());
    if (table->IsEmpty()) {
      table->SeedPass(seed);
      if (dump) Dump(*table);
    }
    table->StrictPass(strict);
    if (dump) Dump(*table);
    table->LoosePass(loose);
    if (dump) Dump(*table);
    Publish(std::move(table));
    return result;
  }

  // Calls visit(network) for each connection of the adapter, until it gives false. The two names
  // are for the log: of the operation, and of failed calls.
  template <typename Visit>
  HRESULT WalkConnections(const platform::GUID& adapter, const char16_t* operation,
                          const char16_t* callName, Visit&& visit) {
    const Manager manager = PresentManager();
    if (!manager) {
      LOG_ERROR(u"CNetworkListManager::%s_internal: m_pNLM is NULL!", operation);
      return platform::E_POINTER;
    }
    platform::IEnumNetworkConnections* enumeration = nullptr;
    HRESULT result = manager->GetNetworkConnections(&enumeration);
    const ComPointer<platform::IEnumNetworkConnections> connections(enumeration);
    if (!Failed(result) && !connections) result = platform::E_POINTER;
    if (Failed(result)) {
      LOG_ERROR(u"CNetworkListManager::%s() - GetNetworkConnections() failed 0x%08x", callName,
                result);
      return result;
    }
    for (;;) {
      platform::INetworkConnection* next = nullptr;
      ULONG fetched = 0;
      const bool ended = Failed(connections->Next(1, &next, &fetched)) || fetched == 0;
      const ComPointer<platform::INetworkConnection> connection(next);
      if (ended || !connection) return platform::S_OK;
      platform::GUID guid;
      if (Failed(connection->GetAdapterId(&guid)) || !(guid == adapter)) continue;
      platform::INetwork* found = nullptr;
      result = connection->GetNetwork(&found);
      const ComPointer<platform::INetwork> network(found);
      if (Failed(result) || !network) {
        LOG_ERROR(u"CNetworkListManager::%s() - GetNetwork() failed 0x%08x", callName, result);
        continue;
      }
      if (!visit(*network)) return platform::S_OK;
    }
  }

  void Dump(const NlmTable& table) const {
    for (const auto& [base, record] : table.Records()) {
      WString others;
      for (const auto& [name, unused] : record.others)
        others += (others.empty() ? u"" : u", ") + name;
      LOG_INFO(
          u"DUMP-NLM Map: name=%s, base=%s, cat=%s, desc=%s, connectivity=0x%08x%s, others=%s\n",
          record.name, base, NetworkCategoryName(record.cat), record.desc, record.connectivity,
          ConnectivityWord(record.connectivity, u""), others);
    }
  }

  CCritSec m_WriteLock{"network list, writers"};                // one writer at a time
  CCritSec m_TableLock{"network list table", LockRank::kLeaf};  // guards the three below
  Manager m_pNLM;
  Table m_pTable = std::make_shared<const NlmTable>();
  Summary m_pKnown = std::make_shared<const KnownNetworks>();  // of the table
};

CNetworkListManager::CNetworkListManager() : m_pImpl(std::make_unique<Impl>()) {
  Impl::InitCom();
  if (const HRESULT result = m_pImpl->InitInstance(); Failed(result)) {
    LOG_ERROR(u"CNetworkListManager::CNetworkListManager() - InitNLMInstance failed 0x%08x",
              result);
    throw Exception("CoCreateInstance(CLSID_NetworkListManager...): failed 0x%08x", result);
  }
}

CNetworkListManager::~CNetworkListManager() { m_pImpl->ReleaseInstance(); }

HRESULT CNetworkListManager::RefreshNetworkCategories() {
  return Guarded(kClassName, "RefreshNetworkCategories", platform::E_FAIL,
                 [this] { return m_pImpl->Refresh(NlmDebugLevel() >= kVerbose); });
}

HRESULT CNetworkListManager::ResetNLMInstance() {
  return Guarded(kClassName, "ResetNLMInstance", platform::E_FAIL, [this] {
    m_pImpl->ReleaseInstance();
    try {
      return m_pImpl->InitInstance();
    } catch (const Exception& e) {  // no COM on this thread: the caller tries again later
      return static_cast<HRESULT>(e.GetCode());
    }
  });
}

std::int32_t CNetworkListManager::CategoryOf(WStringView base) {
  std::int32_t category = kCategoryUnknown;
  CNetworkListManager* const list = Find();
  return list && list->GetCatForBaseNetname(base, &category, false) ? category : kCategoryUnknown;
}

std::shared_ptr<const KnownNetworks> CNetworkListManager::Known() {
  CNetworkListManager* const list = Find();
  return list ? list->m_pImpl->PresentSummary() : nullptr;
}

bool CNetworkListManager::LogsUnknownNetworks() { return NlmDebugLevel() >= kVerbose; }

bool CNetworkListManager::GetCatForBaseNetname(WStringView base, std::int32_t* category,
                                               bool hint) {
  const auto table = m_pImpl->Present();
  if (const NlmNetworkRecord* record = table->Find(base)) {
    *category = record->cat;
    return true;
  }
  if (hint && NlmDebugLevel() >= kVerbose) {
    LOG_DEBUG(DBG(1),
              u"\nCNetworkListManager::GetCatForBaseNetname: %s __NOT FOUND__! [hint_find=%i]\n",
              base, hint);
  }
  return false;
}

bool CNetworkListManager::GetConnectivityForBaseNetname(WStringView base,
                                                        std::uint32_t* connectivity, bool hint) {
  const auto table = m_pImpl->Present();
  if (const NlmNetworkRecord* record = table->Find(base)) {
    *connectivity = record->connectivity;
    return true;
  }
  if (hint && NlmDebugLevel() >= kVerbose) {
    LOG_DEBUG(
        DBG(1),
        u"\nCNetworkListManager::GetConnectivityForBaseNetname: %s __NOT FOUND__! [hint_find=%i]\n",
        base, hint);
  }
  return false;
}

bool CNetworkListManager::GetNameForBaseNetname(WStringView base, std::list<WString>* names) {
  names->clear();
  const auto table = m_pImpl->Present();
  const NlmNetworkRecord* record = table->Find(base);
  if (!record) {
    if (NlmDebugLevel() >= kVerbose) {
      LOG_INFO(u"\nCNetworkListManager::GetNameForBaseNetname: %s __NOT FOUND__! [hint_find=%i]\n",
               base, 0);
    }
    return false;
  }
  for (const auto& [name, unused] : record->others) names->push_back(name);
  return true;
}

void CNetworkListManager::SetConnectivityForNetwork(WStringView name, std::uint32_t connectivity) {
  const CCritSecLock lock(m_pImpl->m_WriteLock);
  const auto present = m_pImpl->Present();
  WString base(name);
  const char16_t* search = u"base";
  const NlmNetworkRecord* record = present->Find(base);
  if (!record) {
    base = StripInstanceNumFromNetName(name);
    search = u"base2";
    record = present->Find(base);
  }
  if (!record) return;
  if (NlmDebugLevel() >= kVerbose) {
    LOG_INFO(
        u"\nCNetworkListManager::SetConnectivityForNetwork: [search %s %s][inst name %s] 0x%08x "
        u"==> 0x%08x\n",
        search, base, record->name, record->connectivity, connectivity);
  }
  if (record->connectivity == connectivity) return;
  auto table = std::make_shared<NlmTable>(*present);
  table->SetConnectivity(base, connectivity);
  m_pImpl->Publish(std::move(table));
}

HRESULT CNetworkListManager::GetNetworkNamesForInterface(const platform::GUID& adapter,
                                                         std::list<WString>* names) {
  return Guarded(kClassName, "GetNetworkNamesForInterface", platform::E_FAIL, [&] {
    constexpr char16_t kCallName[] = u"GetNetworkNameForInterface";
    const auto visit = [&](platform::INetwork& network) {
      WString name;
      if (const HRESULT result = network.GetName(&name); result == platform::S_OK) {
        names->push_back(std::move(name));
      } else {
        LOG_ERROR(u"CNetworkListManager::%s() - pNetwork->GetName() failed 0x%08x", kCallName,
                  result);
      }
      return true;
    };
    return m_pImpl->WalkConnections(adapter, u"GetNetworkNamesForInterface", kCallName, visit);
  });
}

HRESULT CNetworkListManager::DoesInterfaceHaveInternet(const platform::GUID& adapter,
                                                       bool* internet, NlmNetworkRecord* record) {
  *internet = false;
  *record = {};
  return Guarded(kClassName, "DoesInterfaceHaveInternet", platform::E_FAIL, [&] {
    constexpr char16_t kOperation[] = u"DoesInterfaceHaveInternet";
    std::uint32_t found = 0;
    return m_pImpl->WalkConnections(
        adapter, kOperation, kOperation, [&](platform::INetwork& network) {
          NlmNetworkRecord one;
          if (!ReadNetwork(network, kOperation, &one)) return true;
          ++found;
          const bool verbose = NlmDebugLevel() >= 1;
          if ((one.connectivity & kConnectivityInternet) != 0) {
            if (verbose) {
              LOG_INFO(u"[%s][%s][%s] connectivity=0x%08x[INTERNET][Found=%lu, stop loop]\n",
                       one.name, one.base, NetworkCategoryName(one.cat), one.connectivity, found);
            }
            *internet = true;
            *record = std::move(one);
            return false;
          }
          if ((one.connectivity & kConnectivityNoInternet) != 0) {
            if (verbose) {
              LOG_INFO(u"[%s][%s][%s] connectivity=0x%08x[NO INTERNET][Found=%lu, so far...]\n",
                       one.name, one.base, NetworkCategoryName(one.cat), one.connectivity, found);
            }
            *record = std::move(one);
          } else if (verbose) {
            LOG_INFO(u"[%s] connectivity=0x%08x[DISCONNECTED][Found=%lu, so far...]\n", one.name,
                     one.connectivity, found);
          }
          return true;
        });
  });
}

HRESULT CNetworkListManager::GetNetCatInfoForInterface(const platform::GUID& adapter,
                                                       std::list<NlmNetworkRecord>* records) {
  return Guarded(kClassName, "GetNetCatInfoForInterface", HRESULT{1}, [&] {
    constexpr char16_t kOperation[] = u"GetNetCatInfoForInterface";
    if (!m_pImpl->PresentManager()) {
      LOG_ERROR(u"CNetworkListManager::%s_internal: m_pNLM is NULL!", kOperation);
      return platform::E_POINTER;
    }
    const std::size_t before = records->size();
    m_pImpl->WalkConnections(adapter, kOperation, kOperation, [&](platform::INetwork& network) {
      NlmNetworkRecord one;
      if (!ReadNetwork(network, kOperation, &one)) return true;
      one.seen = true;
      if (NlmDebugLevel() >= 1) {
        LOG_INFO(u"CNetworkListManager::%s: FOUND: name=%s, category=%i %s, ifguid=%s %s\n",
                 kOperation, one.name, one.cat, NetworkCategoryName(one.cat), GuidText(adapter),
                 ConnectivityWord(one.connectivity, u"[DISCONNECTED]"));
      }
      records->push_back(std::move(one));
      return true;
    });
    return HRESULT{records->size() > before ? 0 : 1};
  });
}

WString CNetworkListManager::StripInstanceNumFromNetName(WStringView name) {
  constexpr WStringView kBlanks = u" \t\n\r\f\v";
  WStringView text = name;
  if (const std::size_t blank = text.rfind(u' '); blank != WStringView::npos) {
    const WStringView tail = text.substr(blank + 1);
    const bool digits = tail.find_first_not_of(u"0123456789") == WStringView::npos;
    if (digits) text = text.substr(0, blank);
  }
  const std::size_t last = text.find_last_not_of(kBlanks);
  text = last == WStringView::npos ? WStringView() : text.substr(0, last + 1);
  if (const std::size_t first = text.find_first_not_of(kBlanks); first != WStringView::npos) {
    text.remove_prefix(first);
  }
  if (NlmDebugLevel() >= kVerbose && text != name) {
    LOG_INFO(
        u"\nCNetworkListManager::StripInstanceNumFromNetName: returning '%s' [from input '%s']\n",
        text, name);
  }
  return WString(text);
}

}  // namespace corvane
