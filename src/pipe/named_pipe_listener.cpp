#include "pipe/named_pipe_listener.h"

#include <algorithm>
#include <cstring>
#include <new>
#include <utility>

#include "foundation/guarded.h"
#include "foundation/log_lines.h"
#include "pipe/csec.h"
#include "pipe/null_session_pipes.h"
#include "platform/platform.h"
#include "platform/session_api.h"
#include "platform/thread_api.h"

namespace corvane {

using namespace platform;

namespace {

constexpr char kClass[] = "CNamedPipeListener";
constexpr DWORD kDefaultTimeoutMs = 5000;
constexpr int kFalseSignalsIgnored = 20;
constexpr std::uint32_t kStopMs = 2000;
constexpr std::uint32_t kUnwindMs = 1000;
constexpr std::uint32_t kUnwindStepMs = 10;
constexpr std::uint32_t kDestructorMs = 1000;

bool IsValid(HANDLE handle) {
  return handle != nullptr && handle != reinterpret_cast<HANDLE>(~std::uintptr_t{0});
}

// Tells, however the thread's body is left, that it is.
class InsideMark {
 public:
  explicit InsideMark(std::atomic<bool>* mark) : m_pMark(mark) { *m_pMark = true; }
  ~InsideMark() { *m_pMark = false; }
  InsideMark(const InsideMark&) = delete;
  InsideMark& operator=(const InsideMark&) = delete;

