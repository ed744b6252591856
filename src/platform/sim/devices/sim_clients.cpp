#include "platform/sim/devices/sim_clients.h"

#include <algorithm>
#include <utility>

#include "platform/sim/devices/pc_observer.h"
#include "platform/sim/kernel/sim_crypto.h"
#include "platform/sim/kernel/sim_session.h"
#include "platform/sim/kernel/sim_text.h"
#include "platform/sim/world/world_text.h"

namespace corvane::platform::sim {

namespace {

constexpr std::uint64_t kPollMs = 1000;
constexpr std::uint64_t kTryAgainMs = 100;
constexpr int kTries = 50;
constexpr std::size_t kMostWaiting = 100;  // requests for a pipe that nobody serves
constexpr char kSubscribe[] = R"({"cmd":"Subscribe"})";

}  // namespace

SimClients::Run::Run(SimPipes& pipes, DWORD theProcessId, std::string theSession)
    : processId(theProcessId),
      session(std::move(theSession)),
      requests(pipes, theProcessId, u"TRLSPipe"),
      events(pipes, theProcessId, u"TRLSPipe_N") {}

SimClients::SimClients(SimMachine& machine, SimPipes* pipes, SimSession* session)
    : m_Machine(machine), m_pPipes(pipes), m_pSession(session) {
  if (!pipes || !session) return;
  for (const Client& client : machine.world.clients) m_Clients.push_back({client});
}

void SimClients::Boot() {
  for (One& one : m_Clients) Start(one);
}

// A session of its own for each run: another process may not go on with it.
void SimClients::Start(One& one) {
  one.run = std::make_unique<Run>(*m_pPipes, m_pSession->StartProcess(one.data.program),
                                  one.data.name + " " + std::to_string(++m_Sessions));
}

void SimClients::Carry(const ClientAction& action) {
  Act(action);
  if (action.everyMs != 0) Repeat(action);
}

void SimClients::Repeat(const ClientAction& action) {
  m_Machine.loop.In(action.everyMs, [this, action] {
    Act(action);
    Repeat(action);
  });
}

void SimClients::Act(const ClientAction& action) {
  const auto found = std::ranges::find(
      m_Clients, action.client, [](const One& one) -> const std::string& { return one.data.name; });
  if (found == m_Clients.end()) return;
  One& one = *found;
  if (!m_pSession->IsRunning(one.run->processId)) Start(one);
  Run& run = *one.run;
  switch (action.act) {
    case ClientAct::kConnect:
      Reach(one, &Run::requests);
      break;
    case ClientAct::kSend:
      if (run.requests.toSend.size() < kMostWaiting) run.requests.toSend.push_back(action);
      Reach(one, &Run::requests);
      break;
    case ClientAct::kSubscribe:
      Subscribe(one);
      break;
    case ClientAct::kStall:
    case ClientAct::kRead:
      for (Line* line : {&run.requests, &run.events}) {
        line->end.Stall(action.act == ClientAct::kStall);
      }
      break;
    case ClientAct::kVanish:
      for (Line* line : {&run.requests, &run.events}) Leave(*line);
      break;
  }
}

// A subscriber's second message would never be read.
void SimClients::Subscribe(One& one) {
  Line& events = one.run->events;
  if (!events.end.IsBroken()) return;
  events.toSend.assign(1, {.client = one.data.name,
                           .act = ClientAct::kSubscribe,
                           .message = kSubscribe,
                           .withToken = false});
  Reach(one, &Run::events);
}

// Whoever comes back reads.
void SimClients::Leave(Line& line) {
  line.end.Vanish();
  line.end.Stall(false);
  line.toSend.clear();
  line.triesLeft = 0;
}

void SimClients::Reach(One& one, Line Run::*which) {
  (one.run.get()->*which).triesLeft = kTries;
  TryToReach(one, which);
}

void SimClients::TryToReach(One& one, Line Run::*which) {
  Line& line = one.run.get()->*which;
  if (!line.end.IsBroken() || line.end.Connect(line.name)) {
    Flush(one, line);
  } else if (line.triesLeft > 0 && !line.tryIsDue) {
    --line.triesLeft;
    line.tryIsDue = true;
    // The run may be another one by then, which is as good.
    m_Machine.loop.In(kTryAgainMs, [this, &one, which] {
      Line& later = one.run.get()->*which;
      later.tryIsDue = false;
      if (later.triesLeft > 0) TryToReach(one, which);
    });
  }
}

void SimClients::Flush(One& one, Line& line) {
  for (const ClientAction& action : std::exchange(line.toSend, {})) {
    const std::string text =
        action.withToken ? WithToken(*one.run, action.message) : action.message;
    line.end.Send(FromUtf8(text));
  }
  if (m_bPolling) return;
  m_bPolling = true;
  m_Machine.loop.In(kPollMs, [this] { Poll(); });
}

std::string SimClients::WithToken(Run& run, const std::string& request) {
  const std::string plain = run.session + "," + std::to_string(run.processId) + "," +
                            std::to_string(++run.nonce) + ",world";
  const std::string rest = request.substr(1);  // behind the brace
  return "{\"art\":\"" + SimCrypto::EncryptToken(plain) + "\"" + (rest == "}" ? "" : ",") + rest;
}

// Reads what has come, and goes on as long as somebody is connected.
void SimClients::Poll() {
  bool connected = false;
  for (One& one : m_Clients) {
    const bool alive = m_pSession->IsRunning(one.run->processId);
    for (Line* line : {&one.run->requests, &one.run->events}) {
      ReadAll(one, *line);
      if (!alive) Leave(*line);
      connected = connected || !line->end.IsBroken();
    }
  }
  m_bPolling = connected;
  if (connected) m_Machine.loop.In(kPollMs, [this] { Poll(); });
}

void SimClients::ReadAll(const One& one, Line& line) {
  while (const auto text = line.end.Receive()) {
    m_Machine.loop.Tell([client = one.data.name, message = ToUtf8(*text)](IPcObserver& observer) {
      observer.OnClientMessage(client, message);
    });
  }
}

}  // namespace corvane::platform::sim
