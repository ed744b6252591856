#include "pipe/pipe_instance.h"

#include "pipe/named_pipe_listener.h"

namespace corvane {

PipeInstanceCtx::PipeInstanceCtx() : state(std::make_unique<PipeClientState>()) {}  // NOLINT
PipeInstanceCtx::~PipeInstanceCtx() = default;

}  // namespace corvane
