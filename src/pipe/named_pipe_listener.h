#pragma once
#include <atomic>
#include <cstdint>
#include <map>
#include <vector>

#include "foundation/thread.h"
#include "foundation/win_event.h"
#include "pipe/pipe_instance.h"

namespace corvane {

// Serves one named pipe: accepts clients, reads a message, has it answered, writes the answer. One
// thread does all of it, one step at a time, so a slow answer holds up every client of the pipe.
//
// The object lock guards the map of clients. It is not held while a message is answered.
class CNamedPipeListener : public SmartObjEx<CNamedPipeListener, SmartObj<>>,
                           public CThread<CNamedPipeListener> {
 public:
  CNamedPipeListener();
  ~CNamedPipeListener() override;
  const char* GetClassName() const override { return "CNamedPipeListener"; }

  // Before the thread starts; throws Exception. `name` is the short one; null leaves it as it is.
  // On a notification pipe a client gets one message read, and from then on only receives.
  void Initialize(const char16_t* name, bool notification);
  // Lines in the log around each wait, and of each message and its answer; off at the start.
  void SetTrace(bool waits, bool messages);
  void RunThreadLoop();
  // On the main thread: ends the thread within 2,000 ms or gives it up, then closes every client.
  void Shutdown();
  // Ends one client; its record is gone afterwards.
  static void DisconnectAndClose(PipeInstanceCtx* record);

  // Puts the answer to the message of the record into its reply buffer, cut where it is too long.
  virtual void GetAnswerToRequest(PipeInstanceCtx& record);
  virtual WString RespondToPipeMessage(WStringView request, PipeInstanceCtx& record);

 protected:
  using ClientMap = std::map<PipeInstanceCtx*, bool>;  // always true: what is there exists

  // What is in the reply buffer, to the client. False when the write does not start.
  bool StartWrite(PipeInstanceCtx& record);
  // Writes whose completion routines have yet to run. On the listener's thread.
  std::uint32_t WritesInFlight() const { return m_WritesInFlight; }
  // The last of them has run; on the listener's thread.
  virtual void OnAllWritten() {}
  static void PutReply(PipeInstanceCtx& record, WStringView text);

  ClientMap m_mapPipeInstanceCtxs;  // under the object lock

 private:
  static void CompletedReadRoutine(platform::DWORD error, platform::DWORD read,
                                   platform::OVERLAPPED* overlapped);
  static void CompletedWriteRoutine(platform::DWORD error, platform::DWORD written,
                                    platform::OVERLAPPED* overlapped);
  static void CompletedWriteRoutine_Notification(platform::DWORD error, platform::DWORD written,
                                                 platform::OVERLAPPED* overlapped);

  void StartServer(CWinEvent& connectEvent);
  bool IsConnectComplete(CWinEvent& connectEvent, int* falseSignals);
  void TakeClient();
  bool CreateAndConnectInstance(CWinEvent& connectEvent);  // true: a connect is pending
  bool ConnectToNewClient(CWinEvent& connectEvent);        // true: a connect is pending
  bool StartRead(PipeInstanceCtx& record);
  bool Answer(PipeInstanceCtx& record);
  void NoteWritten(PipeInstanceCtx& record);
  void Forget(PipeInstanceCtx* record);
  void CloseWaitingInstance();
  void AwaitUnwinding();

  WString m_PipeName;
  WString m_PipePath;
  platform::HANDLE m_hPipe = nullptr;  // the instance that waits for a client
  bool m_bNotification = false;
  CSmartPointer<CWinEvent> m_pConnectEvent;
  platform::OVERLAPPED m_Overlapped_Connect;
  std::atomic<bool> m_bTraceWait{false};
  std::atomic<bool> m_bTraceMessages{false};
  std::uint64_t m_CreateCounter = 0;
  std::uint32_t m_WritesInFlight = 0;
  std::atomic<bool> m_bThreadInside{false};
  // The thread was given up and may still touch its records: they stay until it has let the
  // listener go.
  bool m_bThreadLingers = false;
  std::vector<PipeInstanceCtx*> m_LeftRecords;
};

}  // namespace corvane