 private:
  std::atomic<bool>* m_pMark;
};

void FreeRecord(PipeInstanceCtx* record) {
  record->~PipeInstanceCtx();
  GiveBack(kClass, "GlobalFree", [record] { Os().pipes.GlobalFree(record); });
}

PipeInstanceCtx* RecordOf(OVERLAPPED* overlapped) {
  return static_cast<PipeInstanceCtx*>(overlapped);
}

}  // namespace

CNamedPipeListener::CNamedPipeListener()
    : SmartObjEx("pipe listener"), CThread("pipe listener"), m_PipePath(u"\\\\.\\pipe\\") {}

CNamedPipeListener::~CNamedPipeListener() {
  LOG_DEBUG(DBG(5), u"CNamedPipeListener::~CNamedPipeListener() <------------============]]] 0x%p",
            this);
  m_pConnectEvent.reset();
  StopThread(kDestructorMs);
  CloseWaitingInstance();
  for (PipeInstanceCtx* record : m_LeftRecords) FreeRecord(record);
}

void CNamedPipeListener::Initialize(const char16_t* name, bool notification) {
  if (name) {
    m_PipeName = name;
    m_PipePath += name;
  }
  m_bNotification = notification;
  m_pConnectEvent.CreateObject();
  m_pConnectEvent->SetDebugName("NamedPipeListener Connect Event");
  m_pConnectEvent->SetEvent();
  m_pConnectEvent->ResetEvent();
  m_Overlapped_Connect.hEvent = m_pConnectEvent->GetEventHandle();
}

void CNamedPipeListener::SetTrace(bool waits, bool messages) {
  m_bTraceWait = waits;
  m_bTraceMessages = messages;
}

void CNamedPipeListener::RunThreadLoop() {
  const InsideMark mark(&m_bThreadInside);
  ContainedAt("CNamedPipeListener::RunThreadLoop", [this] {
    // Shutdown lets the event go while a thread that was given up may still wait on it.
    const auto connectEvent = m_pConnectEvent;
    if (!connectEvent) throw Exception("CNamedPipeListener::RunThreadLoop: not initialized");
    Guarded(kClass, "RunThreadLoop", false, [&] {
      StartServer(*connectEvent);
      return true;
    });
  });
}

void CNamedPipeListener::StartServer(CWinEvent& connectEvent) {
  const HANDLE event = connectEvent.GetEventHandle();
  bool isConnectPending = CreateAndConnectInstance(connectEvent);
  int falseSignals = 0;
  while (m_bRun) {
    const DWORD result = Os().pipes.WaitForMultipleObjectsEx(1, &event, TRUE, INFINITE, TRUE);
    if (m_bTraceWait) LOG_INFO(u"CNamedPipeListener:StartServer() - wait: %lu", result);
    if (result == WAIT_IO_COMPLETION) continue;
    if (result != WAIT_OBJECT_0) {
      const DWORD code = Os().threads.GetLastError();
      LOG_ERROR(u"CNamedPipeListener:StartServer() - WaitForSingleObjectEx failed: %lu", code);
      throw Exception("CNamedPipeListener::StartServer: WaitForSingleObjectEx failed %u", code);
    }
    // Without a pending connect the client was there before it was waited for.
    if (isConnectPending && !IsConnectComplete(connectEvent, &falseSignals)) continue;
    TakeClient();
    isConnectPending = CreateAndConnectInstance(connectEvent);
    falseSignals = 0;
  }
}

// False when the event was signalled for nothing, which a few times in a row is put up with.
bool CNamedPipeListener::IsConnectComplete(CWinEvent& connectEvent, int* falseSignals) {
  DWORD transferred = 0;
  if (Os().pipes.GetOverlappedResult(m_hPipe, &m_Overlapped_Connect, &transferred, FALSE))
    return true;
  const DWORD code = Os().threads.GetLastError();
  if (code != ERROR_IO_INCOMPLETE) {
    LOG_ERROR(u"CNamedPipeListener:StartServer: GetOverlappedResult() failed: %lu", code);
    throw Exception("CNamedPipeListener::StartServer: GetOverlappedResult() failed %u", code);
  }
  ++*falseSignals;
  LOG_ERROR(
      u"CNamedPipeListener:StartServer: GetOverlappedResult() failed[ERROR_IO_INCOMPLETE]: %lu, "
      u"falseSignalCounter=%i, go back and wait !!!",
      code, *falseSignals);
  if (*falseSignals > kFalseSignalsIgnored) {
    LOG_INFO(
        u"CNamedPipeListener:StartServer: [ERROR_IO_INCOMPLETE]: ___FORCE EVENT RESET___ "
        u"falseSignalCounter=%i",
        *falseSignals);
    connectEvent.ResetEvent();
    *falseSignals = 0;
  }
  return false;
}

// The instance that waited has a client.
void CNamedPipeListener::TakeClient() {
  void* const memory = Os().pipes.GlobalAlloc(sizeof(PipeInstanceCtx));
  if (!memory) {
    const DWORD code = Os().threads.GetLastError();
    LOG_ERROR(u"CNamedPipeListener:StartServer() - GlobalAlloc failed: %lu", code);
    throw Exception("CNamedPipeListener::StartServer: GlobalAlloc failed %u", code);
  }
  auto* const record = new (memory) PipeInstanceCtx;
  record->hPipeInst = std::exchange(m_hPipe, nullptr);
  record->owner = this;
  record->NOTIFICATION = m_bNotification;
  {
    const CCritSecLock lock(ObjectLock());
    m_mapPipeInstanceCtxs[record] = true;
  }
  // A new client is one whose last answer, of no bytes, is just written.
  record->cbToWrite = 0;
  CompletedWriteRoutine(ERROR_SUCCESS, 0, record);
}

bool CNamedPipeListener::CreateAndConnectInstance(CWinEvent& connectEvent) {
  connectEvent.ResetEvent();  // by the client before; without an instance nobody else would
  EnsureNullSessionPipe(m_PipeName);
  const auto security = CSEC::CreateObject();
  CloseWaitingInstance();
  if (const SECURITY_ATTRIBUTES* const attributes = security->GetAttributes()) {
    m_hPipe = Os().pipes.CreateNamedPipeW(
        m_PipePath.c_str(), PIPE_ACCESS_DUPLEX | FILE_FLAG_OVERLAPPED,
        PIPE_TYPE_MESSAGE | PIPE_READMODE_MESSAGE | PIPE_WAIT, PIPE_UNLIMITED_INSTANCES, kPipeBytes,
        kPipeBytes, kDefaultTimeoutMs, attributes);
  }
  if (!IsValid(m_hPipe)) {
    LOG_ERROR(u"CNamedPipeListener:CreateAndConnectInstance() - CreateNamedPipe() failed: %lu",
              Os().threads.GetLastError());
    return false;
  }
  ++m_CreateCounter;
  LOG_DEBUG(DBG(5), u"CNamedPipeListener:CreateAndConnectInstance() - [%s] instance %llu",
            m_PipeName, m_CreateCounter);
  return ConnectToNewClient(connectEvent);
}

bool CNamedPipeListener::ConnectToNewClient(CWinEvent& connectEvent) {
  if (!IsValid(m_hPipe))
    throw Exception("CNamedPipeListener::ConnectToNewClient() - m_hPipe is invalid");
  const BOOL connected = Os().pipes.ConnectNamedPipe(m_hPipe, &m_Overlapped_Connect);
  const DWORD code = Os().threads.GetLastError();
  if (connected) {
    LOG_ERROR(
        u"CNamedPipeListener:ConnectToNewClient() - [fConnected is true] ConnectNamedPipe() error, "
        u"le=%lu",
        code);
    return false;
  }
  if (code == ERROR_IO_PENDING) return true;
  if (code == ERROR_PIPE_CONNECTED) {
    LOG_INFO(u"CNamedPipeListener:ConnectToNewClient() - ERROR_PIPE_CONNECTED");
    connectEvent.SetEvent();
    return false;
  }
  LOG_ERROR(u"CNamedPipeListener:ConnectToNewClient() - ConnectNamedPipe() failed: %lu", code);
  return false;
}

void CNamedPipeListener::CompletedWriteRoutine(DWORD error, DWORD written, OVERLAPPED* overlapped) {
  PipeInstanceCtx* const record = RecordOf(overlapped);
  const CSmartPointer<CNamedPipeListener> owner = record->owner;
  owner->NoteWritten(*record);
  if (error != ERROR_SUCCESS || written != record->cbToWrite) {
    LOG_INFO(u"CompletedWriteRoutine: not reading pipe.  dwErr %lu != 0, or %lu != %lu", error,
             written, record->cbToWrite);
  } else if (owner->StartRead(*record)) {
    return;
  }
  DisconnectAndClose(record);
}

bool CNamedPipeListener::StartRead(PipeInstanceCtx& record) {
  std::memset(record.request, 0, std::exchange(record.state->requestBytes, 0));
  return Guarded(kClass, "ReadFileEx", FALSE, [&] {
           return Os().pipes.ReadFileEx(record.hPipeInst, record.request, kPipeBytes, &record,
                                        &CompletedReadRoutine);
         }) != FALSE;
}

void CNamedPipeListener::CompletedReadRoutine(DWORD error, DWORD read, OVERLAPPED* overlapped) {
  PipeInstanceCtx* const record = RecordOf(overlapped);
  const CSmartPointer<CNamedPipeListener> owner = record->owner;
  if (error == ERROR_SUCCESS && read != 0) {
    record->state->requestBytes = std::min(read, kPipeBytes);
    if (owner->Answer(*record)) return;
    LOG_INFO(u"\nCompletedReadRoutine() GetAnswerToRequest() returned %i [FAILED!]", 0);
  } else {
    LOG_INFO(
        u"CNamedPipeListener::CompletedReadRoutine() NOT calling GetAnswerToRequest(), dwErr=%lu, "
        u"cbBytesRead=%lu",
        error, read);
  }
  DisconnectAndClose(record);
}

// What goes wrong here costs this one client.
bool CNamedPipeListener::Answer(PipeInstanceCtx& record) {
  try {
    return Guarded(kClass, "GetAnswerToRequest", false, [&] {
      GetAnswerToRequest(record);
      return StartWrite(record);
    });
  } catch (const std::exception& e) {
    LOG_ERROR(u"CNamedPipeListener::Answer: std:exception: %S", e.what());
    return false;
  }
}

bool CNamedPipeListener::StartWrite(PipeInstanceCtx& record) {
  const BOOL started = Guarded(kClass, "WriteFileEx", FALSE, [&] {
    return Os().pipes.WriteFileEx(
        record.hPipeInst, record.reply, record.cbToWrite, &record,
        record.NOTIFICATION ? &CompletedWriteRoutine_Notification : &CompletedWriteRoutine);
  });
  if (!started) return false;
  record.state->writing = true;
  ++m_WritesInFlight;
  return true;
}

void CNamedPipeListener::NoteWritten(PipeInstanceCtx& record) {
  if (std::exchange(record.state->writing, false)) --m_WritesInFlight;
}

// A subscriber is written to only, so nothing is read.
void CNamedPipeListener::CompletedWriteRoutine_Notification(DWORD error, DWORD written,
                                                            OVERLAPPED* overlapped) {
  PipeInstanceCtx* const record = RecordOf(overlapped);
  const CSmartPointer<CNamedPipeListener> owner = record->owner;
  owner->NoteWritten(*record);
  if (error != ERROR_SUCCESS || written != record->cbToWrite) {
    LOG_INFO(u"CompletedWriteRoutine_Notification: [DISCONNECTING] dwErr %lu != 0, or %lu != %lu",
             error, written, record->cbToWrite);
    DisconnectAndClose(record);
  }
  if (owner->m_WritesInFlight == 0) owner->OnAllWritten();
}

void CNamedPipeListener::GetAnswerToRequest(PipeInstanceCtx& record) {
  const WStringView buffer(record.request, kPipeUnits);
  const WStringView request = buffer.substr(0, buffer.find(u'\0'));
  const WString reply = RespondToPipeMessage(request, record);
  if (m_bTraceMessages) LOG_INFO(u"CNamedPipeListener: [%s] -> [%s]", request, reply);
  PutReply(record, reply);
}

void CNamedPipeListener::PutReply(PipeInstanceCtx& record, WStringView text) {
  std::memset(record.reply, 0, record.state->replyBytes);
  const WStringView fits = text.substr(0, kPipeUnits - 1);
  std::copy(fits.begin(), fits.end(), record.reply);
  record.cbToWrite = static_cast<DWORD>((fits.size() + 1) * sizeof(char16_t));
  record.state->replyBytes = record.cbToWrite;
}

WString CNamedPipeListener::RespondToPipeMessage(WStringView request, PipeInstanceCtx&) {
  WString reply = u"ECHO Server Got:\r\n";
  reply += request;
  return reply + u"\r\nEOR\r\n";
}

void CNamedPipeListener::DisconnectAndClose(PipeInstanceCtx* record) {
  if (!record) {
    LOG_ERROR(u"CNamedPipeListener:DisconnectAndClose() - lpPipeInst is NULL!");
    return;
  }
  const CSmartPointer<CNamedPipeListener> owner = record->owner;
  if (!owner) return;  // the stop has closed it
  auto& pipes = Os().pipes;
  const BOOL disconnected = Guarded(kClass, "DisconnectNamedPipe", FALSE,
                                    [&] { return pipes.DisconnectNamedPipe(record->hPipeInst); });
  if (!disconnected) {
    LOG_INFO(u"CNamedPipeListener:DisconnectAndClose() - DisconnectNamedPipe() failed: %lu",
             Os().threads.GetLastError());
  }
  owner->Forget(record);
  Guarded(kClass, "CloseHandle", FALSE, [&] { return pipes.CloseHandle(record->hPipeInst); });
  record->hPipeInst = nullptr;
  record->owner.reset();
  if (owner->m_bThreadLingers) {
    owner->m_LeftRecords.push_back(record);
  } else {
    FreeRecord(record);
  }
}

void CNamedPipeListener::Forget(PipeInstanceCtx* record) {
  NoteWritten(*record);
  const CCritSecLock lock(ObjectLock());
  m_mapPipeInstanceCtxs.erase(record);
}

void CNamedPipeListener::CloseWaitingInstance() {
  const HANDLE pipe = std::exchange(m_hPipe, nullptr);
  if (IsValid(pipe)) GiveBack(kClass, "CloseHandle", [pipe] { Os().pipes.CloseHandle(pipe); });
}

// A thread that was given up goes at its next call of the platform, which a lock may put off.
void CNamedPipeListener::AwaitUnwinding() {
  for (std::uint32_t ms = 0; m_bThreadInside && ms < kUnwindMs; ms += kUnwindStepMs)
    Os().threads.Sleep(kUnwindStepMs);
  m_bThreadLingers = m_bThreadInside;
}

// The thread sleeps without a limit, and only a client wakes it: mostly it has to be given up.
void CNamedPipeListener::Shutdown() {
  if (!StopThread(kStopMs)) AwaitUnwinding();
  m_pConnectEvent.reset();
  const CCritSecLock lock(ObjectLock());
  LOG_INFO(u"CNamedPipeListener::Shutdown:[%s] m_mapPipeInstanceCtxs.size() = %zu\n", m_PipeName,
           m_mapPipeInstanceCtxs.size());
  while (!m_mapPipeInstanceCtxs.empty()) DisconnectAndClose(m_mapPipeInstanceCtxs.begin()->first);
  CloseWaitingInstance();
}

}  // namespace corvane
