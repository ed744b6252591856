#include "wlan/network_filters.h"

#include "foundation/log_lines.h"
#include "platform/platform.h"
#include "platform/wlan_api.h"
#include "score/network_facts.h"
#include "settings/global_config_container.h"
#include "store/csv_helper.h"
#include "store/value_names.h"
#include "wlan/wlan_buffer.h"
#include "wlan/wlan_call.h"
#include "wlan/wlan_limits.h"

namespace corvane {

namespace {

using namespace platform;

// A network on a permit and on a deny list ends as denied: the deny lists come last.
struct FilterList {
  LONG type;
  const char16_t* name;
  std::uint32_t kind;
};
constexpr FilterList kFilterLists[] = {
    {wlan_filter_list_type_gp_permit, u"wlan_filter_list_type_gp_permit", kFilterPermitted},
    {wlan_filter_list_type_user_permit, u"wlan_filter_list_type_user_permit", kFilterPermitted},
    {wlan_filter_list_type_gp_deny, u"wlan_filter_list_type_gp_deny", kFilterDenied},
    {wlan_filter_list_type_user_deny, u"wlan_filter_list_type_user_deny", kFilterDenied},
};

DWORD ReadFilterList(HANDLE client, LONG type, std::vector<WString>* ssids) {
  WlanBuffer<DOT11_NETWORK_LIST> list;
  const DWORD result = CodeOfCall("CWlanInterface", "WlanGetFilterList", [&] {
    return Os().wlan.WlanGetFilterList(client, type, nullptr, list.Out());
  });
  if (result != ERROR_SUCCESS || !list) return result;
  if (list->dwNumberOfItems > kMaxListedFilters) return ERROR_INVALID_DATA;
  for (DWORD i = 0; i < list->dwNumberOfItems; ++i) {
    WString ssid = SsidText(list->Network[i].dot11Ssid);
    if (!ssid.empty()) ssids->push_back(std::move(ssid));
  }
  return ERROR_SUCCESS;
}

}  // namespace

void RefreshNetworkAllowDenyFilters(const AdapterIdentity& adapter) {
  auto& global = CGlobalConfigContainer::GetInstance();
  const auto client = adapter.Client();
  const auto permitted = CSVHelper::CreateObject();
  const auto denied = CSVHelper::CreateObject();
  NetworkFilters rows;
  std::uint32_t permitRows = 0;
  for (const FilterList& filter : kFilterLists) {
    std::vector<WString> ssids;
    const DWORD result = ReadFilterList(client.Handle(), filter.type, &ssids);
    if (result != ERROR_SUCCESS) {
      LOG_ERROR(
          u"[%i] CWlanInterface::RefreshNetworkAllowDenyFilters: WlanGetFilterList_wrapper(%s) "
          u"__FAILED__, "
          u"rc=0x%08lx\n",
          adapter.Idx(), filter.name, result);
      continue;
    }
    for (const WString& ssid : ssids) {
      rows.insert_or_assign(ssid, filter.kind);
      (filter.kind == kFilterPermitted ? permitted : denied)->AddString(ssid, false);
    }
    if (filter.kind == kFilterPermitted) permitRows += static_cast<std::uint32_t>(ssids.size());
  }
  global.SetNetworkFilters(rows);
  global.m_PermitFilterCount = permitRows;

  const auto registry = global.GetRegistry();
  if (!registry ||
      !registry->SetRegistryStringValue(value::kAllowListCSV, permitted->GetString())) {
    LOG_ERROR(u"[%i] ===========> RefreshNetworkAllowDenyFilters: ALLOW LIST WRITE FAILED!\n",
              adapter.Idx());
  }
  if (!registry || !registry->SetRegistryStringValue(value::kDenyListCSV, denied->GetString())) {
    LOG_ERROR(u"[%i] ===========> RefreshNetworkAllowDenyFilters: DEMY LIST WRITE FAILED!\n",
              adapter.Idx());
  }
}

}  // namespace corvane
