#include "platform/sim/kernel/fault_plan.h"

#include <algorithm>
#include <array>
#include <string>
#include <string_view>
#include <vector>

#include "platform/sim/kernel/seeded_random.h"

namespace corvane::platform::sim {

namespace {

constexpr double kSeldom = 100.0;  // as much more seldom

// Never failed at random: the program cannot answer their failure, and the run itself would fall
// with it. A handle that is not closed is a leak, and a thread that is not given up goes on in an
// object that its owner deletes. (Sleep, locks and the clock have no result, so they are not asked
// about.)
bool IsSparedAtRandom(std::string_view operation) {
  return operation.find("Close") != operation.npos || operation == "TerminateThread" ||
         operation == "BCryptDestroyKey";
}

// After a failure of these a pipe takes no client any more, as long as the program runs: at the
// full rate none would be served in a run with faults.
bool IsSeldomAtRandom(std::string_view operation) {
  static constexpr std::array<std::string_view, 10> kNames = {
      "WaitForMultipleObjectsEx",
      "GetOverlappedResult",
      "CreateNamedPipeW",
      "ConnectNamedPipe",
      "GlobalAlloc",
      "OpenThreadToken",
      "OpenProcessToken",
      "GetTokenUser",
      "ConvertSidToStringSidW",
      "ConvertStringSecurityDescriptorToSecurityDescriptorW"};
  return std::ranges::find(kNames, operation) != kNames.end();
}

}  // namespace

struct FaultPlan::Impl {
  struct Rule {
    std::string operation;
    DWORD code = 0;
    std::uint64_t call = 0;  // calls still to come up to the failing one; 0: not by count
    std::uint64_t fromMs = 0;
    std::uint64_t toMs = ~std::uint64_t{0};
    bool spent = false;
  };

  // Rules by count see every call of their operation, also one that an earlier rule decides.
  static bool Fires(Rule& rule, std::uint64_t nowMs) {
    if (rule.spent) return false;
    if (rule.call == 0) return nowMs >= rule.fromMs && nowMs < rule.toMs;
    if (--rule.call > 0) return false;
    rule.spent = true;
    return true;
  }

  std::vector<Rule> rules;
  double rate = 0.0;
  SeededRandom random{0};
  std::uint64_t injected = 0;
};

FaultPlan::FaultPlan() : m_pImpl(std::make_unique<Impl>()) {}
FaultPlan::~FaultPlan() = default;

void FaultPlan::FailCall(const char* operation, std::uint64_t n, DWORD code) {
  if (n > 0) m_pImpl->rules.push_back({.operation = operation, .code = code, .call = n});
}

void FaultPlan::FailDuring(const char* operation, std::uint64_t fromMs, std::uint64_t toMs,
                           DWORD code) {
  m_pImpl->rules.push_back({.operation = operation, .code = code, .fromMs = fromMs, .toMs = toMs});
}

void FaultPlan::FailAlways(const char* operation, DWORD code) {
  m_pImpl->rules.push_back({.operation = operation, .code = code});
}

void FaultPlan::FailRandomly(double rate, std::uint64_t seed) {
  m_pImpl->rate = rate;
  m_pImpl->random = SeededRandom(seed);
}

void FaultPlan::Clear() {
  m_pImpl->rules.clear();
  m_pImpl->rate = 0.0;
}

DWORD FaultPlan::Decide(const char* operation, DWORD ordinary, std::uint64_t nowMs, bool atRandom) {
  Impl& plan = *m_pImpl;
  DWORD code = 0;
  for (Impl::Rule& rule : plan.rules) {
    if (rule.operation == operation && Impl::Fires(rule, nowMs) && code == 0) code = rule.code;
  }
  if (code == 0 && atRandom && plan.rate > 0.0) {
    const double drawn = plan.random.Unit();
    const bool fails = drawn < plan.rate && !IsSparedAtRandom(operation) &&
                       (drawn < plan.rate / kSeldom || !IsSeldomAtRandom(operation));
    if (fails) code = ordinary;
  }
  if (code != 0) ++plan.injected;
  return code;
}

std::uint64_t FaultPlan::Injected() const { return m_pImpl->injected; }

}  // namespace corvane::platform::sim
