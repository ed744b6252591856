#pragma once
// The parts of the table.

#include <span>

#include "store/value_table.h"

namespace corvane {

std::span<const ValueRow> HomeValues();
std::span<const ValueRow> AdapterValues();
std::span<const ValueRow> EngineValues();

}  // namespace corvane
