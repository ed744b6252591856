#pragma once
#include "foundation/smart_obj.h"
#include "foundation/text.h"
#include "store/score_weights.h"

namespace corvane {

// The weights of one adapter, changeable by a JSON text.
class CScoreConfig : public SmartObjEx<CScoreConfig, SmartObj<>> {
 public:
  const char* GetClassName() const override { return "CScoreConfig"; }

  // Takes over what the JSON object names, such as {"SQMax":40}; true when a weight changed. A text
  // that does not parse is reported on the error stream and changes nothing.
  [[nodiscard]] bool Initialize(WStringView json);
  ScoreWeights Get() const;

 private:
  std::atomic<std::uint32_t> m_Weights[7] = {20, 30, 1, 5,
                                             5,  10, 10};  // in the order of ScoreWeights
};

}  // namespace corvane
