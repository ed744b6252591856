#pragma once
#include <string>
#include <vector>

#include "platform/registry_api.h"

namespace corvane::platform::linux_host {

class SqliteStatement;

// A value of the registry as its typed bytes.
struct RegistryValue {
  DWORD type = 0;
  std::vector<BYTE> data;
};

// 'REG_SZ' and its like; the decimal number for a type without a name here.
std::string RegistryTypeName(DWORD type);
// Binds the value's form in the database, see SqliteRegistry. `data` stays in place until Reset.
void BindRegistryValue(SqliteStatement& statement, int parameter, DWORD type, const BYTE* data,
                       DWORD size);
// Reads a row of (type, value). A number out of its type's range reads as eight bytes, as somebody
// wrote it who did not know better.
RegistryValue ReadRegistryValue(const SqliteStatement& statement);

}  // namespace corvane::platform::linux_host
