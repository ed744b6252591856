#pragma once
// The engine's debug output: what it does with its driver and its tables, for whoever looks for a
// fault. SvcLib_TraceEnabled among the engine's settings turns it on; it goes to the log of the
// program that links the engine, as information and past that log's debug gates.
//
//   LB_TRACE(state, u"handshake: answer=%lu", record.answer);

#include "engine/engine_state.h"
#include "foundation/log_lines.h"

#define LB_TRACE(state, ...)                                      \
  do {                                                            \
    if ((state).IsTracing()) LOG_INFO(u"LBEngine: " __VA_ARGS__); \
  } while (0)
