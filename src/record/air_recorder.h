#pragma once
#include <atomic>
#include <cstdint>
#include <deque>
#include <map>
#include <optional>
#include <string>

#include "foundation/crit_sec.h"
#include "foundation/singleton.h"
#include "foundation/thread.h"
#include "foundation/win_event.h"
#include "policy/round_watch.h"
#include "record/air_facts.h"
#include "record/recording_file.h"
#include "record/recording_writer.h"
#include "wlan/air_watch.h"

namespace corvane {

// Writes what the adapters hear, and what is decided upon it, to a file that the laboratory can
// replay. Rounds only copy what they know into a queue of limited size; a thread of its own does
// the rest. What finds no room there is left out, and the recording says so.
class CAirRecorder final : public CThread<CAirRecorder>, public IRoundWatch, public IAirWatch {
 public:
  // Made before the first worker starts; null before. Lives for the process.
  static CAirRecorder& GetInstance() { return Singleton<CAirRecorder>::GetInstance(); }
  static CAirRecorder* Find() { return Singleton<CAirRecorder>::Find(); }

  // The main thread: records into the service's folder, at most that many million bytes; 0 ends it.
  // Costs a comparison when nothing has changed.
  void Follow(std::uint32_t megabytes);
  void Stop() { Follow(0); }
  // Any thread. A request as a client sent it, checked; without what is secret in it.
  void NoteOrder(std::string text);
  bool IsOn() const { return m_bOn; }

  void OnLists(int adapter, bool scanned, const AirInputs& now) override;
  void OnOperation(int adapter, WlanOperation kind, bool ended) override;
  void OnOutside(int adapter, OutsideEvent event, WStringView ssid) override;
  void OnRoundBegins(int adapter, const CWlanInterface& wlan) override;
  void OnCandidates(const Round& round) override;
  void OnStanding(int adapter, CWlanBssEntry& entry, CandidateStanding standing) override;
  void OnStep(int adapter, RoundStep step, CWlanBssEntry* about) override;
  void OnRoundEnds(int adapter) override;

  void RunThreadLoop();

 private:
  friend class Singleton<CAirRecorder>;
  CAirRecorder();
  ~CAirRecorder();

  // The present round of an adapter, on its worker.
  struct Present {
    const CWlanInterface* wlan = nullptr;
    bool hasCandidates = false;
    std::uint64_t beganTick = 0;
    std::uint64_t operationTick = 0;  // at which the last operation began
    RoundFacts facts;
  };

  void End();
  CSmartPointer<CWinEvent> Wake();
  Present& Of(int adapter);
  void Put(AirFact fact);

  void WriteQueue();
  bool Ready(std::uint64_t tick);
  void Begin(std::uint64_t tick);
  // Writes what `lines` gives, in another file if this one is full.
  template <class Lines>
  void Write(std::uint64_t tick, Lines lines);
  void LookAtSettings(std::uint64_t tick);
  bool NoteFailure(const char* what);  // always false

  const std::uint64_t m_StartTick;  // of the service
  std::atomic<bool> m_bOn{false};
  std::uint32_t m_Megabytes = 0;  // in force; of the main thread, as the next
  bool m_bGivenUp = false;        // the thread did not end in time, so there is none any more
  CCritSec m_QueueLock{"recording", LockRank::kLeaf};
  CSmartPointer<CWinEvent> m_pWake;  // under m_QueueLock, with the three below
  std::deque<AirFact> m_Queue;
  std::size_t m_QueueBytes = 0;
  std::uint64_t m_Lost = 0;  // facts that found no room
  CCritSec m_PresentLock{"recorded rounds", LockRank::kLeaf};
  std::map<int, Present> m_Present;  // by adapter; each is its worker's own, the map is not

  // Of the thread.
  std::optional<RecordingFile> m_File;
  RecordingWriter m_Writer;
  bool m_bBegun = false;        // a run, in whatever file
  bool m_bFailureTold = false;  // to the log, until something is written again
  std::optional<std::uint64_t> m_SettingsTick;
  std::map<int, RecordedValues> m_Settings;
};

}  // namespace corvane
