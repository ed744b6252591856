#include "platform/sim/devices/sim_driver.h"

#include <algorithm>
#include <cstring>

#include "platform/clock_api.h"
#include "platform/file_api.h"
#include "platform/sim/devices/sim_heap.h"
#include "platform/sim/kernel/sim_text.h"
#include "platform/thread_api.h"

namespace corvane::platform::sim {

namespace {

constexpr char16_t kDevice[] = u"\\\\.\\FlowSplitDrv";
constexpr std::uintptr_t kFirstHandle = 0x44000000;
constexpr std::size_t kMostFindings = 20;
constexpr std::uint64_t kGlanceEvery = 8;  // calls of the platform, on the average

constexpr DWORD ERROR_INVALID_FUNCTION = 1;
constexpr DWORD ERROR_DEVICE_NOT_CONNECTED = 1167;

// Control codes.
constexpr DWORD kHandshake = 0x120004, kStop = 0x120008, kOpened = 0x120260, kStart = 0x120400,
                kSteer = 0x120420, kNotify = 0x120448;

constexpr DWORD kMagic = 0xFEEDF00D, kNotifyMagic = 0xDE30ADD3;
constexpr DWORD kAll = 0xFFFFFFFF;

// Of the status word, which is the driver's own.
constexpr DWORD kKnown = 1, kSteered = 2;

DWORD WordAt(const BYTE* bytes, std::size_t at) {
  DWORD word = 0;
  std::memcpy(&word, bytes + at, sizeof word);
  return word;
}

std::uint64_t LongAt(const BYTE* bytes, std::size_t at) {
  return WordAt(bytes, at) | std::uint64_t{WordAt(bytes, at + 4)} << 32;
}

}  // namespace

SimDriver::SimDriver(const Services& services, std::uint64_t seed,
                     const std::optional<DriverPart>& start)
    : m(services), m_StartTick(services.clock.GetTickCount64()), m_Random(seed ^ 0xD1CE) {
  if (!start) return;
  m_bPresent = true;
  Apply(*start);
}

std::uint64_t SimDriver::NowMs() const { return m.clock.GetTickCount64() - m_StartTick; }

HANDLE SimDriver::CreateFileW(LPCWSTR device, DWORD access, DWORD share) {
  DWORD code = m.gate.Enter("CreateFileW", ERROR_FILE_NOT_FOUND);
  HANDLE handle = nullptr;
  {
    const std::lock_guard guard(m_Mutex);
    if (code == ERROR_SUCCESS && (!m_bPresent || FoldCase(ViewOf(device)) != FoldCase(kDevice))) {
      code = ERROR_FILE_NOT_FOUND;
    }
    if (code == ERROR_SUCCESS) {
      Expect(access == (GENERIC_READ | GENERIC_WRITE), "the device is opened with another access");
      Expect(share == (FILE_SHARE_READ | FILE_SHARE_WRITE), "the device is not shared");
      handle = reinterpret_cast<HANDLE>(kFirstHandle + ++m_Next);
      m_Open.insert(handle);
    }
  }
  if (!handle) m.threads.SetLastError(code);
  return handle;
}

BOOL SimDriver::DeviceIoControl(HANDLE device, DWORD code, const void* input, DWORD inputSize,
                                void* output, DWORD outputSize, DWORD* returned) {
  DWORD result = m.gate.Enter("DeviceIoControl");
  DWORD delayMs = 0;
  if (result == ERROR_SUCCESS) {
    const std::lock_guard guard(m_Mutex);
    delayMs = m_DelayMs;
  }
  if (delayMs != 0) m.threads.Sleep(delayMs);
  if (result == ERROR_SUCCESS) {
    const std::lock_guard guard(m_Mutex);
    if (m_Open.contains(device)) {
      result = std::ranges::find(m_Fails, code) != m_Fails.end()
                   ? ERROR_GEN_FAILURE
                   : Serve({code, static_cast<const BYTE*>(input), inputSize,
                            static_cast<BYTE*>(output), outputSize});
    } else {
      Expect(m_Stale.contains(device), "a control call comes with a handle that is not open");
      result = ERROR_DEVICE_NOT_CONNECTED;
    }
  }
  if (returned) *returned = result == ERROR_SUCCESS ? outputSize : 0;
  if (result == ERROR_SUCCESS) return TRUE;
  m.threads.SetLastError(result);
  return FALSE;
}

BOOL SimDriver::CloseHandle(HANDLE device) {
  {
    const std::lock_guard guard(m_Mutex);
    Expect(m_Open.erase(device) + m_Stale.erase(device) == 1, "a handle is closed twice");
  }
  const DWORD code = m.gate.Enter("CloseHandle");
  if (code == ERROR_SUCCESS) return TRUE;
  m.threads.SetLastError(code);
  return FALSE;
}

void SimDriver::Apply(const DriverPart& change) {
  const std::lock_guard guard(m_Mutex);
  m_bInstalled = true;
  if (change.starts) m_bStarts = *change.starts;
  if (change.answer) m_Answer = *change.answer;
  if (change.delayMs) m_DelayMs = *change.delayMs;
  if (change.fails) m_Fails = *change.fails;
  if (!change.present) return;
  m_bPresent = *change.present;
  if (m_bPresent) return;
  m_Stale.merge(m_Open);
  m_Open.clear();
  Forget();
}

bool SimDriver::IsInstalled() const {
  const std::lock_guard guard(m_Mutex);
  return m_bInstalled;
}

bool SimDriver::IsPresent() const {
  const std::lock_guard guard(m_Mutex);
  return m_bPresent;
}

bool SimDriver::StartService() {
  const std::lock_guard guard(m_Mutex);
  m_bPresent = m_bPresent || m_bStarts;
  return m_bPresent;
}

void SimDriver::Glance() {
  if (!m_bHasTables) return;
  const std::lock_guard guard(m_Mutex);
  if (m_Random.Below(kGlanceEvery) == 0) Walk(&SimDriverTable::CheckAlways, "at some instant");
}

void SimDriver::OnPassBegins() {
  if (!m_bHasTables) return;
  const std::lock_guard guard(m_Mutex);
  Walk(&SimDriverTable::CheckSettled, "between two passes");
}

SimDriver::Report SimDriver::Tell() const {
  const std::lock_guard guard(m_Mutex);
  Report report = m_Report;
  report.installed = m_bInstalled;
  report.present = m_bPresent;
  report.handshaken = m_bHasTables;
  std::vector<std::uint32_t> words(SimDriverTable::WordsToCopy());
  if (!m_bHasTables || !m.heap.Read(m_Table, &words)) return report;
  const SimDriverTable table(std::move(words));
  for (std::size_t i = 0; i < SimDriverTable::kSlots; ++i) {
    if (table.InUse(i) && (table.Word(SimDriverTable::StatusAt(i)) & kSteered) != 0) {
      report.steered.push_back(static_cast<int>(i));
    }
  }
  return report;
}

std::size_t SimDriver::OpenHandles() const {
  const std::lock_guard guard(m_Mutex);
  return m_Open.size() + m_Stale.size();
}

void SimDriver::Expect(bool holds, const std::string& otherwise) {
  if (holds || m_Report.findings.size() == kMostFindings) return;
  m_Report.findings.push_back(std::to_string(NowMs()) + " ms: " + otherwise);
}

bool SimDriver::WantsSizes(const Call& call, DWORD in, DWORD out) {
  const bool right = call.inputSize == in && call.outputSize == out &&
                     (call.input != nullptr) == (in != 0) && (call.output != nullptr) == (out != 0);
  Expect(right, "control " + std::to_string(call.code) + " comes with " +
                    std::to_string(call.inputSize) + " bytes in and " +
                    std::to_string(call.outputSize) + " out");
  return right;
}

DWORD SimDriver::Serve(const Call& call) {
  switch (call.code) {
    case kHandshake:
      return WantsSizes(call, 40, 40) ? Handshake(call) : ERROR_INVALID_PARAMETER;
    case kStop:
      if (!WantsSizes(call, 0, 0)) return ERROR_INVALID_PARAMETER;
      ++m_Report.stops;
      Forget();
      return ERROR_SUCCESS;
    case kOpened:
      if (!WantsSizes(call, 8, 0)) return ERROR_INVALID_PARAMETER;
      Expect(LongAt(call.input, 0) == 0, "whoever holds the device open says more than nothing");
      return ERROR_SUCCESS;
    case kStart:
      if (!WantsSizes(call, 0, 0)) return ERROR_INVALID_PARAMETER;
      if (!m_bHasTables) return ERROR_NOT_READY;
      m_Report.started = true;
      return ERROR_SUCCESS;
    case kSteer:
      return WantsSizes(call, 12, 12) ? Steer(call) : ERROR_INVALID_PARAMETER;
    case kNotify:
      return WantsSizes(call, 16, 0) ? Notified(call) : ERROR_INVALID_PARAMETER;
    default:
      Expect(false, "control code " + std::to_string(call.code) + " is none of the driver's");
      return ERROR_INVALID_FUNCTION;
  }
}

DWORD SimDriver::Handshake(const Call& call) {
  ++m_Report.handshakes;
  const BYTE* const in = call.input;
  const std::uint64_t table = LongAt(in, 16), links = LongAt(in, 32);
  Expect(WordAt(in, 0) == kMagic, "the handshake has another magic word");
  Expect(WordAt(in, 4) == 2, "the handshake is of another revision");
  Expect(WordAt(in, 8) == SimDriverTable::kBytes, "the first table has another size");
  Expect(WordAt(in, 24) == SimDriverTable::kLinkBytes, "the second table has another size");
  Expect(WordAt(in, 12) == 0 && WordAt(in, 28) == 0, "the handshake has words that nobody named");
  if (m_Answer == DriverAnswer::kReady) {
    if (const DWORD code = TakeTables(table, links); code != ERROR_SUCCESS) return code;
  }
  std::memmove(call.output, in, 40);
  std::memcpy(call.output + 4, &m_Answer, sizeof m_Answer);
  return ERROR_SUCCESS;
}

// Tables that stand, and stay where they are for as long as they do.
DWORD SimDriver::TakeTables(std::uint64_t table, std::uint64_t links) {
  std::vector<std::uint32_t> first(SimDriverTable::kBytes / 4), second;
  if (m_bHasTables && m.heap.Read(m_Table, &first)) {
    Expect(table == m_Table && links == m_Links, "the tables have moved");
  }
  second.resize(SimDriverTable::kLinkBytes / 4);
  const bool stand = m.heap.Read(table, &first) && m.heap.Read(links, &second);
  Expect(stand, "the tables do not lie in memory that stands");
  if (!stand) return ERROR_INVALID_PARAMETER;
  const bool again = m_bHasTables && table == m_Table;
  m_Table = table;
  m_Links = links;
  m_bHasTables = true;
  if (again) return ERROR_SUCCESS;
  const bool linked = std::ranges::all_of(
      second.begin(), second.end(),
      [i = 0](std::uint32_t word) mutable { return word == (i++ % 4 == 0 ? 0xFFFF0000u : 0u); });
  Expect(linked, "the second table is not as it starts");
  first.resize(SimDriverTable::WordsToCopy());
  const std::string torn = SimDriverTable(std::move(first)).CheckHandedOver();
  Expect(torn.empty(), "at the handshake, " + torn);
  return ERROR_SUCCESS;
}

// The mode is a user's; one that the driver does not know is refused.
DWORD SimDriver::Steer(const Call& call) {
  const DWORD command = WordAt(call.input, 4), mode = WordAt(call.input, 8);
  Expect(WordAt(call.input, 0) == kMagic, "the command has another magic word");
  Expect(command == 1 || command == 2, "command " + std::to_string(command) + " is none");
  if (mode != 1 && mode != 2) return ERROR_INVALID_PARAMETER;
  m_Report.command = command;
  m_Report.mode = mode;
  std::memmove(call.output, call.input, 12);
  return ERROR_SUCCESS;
}

DWORD SimDriver::Notified(const Call& call) {
  const Heard heard{NowMs(), WordAt(call.input, 4), WordAt(call.input, 8), WordAt(call.input, 12)};
  Expect(WordAt(call.input, 0) == kNotifyMagic, "a notification has another magic word");
  const bool known =
      heard.device == kAll
          ? (heard.kind == 8 ? heard.value == 1 || heard.value == 2
                             : (heard.kind == 1 || heard.kind == 4) && heard.value == 0)
          : heard.device < SimDriverTable::kSlots && heard.kind >= 1 && heard.kind <= 3 &&
                heard.value != 0 && (heard.value & ~DWORD{1 | 2 | 4 | 8 | 256}) == 0;
  Expect(known, "a notification says what nobody understands: device " +
                    std::to_string(heard.device) + ", kind " + std::to_string(heard.kind) +
                    ", value " + std::to_string(heard.value));
  if (!m_bHasTables) return ERROR_NOT_READY;
  m_Report.heard.push_back(heard);
  Walk(&SimDriverTable::CheckSlots, "behind a notification");
  const auto table = Copy();
  if (known && table) Use(*table, heard.device);
  return ERROR_SUCCESS;
}

// The status word tells the engine that the driver knows the adapter as it is now.
void SimDriver::Use(const SimDriverTable& table, DWORD device) {
  if (device != kAll) {
    Expect(table.InUse(device),
           "a notification is of slot " + std::to_string(device) + ", which is free");
  }
  if (!m_Report.started) return;
  for (std::size_t i = 0; i < SimDriverTable::kSlots; ++i) {
    if ((device != kAll && device != i) || !table.InUse(i)) continue;
    const bool steered =
        table.IsUp(i) && table.IsManaged(i) && table.GatewayOf(i) != SimDriverTable::kNone;
    m.heap.Write(m_Table + SimDriverTable::StatusAt(i), kKnown | (steered ? kSteered : 0));
  }
}

// Nothing when the engine has taken its memory back, as it does with a driver that did not hear the
// stop.
std::optional<SimDriverTable> SimDriver::Copy() {
  std::vector<std::uint32_t> words(SimDriverTable::WordsToCopy());
  if (m.heap.Read(m_Table, &words)) return SimDriverTable(std::move(words));
  Forget();
  return std::nullopt;
}

void SimDriver::Walk(Check check, const char* when) {
  if (!m_bHasTables) return;
  const auto table = Copy();
  if (!table) return;
  ++m_Report.walks;
  const std::string torn = ((*table).*check)();
  Expect(torn.empty(), std::string(when) + ", " + torn);
}

void SimDriver::Forget() {
  m_bHasTables = false;
  m_Report.started = false;
  m_Report.command = m_Report.mode = 0;
}

}  // namespace corvane::platform::sim
