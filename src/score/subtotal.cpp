#include "score/subtotal.h"

#include <algorithm>
#include <cmath>

#include "foundation/invariant.h"
#include "score/network_facts.h"
#include "score/score_terms.h"
#include "score/text_builder.h"

namespace corvane {

namespace {

constexpr std::int32_t kRatePointsMax = 30;

std::int32_t Trunc(double value) {
  return static_cast<std::int32_t>(std::clamp(value, -2.1e9, 2.1e9));
}

struct SecurityStep {
  std::uint32_t bit;
  std::string_view text;
  std::int32_t points;
};
constexpr SecurityStep kSecuritySteps[] = {
    {0x80, ",SEC(11)", 11}, {0x40, ",SEC(8)", 8}, {0x20, ",SEC(5)", 5}, {0x08, ",SEC(9)", 9},
    {0x04, ",SEC(6)", 6},   {0x02, ",SEC(3)", 3}, {0x10, ",SEC(2)", 0}, {0x01, ",SEC(1)", 0},
};

class Subtotal {
 public:
  Subtotal(const SubtotalInputs& in, std::string* log) : m_In(in), m_Log(log) {
    m_Result.internet = in.internet;
  }

  SubtotalResult Run() {
    PickQuality();
    if (m_In.worth) {
      AddWorth();
      AddPrivate();
      AddSecurity();
    } else {
      AddRadioTerms();
    }
    AddAllow();
    TakeInternet();
    m_Log << ",SUBTOTAL(" << m_Sum << ")";
    m_Result.points = m_Sum;
    return m_Result;
  }

 private:
  void PickQuality() {
    m_Quality = m_In.quality;
    if (m_In.pegQuality > m_Quality) m_Result.peggedQuality = m_Quality = m_In.pegQuality;
  }

  void AddWorth() {
    m_Sum += m_In.worth->points;
    m_Result.loadPoints = 0;
    m_Log << "WORTH(" << m_In.worth->points << "/" << m_In.worth->mbps << ")";
  }

  void AddRadioTerms() {
    AddSignal();
    AddPrivate();
    AddGeneration();
    AddSecurity();
    if (m_In.radio) {
      AddMuMimo();
      AddRate();
      AddLoad();
      AddNoise();
    } else {
      m_Log << ",MUMIMO(0)"
            << ",MBPS(0)"
            << ",QBSS(0)"
            << ",NOISE(0)";
    }
    TakeWeakSignal();
  }

  void AddSignal() {
    const std::int32_t max = WeightPoints(m_In.weights.SQMax);
    const std::int32_t points =
        m_Quality > 50 ? std::min(Trunc((m_Quality - kGoodQuality) / 50.0 * max), max) : 0;
    m_Sum += points;
    m_Log << "SIGQ(" << points << "/" << m_In.weights.SQMax << ")";
  }

  void AddPrivate() {
    const std::int32_t points = m_In.network.isPrivate ? WeightPoints(m_In.weights.PNMax) : 0;
    m_Sum += points;
    m_Log << ",PRIV(" << points << ")";
  }

  void AddGeneration() {
    if (!m_In.radio) return;
    const auto add = [this](bool present, std::string_view text) {
      if (!present) return;
      m_Sum += kGenerationPoints;
      m_Log << text;
    };
    add(m_In.radio->htPresent, ",N(5)");
    add(m_In.radio->vhtPresent, ",AC(5)");
    add(m_In.radio->heCapsGood, ",AX(5)");
  }

  void AddSecurity() {
    const std::uint32_t mask = m_In.radio ? m_In.radio->securityMask : 0;
    for (const SecurityStep& step : kSecuritySteps) {
      if ((mask & step.bit) == 0) continue;
      m_Sum += step.points;
      m_Log << step.text;
      return;
    }
    m_Log << ",SEC(0)";
  }

  void AddMuMimo() {
    const std::int32_t points = m_In.radio->muMimo ? WeightPoints(m_In.weights.MUMIMOMax) : 0;
    m_Sum += points;
    m_Log << ",MUMIMO(" << points << ")";
  }

