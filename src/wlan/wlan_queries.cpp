#include "wlan/wlan_queries.h"

#include <cstring>

#include "foundation/log_lines.h"
#include "platform/platform.h"
#include "platform/wlan_api.h"
#include "wlan/wlan_buffer.h"
#include "wlan/wlan_call.h"

namespace corvane {

namespace {

using namespace platform;

DWORD Query(const AdapterIdentity& adapter, std::int32_t opcode, DWORD* size, void** data) {
  constexpr LONG kValueType = 3;
  LONG valueType = kValueType;
  const auto client = adapter.Client();
  try {
    return Os().wlan.WlanQueryInterface(client.Handle(), &adapter.Guid(), opcode, nullptr, size,
                                        data, &valueType);
  } catch (const PlatformFault& fault) {
    LOG_ERROR(
        u"[%i]CWlanInterface::QueryWlanInterface_ForStructType: WlanQueryInterface(opcode=%lu): "
        u"EXCEPTION: "
        u"0x%08x",
        adapter.Idx(), opcode, fault.code);
    throw Exception("WlanQueryInterface(opcode=%lu) - EXCEPTION: %i", opcode, fault.code);
  }
}

template <typename T>
void QueryStruct(const AdapterIdentity& adapter, std::int32_t opcode, T* out) {
  DWORD size = 0;
  WlanBuffer<void> data;
  const DWORD result = Query(adapter, opcode, &size, data.Out());
  const bool ofConnection = opcode == wlan_intf_opcode_current_connection;
  if (result != ERROR_SUCCESS) {
    // A disconnected adapter answers its connection query so: no failure worth a line.
    if (!ofConnection || result != ERROR_INVALID_STATE) {
      LOG_ERROR(
          u"[%i] CWlanInterface::QueryWlanInterface_ForStructType: WlanQueryInterface(opCode=%i) "
          u"failed - "
          u"rc=%lu\n",
          adapter.Idx(), opcode, result);
    }
    if (ofConnection) {
      throw Exception("WlanQueryInterface(...wlan_intf_opcode_current_connection...) failed: %i",
                      result);
    }
    throw Exception("WlanQueryInterface(%lu) failed: %i", opcode, result);
  }
  if (size < sizeof(T) || !data) {
    LOG_ERROR(u"[%i] CWlanInterface::CurrentConnection(opCode=%i): dwDataSize < %lu\n",
              adapter.Idx(), opcode, sizeof(T));
    throw Exception("WlanQueryInterface(%lu) dwDataSize < %lu", opcode, sizeof(T));
  }
  std::memcpy(out, data.get(), sizeof(T));
}

}  // namespace

std::uint32_t QueryNumber(const AdapterIdentity& adapter, std::int32_t opcode) {
  DWORD size = 0;
  WlanBuffer<void> data;
  const DWORD result = Query(adapter, opcode, &size, data.Out());
  if (result != ERROR_SUCCESS) {
    LOG_ERROR(
        u"[%i] CWlanInterface::QueryWlanInterface_ForInt: WlanQueryInterface(opCode=%i) failed - "
        u"rc=%lu\n",
        adapter.Idx(), opcode, result);
    throw Exception("WlanQueryInterface(%d) failed: %i", opcode, result);
  }
  std::uint32_t number = 0;
  if (size < sizeof(number) || !data) {
    LOG_ERROR(u"[%i] CWlanInterface::QueryWlanInterface_ForInt: dwDataSize < %lu\n", adapter.Idx(),
              sizeof(number));
    throw Exception("WlanQueryInterface(%d) dwDataSize < %i", opcode, sizeof(number));
  }
  std::memcpy(&number, data.get(), sizeof(number));
  return number;
}

std::int32_t QueryState(const AdapterIdentity& adapter) {
  return static_cast<std::int32_t>(QueryNumber(adapter, wlan_intf_opcode_interface_state));
}

std::int32_t QueryStateForLog(const AdapterIdentity& adapter) {
  try {
    return QueryState(adapter);
  } catch (const std::exception&) {
    return -1;
  }
}

void QueryRadio(const AdapterIdentity& adapter, WLAN_RADIO_STATE* state) {
  QueryStruct(adapter, wlan_intf_opcode_radio_state, state);
}

void QueryConnection(const AdapterIdentity& adapter, WLAN_CONNECTION_ATTRIBUTES* attrs) {
  QueryStruct(adapter, wlan_intf_opcode_current_connection, attrs);
}

WLAN_INTERFACE_CAPABILITY QueryCapability(const AdapterIdentity& adapter) {
  const auto client = adapter.Client();
  WlanBuffer<WLAN_INTERFACE_CAPABILITY> capability;
  DWORD result = CodeOfCall("CWlanInterface", "WlanGetInterfaceCapability", [&] {
    return Os().wlan.WlanGetInterfaceCapability(client.Handle(), &adapter.Guid(), nullptr,
                                                capability.Out());
  });
  if (result == ERROR_SUCCESS && !capability) result = ERROR_GEN_FAILURE;
  if (result == ERROR_SUCCESS) return *capability.get();
  LOG_ERROR(
      u"[%i] CWlanInterface::WlanInterfaceCapability: WlanGetInterfaceCapability failed - "
      u"rc=%lu%s\n",
      adapter.Idx(), result,
      result == ERROR_NOT_FOUND ? u" [ERROR_NOT_FOUND - adapter removed?]" : u"");
  throw Exception("WlanGetInterfaceCapability() failed: %i", result);
}

}  // namespace corvane
