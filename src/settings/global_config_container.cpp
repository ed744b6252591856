#include "settings/global_config_container.h"

#include <algorithm>

#include "foundation/ignored.h"
#include "foundation/log_lines.h"
#include "platform/clock_api.h"
#include "platform/crypto_api.h"
#include "platform/file_api.h"
#include "platform/platform.h"
#include "platform/power_api.h"
#include "store/address_text.h"
#include "store/value_names.h"
#include "store/value_table.h"

namespace corvane {

namespace {

constexpr std::uint64_t kPilotLog = DBG(33);
constexpr std::int64_t kWeekSecs = 604800;
constexpr int kWeeksShown = 3;
constexpr std::uint64_t kRTAudioLimitMs = 3'600'000;

}  // namespace

CGlobalConfigContainer::CGlobalConfigContainer() { m_InstallTime = platform::UnixSecondsNow(); }
CGlobalConfigContainer::~CGlobalConfigContainer() = default;

void CGlobalConfigContainer::Initialize(bool forceDefaults) {
  for (const auto& config : TakeIFConfigs()) config->Shutdown();  // of a pass that found no adapter
  bool fresh = false;
  if (!GetRegistry()) Ignored(InitializeRegistry(kHomeKeyPath, &fresh));
  if (fresh || forceDefaults) InitPostSettings();
  const auto registry = GetRegistry();
  if (!registry) return;

  for (const ValueRow* row : ValuesIn(ValueKey::kHome, ValueStep::kWriteAlways)) {
    Ignored(registry->SetRegistryDWORDValue(row->name, row->written.number));
  }
  for (const ValueRow* row : ValuesIn(ValueKey::kHome, ValueStep::kReadAtStart)) {
    if (row->global.store) {
      ReadSetting(*registry, *row);
    } else if (row->name == value::kRandomCsv) {
      ReadWeeks(*registry);
    } else if (row->name == value::kSystemGuid) {
      ReadSystemGuid(*registry);
    }
  }
  Ignored(registry->SetRegistryDWORDValue(value::kFreshDone, 1));
}

void CGlobalConfigContainer::InitPostSettings() {
  const auto registry = GetRegistry();
  if (!registry) return;
  for (const ValueRow* row : ValuesIn(ValueKey::kHome, ValueStep::kWriteFresh)) {
    if (row->written.words.empty())
      Ignored(registry->SetRegistryDWORDValue(row->name, row->written.number));
  }
  Ignored(registry->SetRegistryDWORDValue(value::kInstallTime, platform::UnixSecondsNow()));
  const auto weeks = CSVHelper::CreateObject();
  for (int week = 0; week < kWeeksShown; ++week) weeks->AddString(u"1", true);
  Ignored(registry->SetRegistryStringValue(value::kRandomCsv, weeks->GetString()));
  LOG_INFO(u"CGlobalConfigContainer::InitPostSettings: RandomCsv: %s\n", weeks->GetString());
}

void CGlobalConfigContainer::ReadSetting(CRegistry& registry, const ValueRow& row) {
  std::uint32_t number = 0;
  if (!registry.GetRegistryDWORDValue(row.name, &number)) {
    if (row.returns) row.global.store(*this, *row.start);
  } else if (const auto taken = TakeNumber(row, number)) {
    row.global.store(*this, *taken);
  } else {
    LOG_INFO(
        u"CGlobalConfigContainer::Initialize: [registry value %s] %lu is out of range (%lu-%lu)\n",
        row.name, number, row.least, row.most);
  }
}

void CGlobalConfigContainer::ReadWeeks(CRegistry& registry) {
  auto weeks = CSVHelper::CreateObject();
  WString text;
  if (registry.GetRegistryStringValue(value::kRandomCsv, &text)) weeks->AddStringAll(text);
  {
    const CCritSecLock lock(m_TableLock);
    m_pRandomCsv.Swap(weeks);
  }
  const log::Open open(kPilotLog);
  if (!open) return;
  const std::int64_t installed = std::int64_t{platform::UnixSecondsNow()} - m_InstallTime;
  const int current = static_cast<int>(installed / kWeekSecs) + 1;
  LOG_DEBUG(kPilotLog, u"CGlobalConfigContainer::Initialize: read random csv: %s\n", text);
  LOG_DEBUG(kPilotLog, u"CGlobalConfigContainer::Initialize: enabled for current week %i: %i\n",
            current, IsEnabledForWeek(current));
  for (int week = 1; week <= kWeeksShown; ++week) {
    LOG_DEBUG(kPilotLog, u"CGlobalConfigContainer::Initialize: enabled for week %i: %i\n", week,
              IsEnabledForWeek(week));
  }
}

void CGlobalConfigContainer::ReadSystemGuid(CRegistry& registry) {
  WString text;
  platform::GUID guid;
  if (!registry.GetRegistryStringValue(value::kSystemGuid, &text) || !GuidFromText(text, &guid)) {
    if (Os().crypto.CoCreateGuid(&guid) < 0) return;
    Ignored(registry.SetRegistryStringValue(value::kSystemGuid, GuidText(guid)));
  }
  const CCritSecLock lock(m_TableLock);
  m_SystemGuid = guid;
}

void CGlobalConfigContainer::RefreshGlobals() {
  const auto registry = GetRegistry();
  if (!registry) return;
  for (const ValueRow* row : ValuesIn(ValueKey::kHome, ValueStep::kReadEachRound)) {
    ReadSetting(*registry, *row);
  }
}

void CGlobalConfigContainer::Shutdown(bool killPopups) {
  CSmartPointer<CSVHelper> weeks;
  {
    const CCritSecLock lock(m_TableLock);
    m_pRandomCsv.Swap(weeks);
  }
  for (const auto& config : TakeIFConfigs()) {
    if (killPopups) KillNudgeDialog();
    config->Shutdown();
  }
  ReleaseRegistry();
}

std::vector<CSmartPointer<CQUAYInterfaceConfig>> CGlobalConfigContainer::TakeIFConfigs() {
  std::vector<CSmartPointer<CQUAYInterfaceConfig>> configs;
  const CCritSecLock lock(m_TableLock);
  m_IFConfigByGuid.clear();
  configs.swap(m_IFConfigs);
  m_IFConfigCount = 0;
  return configs;
}

CSmartPointer<CQUAYInterfaceConfig> CGlobalConfigContainer::GetIFConfig(int index) {
  auto config = FindIFConfig(index);
  if (!config) throw Exception("CGlobalConfigContainer::GetIFConfig: INVALID idx %i", index);
  return config;
}

CSmartPointer<CQUAYInterfaceConfig> CGlobalConfigContainer::FindIFConfig(int index) {
  const CCritSecLock lock(m_TableLock);
  if (index < 0 || static_cast<std::size_t>(index) >= m_IFConfigs.size()) return nullptr;
  return m_IFConfigs[static_cast<std::size_t>(index)];
}

CSmartPointer<CQUAYInterfaceConfig> CGlobalConfigContainer::GetIFConfigByGuid(
    WStringView guidText) {
  const CCritSecLock lock(m_TableLock);
  const auto at = m_IFConfigByGuid.find(guidText);
  return at == m_IFConfigByGuid.end() ? nullptr : at->second;
}

int CGlobalConfigContainer::GetIFConfigCount() {
  const CCritSecLock lock(m_TableLock);
  return m_IFConfigCount;
}

int CGlobalConfigContainer::AddIFConfig(WStringView guid, WStringView name,
                                        WStringView description) {
  const CCritSecLock lock(m_Lock);
  bool fresh = false;
  Ignored(InitializeRegistry(kHomeKeyPath, &fresh));
  const int index = GetIFConfigCount();
  auto config = CQUAYInterfaceConfig::CreateObject();
  config->Initialize(index, WString(kHomeKeyPath) + u"\\" + WString(guid), guid, name, description);
  config->m_bForceLQEtw = m_bForceLQEtw.load();
  const CCritSecLock table(m_TableLock);
  m_IFConfigs.push_back(config);
  m_IFConfigByGuid[WString(guid)] = config;
  m_IFConfigCount = static_cast<int>(m_IFConfigs.size());
  return index;
}

void CGlobalConfigContainer::SetUserTempPath(std::string path) {
  const CCritSecLock lock(m_TableLock);
  m_UserTempPath.swap(path);
}

void CGlobalConfigContainer::SetProxyPresent(bool present) {
  const CCritSecLock lock(m_TableLock);
  m_bProxyPresent = present;
}

std::string CGlobalConfigContainer::GetUserTempPath() const {
  const CCritSecLock lock(m_TableLock);
  return m_UserTempPath;
}

bool CGlobalConfigContainer::IsProxyPresent() const {
  const CCritSecLock lock(m_TableLock);
  return m_bProxyPresent;
}

WString CGlobalConfigContainer::GetSystemGuidText() const {
  const CCritSecLock lock(m_TableLock);
  return GuidText(m_SystemGuid);
}

bool CGlobalConfigContainer::SetClientDir(WStringView path) {
  {
    const CCritSecLock lock(m_TableLock);
    if (std::find(m_ClientDirs.begin(), m_ClientDirs.end(), path) != m_ClientDirs.end())
      return false;
    m_ClientDirs.emplace_back(path);
  }
  LOG_DEBUG(DBG(45), u"CGlobalConfigContainer::SetClientDir:[LIST EMPTY] saving: %s\n", path);
  return true;
}

void CGlobalConfigContainer::SetRTAudioDetected(bool detected) {
  if (detected) m_rt_audio_tick = Os().clock.GetTickCount64();
  m_rt_audio = detected;
}

bool CGlobalConfigContainer::ExpireRTAudio() {
  const std::uint64_t since = m_rt_audio_tick, now = Os().clock.GetTickCount64();
  if (!m_rt_audio || (since != 0 && now - since <= kRTAudioLimitMs)) return false;
  SetRTAudioDetected(false);
  return true;
}

bool CGlobalConfigContainer::FindFileInClientDirs(WStringView name, WString* found) {
  std::list<WString> folders;
  {
    const CCritSecLock lock(m_TableLock);
    folders = m_ClientDirs;
  }
  for (const WString& folder : folders) {
    WString path = folder;
    path += platform::kPathSeparator;
    path += name;
    const platform::DWORD attributes = Os().files.GetFileAttributesW(path.c_str());
    if (attributes == platform::INVALID_FILE_ATTRIBUTES) continue;
    if ((attributes & platform::FILE_ATTRIBUTE_DIRECTORY) != 0) continue;
    *found = std::move(path);
    return true;
  }
  return false;
}

bool CGlobalConfigContainer::ReadFlagAndClear(WStringView name) {
  const auto registry = GetRegistry();
  std::uint32_t number = 0;
  if (!registry || !registry->GetRegistryDWORDValue(name, &number) || number != 1) return false;
  Ignored(registry->SetRegistryDWORDValue(name, 0));
  return true;
}

bool CGlobalConfigContainer::IsEnabledForWeek(int week) {
  const CCritSecLock lock(m_TableLock);
  if (week < 1 || !m_pRandomCsv) return true;
  const WString* entry = m_pRandomCsv->GetItem(static_cast<std::size_t>(week - 1));
  return !entry || entry->empty() || *entry != u"0";
}

bool CGlobalConfigContainer::IsOnACPower() {
  constexpr platform::BYTE kMains = 1;
  platform::SYSTEM_POWER_STATUS status;
  return Os().power.GetSystemPowerStatus(&status) && status.ACLineStatus == kMains;
}

std::shared_ptr<const NetworkFilters> CGlobalConfigContainer::GetNetworkFilters() const {
  const CCritSecLock lock(m_TableLock);
  return m_NetworkFilters;
}

std::uint32_t CGlobalConfigContainer::GetNetworkFilter(WStringView ssid) {
  const auto filters = GetNetworkFilters();
  const auto at = filters->find(ssid);
  return at == filters->end() ? std::uint32_t{kFilterNone} : at->second;
}

void CGlobalConfigContainer::SetNetworkFilters(const NetworkFilters& rows) {
  const CCritSecLock lock(m_TableLock);
  const bool all = std::ranges::all_of(rows, [this](const auto& row) {
    const auto at = m_NetworkFilters->find(row.first);
    return at != m_NetworkFilters->end() && at->second == row.second;
  });
  if (all) return;
  auto filters = std::make_shared<NetworkFilters>(*m_NetworkFilters);
  for (const auto& [ssid, kind] : rows) filters->insert_or_assign(ssid, kind);
  m_NetworkFilters = std::move(filters);
}

}  // namespace corvane
