#pragma once
#include <cstdint>
#include <vector>

#include "pipe/named_pipe_listener_notifications_json.h"
#include "service/command_line.h"
#include "service/main_worker.h"

namespace corvane {

// The service: start-up, the loop over passes, the main loop, and the stop order. Runs on one
// thread, the main thread, which supervises the adapters' workers.
class Service {
 public:
  explicit Service(const CommandLine& options);
  int Run();

 private:
  void StartLog();
  void StartUp();
  bool StartSockets();
  void RunPasses();  // the outer loop
  bool RunPass();    // false: without an adapter, nothing to shut down
  void RunWithAdapters(int count);
  void StartWorkers(int count);
  void EnsurePipes();
  void RunMainLoop();
  bool RunMainRound();  // false ends the pass
  void FollowRecording();
  void ShutDownWorkers();
  void ShutDown();
  void ReadDebugValues();
  void RefreshUser();  // the logged-on user's environment
  void RunPilot();
  void OpenSurvey(WStringView flag, WStringView page);
  void CountBoot();
  void RestartWorkers();
  bool HasNLM();  // makes the network list; false while the system has none
  void RefreshNLM();
  void SaveTelemetry();
  void EndCompanions();
  void ReportLeaks();
  bool KeyWaits();

  const CommandLine m_Options;
  bool m_bSockets = false;  // were started
  bool m_bQuit = false;
  bool m_bFirstPass = true;
  bool m_bHomeKeyCreated = false;  // by this process; so it stays for its whole life
  std::vector<CSmartPointer<CQUAYMainWorker>> m_Workers;
  // Made once, so that clients stay connected from one pass to the next; null before.
  CSmartPointer<CNamedPipeListenerJson> m_pJsonPipe;
  CSmartPointer<CNamedPipeListenerNotificationsJson> m_pNotifyPipe;
};

}  // namespace corvane
