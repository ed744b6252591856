#pragma once
#include <deque>
#include <memory>
#include <string>
#include <vector>

#include "platform/sim/devices/sim_machine.h"
#include "platform/sim/kernel/sim_pipes.h"

namespace corvane::platform::sim {

class SimSession;

// The clients of the world, each a process of the session with an end at both pipes. A pipe that
// nobody serves at the moment is tried again for a while, and what was to be sent waits for it.
// What a client reads goes to the observer. Under the devices' lock.
class SimClients {
 public:
  // Without pipes or without a session the clients do nothing.
  SimClients(SimMachine& machine, SimPipes* pipes, SimSession* session);

  void Boot();  // starts the clients' processes
  void Carry(const ClientAction& action);

 private:
  // An end at one of the pipes.
  struct Line {
    Line(SimPipes& pipes, DWORD processId, const char16_t* name)
        : end(pipes, processId), name(name) {}
    SimPipeClient end;
    const char16_t* name;
    std::deque<ClientAction> toSend;
    int triesLeft = 0;
    bool tryIsDue = false;
  };
  // A client while its process lives.
  struct Run {
    Run(SimPipes& pipes, DWORD processId, std::string session);
    const DWORD processId;
    const std::string session;  // in the token
    std::uint64_t nonce = 0;
    Line requests;
    Line events;
  };
  struct One {
    Client data;
    std::unique_ptr<Run> run = {};
  };

  void Start(One& one);
  void Act(const ClientAction& action);
  void Repeat(const ClientAction& action);
  void Subscribe(One& one);
  static void Leave(Line& line);
  void Reach(One& one, Line Run::*which);
  void TryToReach(One& one, Line Run::*which);
  void Flush(One& one, Line& line);
  static std::string WithToken(Run& run, const std::string& request);
  void Poll();
  void ReadAll(const One& one, Line& line);

  SimMachine& m_Machine;
  SimPipes* const m_pPipes;
  SimSession* const m_pSession;
  std::vector<One> m_Clients;
  std::uint64_t m_Sessions = 0;  // begun so far, of all clients
  bool m_bPolling = false;
};

}  // namespace corvane::platform::sim
