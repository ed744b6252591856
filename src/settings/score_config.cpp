#include "settings/score_config.h"

#include <rapidjson/error/en.h>

#include "foundation/guarded.h"
#include "foundation/log_lines.h"
#include "platform/console_api.h"
#include "platform/platform.h"
#include "store/json_text.h"

namespace corvane {

namespace {

constexpr const char* kKeys[] = {"Internet",    "SQMax",       "PNMax",   "MUMIMOMax",
                                 "MBPSBumpMax", "QBSSBumpMax", "NOISEMax"};

}  // namespace

bool CScoreConfig::Initialize(WStringView json) {
  bool changed = false;
  ContainedAt("CScoreConfig::Initialize", [&] {
    rapidjson::Document document;
    const std::string text = WideToUtf8(json);
    ParseJson(text, &document);
    if (document.HasParseError()) {
      Os().console.WriteError(FormatA("\nCScoreConfig::Initialize: Error(offset %u): %s\n",
                                      document.GetErrorOffset(),
                                      rapidjson::GetParseError_En(document.GetParseError())));
    }
    if (document.HasParseError() || !document.IsObject()) return;
    const rapidjson::Value& weights = document;
    for (std::size_t i = 0; i < std::size(kKeys); ++i) {
      const auto member = weights.FindMember(kKeys[i]);
      if (member == weights.MemberEnd() || !member->value.IsUint()) continue;
      if (m_Weights[i].exchange(member->value.GetUint()) != member->value.GetUint()) changed = true;
    }
  });
  return changed;
}

ScoreWeights CScoreConfig::Get() const {
  return {m_Weights[0], m_Weights[1], m_Weights[2], m_Weights[3],
          m_Weights[4], m_Weights[5], m_Weights[6]};
}

}  // namespace corvane
