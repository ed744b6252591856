#pragma once

namespace corvane {

// For a result that must be looked at elsewhere, where nothing can be done about a failure: it has
// been logged, and what it concerns goes on.
inline void Ignored(bool) {}

}  // namespace corvane
