#include "record/air_recorder.h"

#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <utility>

#include "foundation/format.h"
#include "foundation/guarded.h"
#include "foundation/log_lines.h"
#include "history/data_folder.h"
#include "platform/clock_api.h"
#include "platform/platform.h"
#include "platform/thread_api.h"
#include "policy/round.h"
#include "settings/global_config_container.h"
#include "store/process_flags.h"
#include "store/value_table.h"

namespace corvane {

namespace {

constexpr std::uint32_t kStopMs = 2000;
constexpr std::uint64_t kMegabyte = 1'000'000;
constexpr std::size_t kMostQueued = 8'000'000;  // bytes
constexpr std::uint64_t kSettingsMs = 10'000;   // between two looks at the settings

std::uint64_t Tick() { return Os().clock.GetTickCount64(); }

template <class List>
std::vector<std::uint8_t> Copy(const WlanBuffer<List>& list, std::size_t bytes) {
  std::vector<std::uint8_t> copy(list ? bytes : 0);
  if (list) std::memcpy(copy.data(), list.get(), bytes);
  return copy;
}

std::size_t BytesOf(const WlanBuffer<platform::WLAN_AVAILABLE_NETWORK_LIST>& list) {
  if (!list) return 0;
  return offsetof(platform::WLAN_AVAILABLE_NETWORK_LIST, Network) +
         list->dwNumberOfItems * sizeof(platform::WLAN_AVAILABLE_NETWORK);
}

std::string UtcText() {
  const platform::SYSTEMTIME now = platform::SystemTimeNow();
  return FormatA("%04u-%02u-%02uT%02u:%02u:%02uZ", now.wYear, now.wMonth, now.wDay, now.wHour,
                 now.wMinute, now.wSecond);
}

std::string JsonString(WStringView text) {
  const std::string bytes = WideToUtf8(text);
  rapidjson::StringBuffer buffer;
  rapidjson::Writer<rapidjson::StringBuffer> json(buffer);
  json.String(bytes.c_str(), static_cast<rapidjson::SizeType>(bytes.size()));
  return buffer.GetString();
}

// What the service reads, and what clients set; not what it publishes.
bool IsSetting(const ValueRow& row) {
  const bool ofClients = row.writers.find("clients") != std::string_view::npos ||
                         row.writers.find("Command") != std::string_view::npos;
  return row.kind == ValueKind::kText ? ofClients
                                      : ofClients || row.atStart != 0 || row.eachRound != 0;
}

RecordedValues Read(const CRegistryHelperBase& key, ValueKey which) {
  RecordedValues values;
  for (const ValueRow& row : ValuesOf(which)) {
    if (!IsSetting(row)) continue;
    if (row.kind == ValueKind::kText) {
      if (WString text; key.GetString(row.name, &text))
        values[WideToUtf8(row.name)] = JsonString(text);
    } else if (row.kind != ValueKind::kLongNumber) {
      if (std::uint32_t number = 0; key.GetDWORD(row.name, &number))
        values[WideToUtf8(row.name)] = std::to_string(number);
    }
  }
  return values;
}

RoundFacts::Score ScoreOf(CWlanBssEntry& entry, const ScoreContext& scores) {
  return {entry.GetBssid(), entry.GetScore(false, scores)};
}

}  // namespace

CAirRecorder::CAirRecorder() : CThread("recording"), m_StartTick(Tick()) {
  RoundWatches::Add(this);
  g_pAirWatch = this;
}

CAirRecorder::~CAirRecorder() {
  Stop();
  g_pAirWatch = nullptr;
  RoundWatches::Remove(this);
}

void CAirRecorder::Follow(std::uint32_t megabytes) {
  if (megabytes == m_Megabytes && (megabytes == 0 || IsRunning())) return;
  if (m_Megabytes != 0) End();
  if (megabytes == 0 || m_bGivenUp) return;
  ContainedAt("CAirRecorder::Follow", [&] {
    const WString folder = DataFolder();
    if (folder.empty()) return;  // it is looked for again
    CSmartPointer<CWinEvent> wake;
    wake.CreateObject()->SetDebugName("recording");
    {
      const CCritSecLock lock(m_QueueLock);
      m_pWake = wake;
    }
    m_File.emplace(folder, megabytes * kMegabyte);
    m_Writer = {};
    m_bBegun = m_bFailureTold = false;
    if (const platform::HRESULT result = BeginThread(); result != 0) {
      LOG_ERROR(u"CAirRecorder::Follow: the thread did not start: 0x%08x", result);
      return;
    }
    m_Megabytes = megabytes;
    m_bOn = true;
    LOG_INFO(u"CAirRecorder: recording to %s, at most %lu million bytes", m_File->Path(),
             megabytes);
  });
}

void CAirRecorder::End() {
  m_bOn = false;
  m_Megabytes = 0;
  m_bRun = false;  // before the signal, so that the thread does not wait again
  ContainedAt("CAirRecorder::End", [this] {
    if (const auto wake = Wake()) wake->SetExitEvent();
  });
  m_bGivenUp = !StopThread(kStopMs);
  {
    const CCritSecLock lock(m_QueueLock);
    m_Queue.clear();
    m_QueueBytes = 0;
    m_Lost = 0;
  }
  LOG_INFO(u"CAirRecorder: the recording ends");
}

CSmartPointer<CWinEvent> CAirRecorder::Wake() {
  const CCritSecLock lock(m_QueueLock);
  return m_pWake;
}

// --- What is told, on the threads that tell it

void CAirRecorder::Put(AirFact fact) {
  const std::size_t bytes = SizeOf(fact);
  {
    const CCritSecLock lock(m_QueueLock);
    if (m_QueueBytes + bytes > kMostQueued) {
      ++m_Lost;
      return;
    }
    m_QueueBytes += bytes;
    m_Queue.push_back(std::move(fact));
  }
  if (const auto wake = Wake()) wake->SetEvent();
}

void CAirRecorder::NoteOrder(std::string text) {
  if (!m_bOn) return;
  ContainedAt("CAirRecorder::NoteOrder", [&] { Put({Tick(), OrderFacts{std::move(text)}}); });
}

void CAirRecorder::OnLists(int adapter, bool scanned, const AirInputs& now) {
  if (!m_bOn) return;
  ContainedAt("CAirRecorder::OnLists", [&] {
    ListFacts facts;
    facts.adapter = adapter;
    facts.scanned = scanned;
    facts.networks = Copy(now.networks, BytesOf(now.networks));
    facts.entries = Copy(now.entries, now.entries ? now.entries->dwTotalSize : 0);
    facts.profiles = now.profiles;
    facts.known = now.heardBy.networks;
    facts.filters = now.heardBy.filters;
    Put({Tick(), std::move(facts)});
  });
}

void CAirRecorder::OnOperation(int adapter, WlanOperation kind, bool ended) {
  if (!m_bOn) return;
  ContainedAt("CAirRecorder::OnOperation", [&] {
    const std::uint64_t now = Tick();
    std::uint64_t& began = Of(adapter).operationTick;
    if (ended) {
      Put({now, TookFacts{adapter, kind, now - std::min(now, began)}});
    } else {
      began = now;
    }
  });
}

void CAirRecorder::OnOutside(int adapter, OutsideEvent event, WStringView ssid) {
  if (!m_bOn) return;
  ContainedAt("CAirRecorder::OnOutside", [&] {
    Put({Tick(), OutsideFacts{adapter, event, WideToUtf8(ssid)}});
  });
}

CAirRecorder::Present& CAirRecorder::Of(int adapter) {
  const CCritSecLock lock(m_PresentLock);
  return m_Present[adapter];
}

void CAirRecorder::OnRoundBegins(int adapter, const CWlanInterface& wlan) {
  Present& present = Of(adapter);
  present.wlan = &wlan;
  present.facts = {};
  present.beganTick = Tick();
}

void CAirRecorder::OnCandidates(const Round& round) {
  if (!m_bOn) return;
  ContainedAt("CAirRecorder::OnCandidates", [&] {
    Present& present = Of(round.idx);
    present.hasCandidates = true;
    for (const auto& entry : round.candidates)
      present.facts.scores.push_back(ScoreOf(*entry, round.scores));
  });
}

// Before the list is there, an entry is told of because it may not be in it.
void CAirRecorder::OnStanding(int adapter, CWlanBssEntry& entry, CandidateStanding) {
  if (!m_bOn) return;
  ContainedAt("CAirRecorder::OnStanding", [&] {
    Present& present = Of(adapter);
    if (present.hasCandidates || !present.wlan) return;
    present.facts.scores.push_back(ScoreOf(entry, present.wlan->GetScoreContext()));
  });
}

void CAirRecorder::OnStep(int adapter, RoundStep step, CWlanBssEntry* about) {
  if (!m_bOn) return;
  ContainedAt("CAirRecorder::OnStep", [&] {
    Of(adapter).facts.steps.push_back({step, about ? about->GetBssid() : MacAddress{}});
  });
}

void CAirRecorder::OnRoundEnds(int adapter) {
  Present& present = Of(adapter);
  const CWlanInterface* wlan = std::exchange(present.wlan, nullptr);
  present.hasCandidates = false;
  RoundFacts facts = std::exchange(present.facts, {});
  if (!m_bOn || !wlan) return;
  ContainedAt("CAirRecorder::OnRoundEnds", [&] {
    facts.adapter = {adapter,
                     WideToUtf8(wlan->GetGuidText()),
                     WideToUtf8(wlan->GetConnectionName()),
                     WideToUtf8(wlan->GetDescription()),
                     WideToUtf8(wlan->GetMacText()),
                     WideToUtf8(wlan->AdapterClassText())};
    if (wlan->IsConnected()) {
      const LinkState link = wlan->Link().Get();
      const auto& association = link.m_ConnAttrs.wlanAssociationAttributes;
      facts.link =
          LinkFacts{link.m_connected_dot11Bssid,
                    SsidBytes(association.dot11Ssid),
                    association.wlanSignalQuality,
                    association.ulRxRate,
                    association.ulTxRate,
                    link.m_connected_dot11Bssid == link.m_connected_dot11Bssid_if_we_initiated};
    }
    const std::uint64_t now = Tick();
    facts.ms = now - std::min(now, present.beganTick);
    facts.mbps = wlan->GetTrafficMbps();
    facts.vpn = g_bVPNFound;
    facts.realTimeAudio = CGlobalConfigContainer::GetInstance().m_rt_audio;
    Put({now, std::move(facts)});
  });
}

// --- The thread

void CAirRecorder::RunThreadLoop() {
  ContainedAt("CAirRecorder::RunThreadLoop", [this] {
    const auto wake = Wake();
    while (m_bRun) {
      wake->WaitOnEvent(platform::INFINITE);
      WriteQueue();
    }
    m_File->Close();
  });
}

void CAirRecorder::WriteQueue() {
  std::deque<AirFact> facts;
  std::uint64_t lost = 0;
  {
    const CCritSecLock lock(m_QueueLock);
    facts.swap(m_Queue);
    m_QueueBytes = 0;
    lost = std::exchange(m_Lost, 0);
  }
  if (facts.empty()) return;
  const std::uint64_t tick = facts.front().tick;
  if (!Ready(tick)) return;
  LookAtSettings(tick);
  if (lost != 0) Write(tick, [&] { return m_Writer.Lost(tick, lost); });
  for (const AirFact& fact : facts) Write(fact.tick, [&] { return m_Writer.Lines(fact); });
}

// The file is open, and begun. A failure is told once, until something is written again.
bool CAirRecorder::Ready(std::uint64_t tick) {
  if (m_File->IsOpen()) return true;
  if (!m_File->Open()) return NoteFailure("open");
  Begin(tick);
  return m_File->IsOpen();
}

// Each part of a recording says all that it needs by itself.
void CAirRecorder::Begin(std::uint64_t tick) {
  std::string lines = m_Writer.Begin(tick, tick - std::min(tick, m_StartTick), UtcText(),
                                     std::exchange(m_bBegun, true));
  for (const auto& [key, values] : m_Settings) lines += m_Writer.Values(tick, key, values);
  if (!m_File->Append(lines)) NoteFailure("write");
}

template <class Lines>
void CAirRecorder::Write(std::uint64_t tick, Lines lines) {
  if (!Ready(tick)) return;
  std::string text = lines();
  if (text.empty()) return;
  if (!m_File->HasRoom(text.size() + 1)) {
    if (!m_File->Rotate()) {
      NoteFailure("rotate");
      return;
    }
    Begin(tick);
    text = lines();
  }
  if (m_File->Append(text)) {
    m_bFailureTold = false;
  } else {
    NoteFailure("write");
  }
}

void CAirRecorder::LookAtSettings(std::uint64_t tick) {
  if (m_SettingsTick && tick < *m_SettingsTick + kSettingsMs) return;
  m_SettingsTick = tick;
  auto& global = CGlobalConfigContainer::GetInstance();
  if (RecordedValues values = Read(global, ValueKey::kHome); !values.empty())
    m_Settings[kHomeValues] = std::move(values);
  for (int i = 0; i < global.GetIFConfigCount(); ++i) {
    const auto config = global.FindIFConfig(i);
    if (!config) continue;
    if (RecordedValues values = Read(*config, ValueKey::kAdapter); !values.empty())
      m_Settings[i] = std::move(values);
  }
  for (const auto& [key, values] : m_Settings)
    Write(tick, [&, k = key, &v = values] { return m_Writer.Values(tick, k, v); });
  const bool mains = CGlobalConfigContainer::IsOnACPower();
  Write(tick, [&] { return m_Writer.Power(tick, mains); });
}

bool CAirRecorder::NoteFailure(const char* what) {
  if (!std::exchange(m_bFailureTold, true)) {
    LOG_ERROR(u"CAirRecorder: cannot %S %s: error %lu; what is heard meanwhile is not recorded",
              what, m_File->Path(), Os().threads.GetLastError());
  }
  return false;
}

}  // namespace corvane
