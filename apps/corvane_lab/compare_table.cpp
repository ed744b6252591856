#include "corvane_lab/compare_table.h"

#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>

#include <algorithm>
#include <map>

#include "foundation/format.h"

namespace corvane::lab {

namespace {

constexpr double kHour = 3600.0;

const PolicyResult* Find(const WorldResult& result, const std::string& policy) {
  const auto found = std::ranges::find(result.policies, policy, &PolicyResult::name);
  return found == result.policies.end() ? nullptr : &*found;
}

void AddTo(PolicySum* sum, const WorldResult& world, const PolicyResult& one, double count) {
  PolicyResult& to = sum->sum;
  if (sum->worstWorld.empty() || one.share[0] < sum->worstRate) {
    sum->worstRate = one.share[0];
    sum->worstWorld = world.world;
  }
  for (std::size_t m = 0; m < to.share.size(); ++m) to.share[m] += one.share[m] / count;
  to.phaseShare += one.phaseShare / count;
  to.disconnectedSeconds += one.disconnectedSeconds;
  to.moves += one.moves;
  to.pingPongs += one.pingPongs;
  to.movesInPhases += one.movesInPhases;
  to.scans += one.scans;
  to.scansInPhases += one.scansInPhases;
}

double HoursOf(const std::vector<WorldResult>& results) {
  double seconds = 0.0;
  for (const WorldResult& result : results) seconds += static_cast<double>(result.seconds);
  return seconds / kHour;
}

int PhasesOf(const std::vector<WorldResult>& results) {
  int phases = 0;
  for (const WorldResult& result : results) phases += result.phases;
  return phases;
}

}  // namespace

std::vector<PolicySum> SumUp(const std::vector<WorldResult>& results) {
  std::vector<PolicySum> sums;
  for (const PolicyResult& policy : results.front().policies) {
    PolicySum& sum = sums.emplace_back();
    sum.sum.name = policy.name;
    sum.sum.phaseShare = 0.0;
    for (const WorldResult& result : results) {
      if (const PolicyResult* one = Find(result, policy.name))
        AddTo(&sum, result, *one, static_cast<double>(results.size()));
    }
    sum.movesPerHour = sum.sum.moves / HoursOf(results);
  }
  return sums;
}

std::string PolicyTable(const std::vector<WorldResult>& results) {
  std::string text =
      FormatA("%u worlds, %.1f hours, %i phases of traffic\n\n", results.size(), HoursOf(results),
              PhasesOf(results)) +
      "                       percent of the oracle's                               ping-        "
      "in traffic\n"
      "policy              rate  worst useful    log  busy  s without  moves   /h  pongs  scans  "
      "scans moves\n";
  for (const PolicySum& one : SumUp(results)) {
    const PolicyResult& sum = one.sum;
    text += FormatA("%-18s %5.1f  %5.1f  %5.1f  %5.1f %5.1f  %9.0f %6i %4.1f %6i %6i %6i %5i\n",
                    sum.name, sum.share[0], one.worstRate, sum.share[1], sum.share[2],
                    sum.phaseShare, sum.disconnectedSeconds, sum.moves, one.movesPerHour,
                    sum.pingPongs, sum.scans, sum.scansInPhases, sum.movesInPhases);
  }
  return text;
}

std::string KindTable(const std::vector<WorldResult>& results) {
  std::vector<std::string> kinds;
  for (const WorldResult& result : results) {
    if (std::ranges::find(kinds, result.kind) == kinds.end()) kinds.push_back(result.kind);
  }
  std::string text = "percent of the oracle's rate / useful rate, by kind\n\nkind          ";
  for (const PolicyResult& policy : results.front().policies)
    text += FormatA("  %15s", policy.name.substr(0, 15));
  for (const std::string& kind : kinds) {
    std::vector<WorldResult> some;
    std::ranges::copy_if(results, std::back_inserter(some),
                         [&](const WorldResult& result) { return result.kind == kind; });
    text += FormatA("\n%-14s", kind);
    for (const PolicySum& one : SumUp(some))
      text += FormatA("  %7.1f / %5.1f", one.sum.share[0], one.sum.share[1]);
  }
  return text + "\n";
}

std::string WorstTable(const std::vector<WorldResult>& results, const std::string& policy,
                       std::size_t count) {
  std::vector<const WorldResult*> order;
  for (const WorldResult& result : results) {
    if (Find(result, policy)) order.push_back(&result);
  }
  std::ranges::stable_sort(
      order, {}, [&](const WorldResult* result) { return Find(*result, policy)->share[0]; });
  order.resize(std::min(order.size(), count));
  std::string text = FormatA("worst worlds of %s\n", policy);
  for (const WorldResult* result : order) {
    const PolicyResult& one = *Find(*result, policy);
    text += FormatA("  %-18s rate %5.1f, useful %5.1f, %4.0f s without a link, %i moves",
                    result->world, one.share[0], one.share[1], one.disconnectedSeconds, one.moves);
    const auto most = std::ranges::max_element(
        one.why, {}, [](const auto& cause) { return cause.second.points; });
    if (most != one.why.end())
      text += FormatA("; %.1f by \"%s\"", most->second.points, most->first);
    text += "\n";
  }
  return text;
}

namespace {

// "on-best, scored-lower" begins with the decision "on-best".
std::string DecisionOf(const std::string& cause) {
  return cause.substr(0, std::min(cause.find(" after "), cause.find(", ")));
}

// The points by the last decision alone, greatest first, in one line.
std::string DecisionLine(const std::map<std::string, double>& points) {
  constexpr double kLeastPoints = 0.2;
  std::vector<std::pair<std::string, double>> order(points.begin(), points.end());
  std::ranges::stable_sort(order, std::greater<>(), [](const auto& row) { return row.second; });
  std::string text;
  for (const auto& [decision, sum] : order) {
    if (sum >= kLeastPoints)
      text += FormatA("%s%s %.1f", text.empty() ? "by decision: " : "; ", decision, sum);
  }
  return text;
}

}  // namespace

std::string WhyTable(const std::vector<WorldResult>& results, const std::string& policy) {
  struct Row {
    double points = 0.0, most = 0.0;
    int seconds = 0, worlds = 0;
    std::string world;
  };
  constexpr double kLeastPoints = 0.05;
  std::map<std::string, Row> rows;
  double all = 0.0;
  for (const WorldResult& result : results) {
    const PolicyResult* one = Find(result, policy);
    if (!one) continue;
    for (const auto& [cause, loss] : one->why) {
      Row& row = rows[cause];
      row.points += loss.points / static_cast<double>(results.size());
      all += loss.points / static_cast<double>(results.size());
      row.seconds += loss.seconds;
      ++row.worlds;
      if (loss.points > row.most) {
        row.most = loss.points;
        row.world = result.world;
      }
    }
  }
  std::vector<std::pair<std::string, Row>> order(rows.begin(), rows.end());
  std::ranges::stable_sort(order, std::greater<>(),
                           [](const auto& row) { return row.second.points; });
  std::map<std::string, double> decisions;
  for (const auto& [cause, row] : order) decisions[DecisionOf(cause)] += row.points;
  std::string text = FormatA(
      "what %s misses: %.1f points of the oracle's rate\n%s\n\npoints  seconds  worlds  cause\n",
      policy, all, DecisionLine(decisions));
  for (const auto& [cause, row] : order) {
    if (row.points < kLeastPoints && row.points > -kLeastPoints) continue;
    text += FormatA("%6.1f  %7i  %6i  %s", row.points, row.seconds, row.worlds, cause);
    if (!row.world.empty()) text += FormatA(" (most in %s: %.1f)", row.world, row.most);
    text += "\n";
  }
  return text;
}

std::string TroubleText(const std::vector<WorldResult>& results) {
  std::string text;
  for (const WorldResult& result : results) {
    for (const PolicyResult& policy : result.policies) {
      if (!policy.trouble.empty())
        text += FormatA("%s, %s: %s\n", result.world, policy.name, policy.trouble);
    }
  }
  return text;
}

std::string SumJson(const std::vector<WorldResult>& results) {
  WorldResult all;
  all.world = all.kind = "all";
  for (const WorldResult& result : results) all.seconds += result.seconds;
  all.phases = PhasesOf(results);
  for (const PolicySum& one : SumUp(results)) all.policies.push_back(one.sum);
  return ToJson(all);
}

}  // namespace corvane::lab
