#pragma once
// Replies of the service, in words. Pure.

#include <cstdint>
#include <string>

namespace corvane::client {

// What a code of the service means, a phrase in lower case.
std::string CodeMeaning(std::uint32_t code);

struct ServiceReply {
  bool understood = false;  // whether the text has a status and a code
  bool ok = false;
  std::uint32_t code = 0;
  std::string reason;  // of a refused connect
};
// A reply that came cut, as long ones do, still has its status and code.
ServiceReply ReadReply(const std::string& text);

// Throws ClientError (kRefused) with code and meaning unless the reply is a success.
void CheckReply(const std::string& text);

}  // namespace corvane::client