  void AddRate() {
    const double rate = m_In.radio->maxRateMbps;
    const double bump = WeightPoints(m_In.weights.MBPSBumpMax);
    const double first = rate >= 1000 ? 2 * bump : std::round(rate / 1000.0 * 2 * bump);
    const double beyond = rate > 1000 ? std::round((rate - 1000.0) / 1000.0 * bump) : 0;
    const std::int32_t points = Trunc(std::min(first + beyond, double{kRatePointsMax}));
    m_Sum += points;
    m_Log << ",MBPS(" << points << "/" << m_In.radio->maxRateMbps << ")";
  }

  void AddLoad() {
    const double load = std::min(100.0, m_In.radio->loadPct);
    if (!(load >= 0.0)) {
      m_Log << ",QBSS(0)";
      return;
    }
    const std::int32_t points =
        Trunc((100.0 - load) / 100.0 * WeightPoints(m_In.weights.QBSSBumpMax));
    m_Sum += points;
    m_Result.loadPoints = points;
    m_Log << ",QBSS(" << points << "/" << Trunc(load) << ")";
  }

  void AddNoise() {
    if (m_In.radio->loadMapValid && m_In.radio->quietChannel) {
      m_Sum += WeightPoints(m_In.weights.NOISEMax);
      m_Log << ",NOISE(10)";  // the word stands whatever the weight
    } else {
      m_Log << ",NOISE(0)";
    }
  }

  void TakeWeakSignal() {
    const std::int32_t points = std::min(WeakSignalPoints(m_Quality), m_Sum);
    m_Sum -= points;
    if (points != 0) {
      m_Log << ",NEG_SIGQ(-" << points << ")";
    } else {
      m_Log << ",NEG_SIGQ(0)";
    }
  }

  void AddAllow() {
    const std::int32_t points = m_In.allowed ? WeightPoints(m_In.allowBonus) : 0;
    m_Sum += points;
    m_Log << ",ALLOW(" << points << ")";
  }

  void TakeNoInternetPoints() {
    const std::int32_t points = WeightPoints(m_In.weights.Internet);
    m_Sum = m_Sum > points ? m_Sum - points : 0;
  }

  void TakeInternet() {
    InternetState& state = m_Result.internet;
    const std::uint32_t flags = m_In.network.connectivity;
    const std::uint32_t weight = m_In.weights.Internet;
    if (!m_In.network.connectivityKnown) {
      m_Log << ",INTERNET(0/NO_NLM)";
      state.internet = state.latch = true;
    } else if ((flags & kConnectivityInternet) != 0) {
      m_Log << ",INTERNET(0)";
      state.known = state.internet = state.latch = true;
    } else if ((flags & kConnectivityNoInternet) != 0) {
      state.internet = state.latch = false;
      state.known = true;
      if (m_In.vpnFound) {
        state.vpnMuted = true;
        m_Log << ",INTERNET(0/VPN_MUTED)";
      } else {
        TakeNoInternetPoints();
        m_Log << ",INTERNET(-" << weight << ")";
      }
    } else if (flags != 0) {
      m_Log << ",INTERNET(0/CONNECTIVITY " << flags << ")";
    } else {
      state.internet = false;
      if (state.vpnMuted) {
        m_Log << ",INTERNET(0/DISCON-VPN_MUTED)";
      } else if (state.latch) {
        m_Log << ",INTERNET(0/DISCON)";
      } else {
        TakeNoInternetPoints();
        m_Log << ",INTERNET(-" << weight << "/DISCON)";
      }
    }
  }

  const SubtotalInputs& m_In;
  TextBuilder m_Log;
  SubtotalResult m_Result;
  std::uint32_t m_Quality = 0;
  std::int32_t m_Sum = 0;
};

}  // namespace

SubtotalResult ComputeSubtotal(const SubtotalInputs& in, std::string* log) {
  if (log) log->clear();
  const SubtotalResult result = Subtotal(in, log).Run();
  Invariant(result.points >= 0, "a score is not below 0");
  return result;
}

}  // namespace corvane
