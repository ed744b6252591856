#include "corvane_lab/pc_trace.h"

#include <algorithm>
#include <utility>

#include "platform/sim/world/world_text.h"

namespace corvane::lab {

using platform::sim::Cause;

std::vector<int> StartOf(const platform::sim::World& world, std::uint64_t seed) {
  const AirTruth air(world, seed);
  std::vector<int> start;
  for (std::size_t i = 0; i < world.adapters.size(); ++i) {
    const auto found = std::ranges::find(world.accessPoints, world.adapters[i].connectedTo,
                                         &platform::sim::AccessPoint::bssid);
    const auto number = static_cast<std::size_t>(found - world.accessPoints.begin());
    const bool on = found != world.accessPoints.end() && air.Dbm(i, number);
    start.push_back(on ? static_cast<int>(number) : kNoLink);
  }
  return start;
}

PcTrace::PcTrace(const platform::sim::World& world, std::uint64_t seed)
    : m_Trace(world.adapters.size()), m_News(world.adapters.size()) {
  for (std::size_t i = 0; i < world.accessPoints.size(); ++i)
    m_Numbers[platform::sim::MacText(world.accessPoints[i].bssid)] = static_cast<int>(i);
  const std::vector<int> start = StartOf(world, seed);
  for (std::size_t i = 0; i < start.size(); ++i) {
    if (start[i] != kNoLink) m_Trace[i].links.push_back({0, start[i]});
  }
}

std::uint64_t PcTrace::Now() const {
  return m_pPc ? static_cast<std::uint64_t>(m_pPc->Now().count()) : 0;
}

int PcTrace::NumberOf(const std::string& bssid) const {
  const auto found = m_Numbers.find(bssid);
  return found == m_Numbers.end() ? kNoLink : found->second;
}

void PcTrace::Change(int adapter, int accessPoint) {
  m_Trace[static_cast<std::size_t>(adapter)].links.push_back({Now(), accessPoint});
}

bool PcTrace::TakeScanEnd(std::size_t adapter) {
  return std::exchange(m_News[adapter].scanEnded, false);
}

int PcTrace::TakeFailure(std::size_t adapter) {
  return std::exchange(m_News[adapter].failed, kNoLink);
}

void PcTrace::OnScanStarted(int adapter, Cause cause, const std::string&) {
  if (cause == Cause::kProgram) m_Trace[static_cast<std::size_t>(adapter)].scans.push_back(Now());
}

void PcTrace::OnScanEnded(int adapter, Cause cause, bool) {
  if (cause == Cause::kProgram) m_News[static_cast<std::size_t>(adapter)].scanEnded = true;
}

void PcTrace::OnConnectEnded(int adapter, Cause cause, const std::string&, const std::string& bssid,
                             platform::DWORD reason) {
  if (reason == 0) {
    Change(adapter, NumberOf(bssid));
  } else if (cause == Cause::kProgram) {
    m_News[static_cast<std::size_t>(adapter)].failed = NumberOf(bssid);
  }
}

void PcTrace::OnDisconnected(int adapter, Cause, const std::string&) { Change(adapter, kNoLink); }

void PcTrace::OnRoamed(int adapter, Cause, const std::string&, const std::string& bssid) {
  Change(adapter, NumberOf(bssid));
}

}  // namespace corvane::lab
