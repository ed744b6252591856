#include "store/process_flags.h"

namespace corvane {

std::atomic<bool> g_bVPNFound{false};

}  // namespace corvane
