#pragma once
// What the platform knows of an adapter, asked call by call. All throw Exception with the
// platform's code on failure.

#include "wlan/adapter_identity.h"

namespace corvane {

std::uint32_t QueryNumber(const AdapterIdentity& adapter, std::int32_t opcode);
std::int32_t QueryState(const AdapterIdentity& adapter);        // WLAN_INTERFACE_STATE
std::int32_t QueryStateForLog(const AdapterIdentity& adapter);  // the same; -1 on failure
void QueryRadio(const AdapterIdentity& adapter, platform::WLAN_RADIO_STATE* state);
// A disconnected adapter answers it by a failure, too.
void QueryConnection(const AdapterIdentity& adapter, platform::WLAN_CONNECTION_ATTRIBUTES* attrs);
platform::WLAN_INTERFACE_CAPABILITY QueryCapability(const AdapterIdentity& adapter);

}  // namespace corvane
