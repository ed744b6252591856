#pragma once
// Delivery of a prepared statistics text.

#include <string>

#include "foundation/text.h"

namespace corvane {

// Whether the status line and headers of a response hold "200 OK". Pure.
bool IsGoodAnswer(WStringView responseHeaders);

// Posts the bytes, which have to be a multipart body with the boundary of the request's headers, to
// the statistics endpoint. True when the server answered "200 OK". An answer of 401 turns posting
// off until a client turns it on.
bool ProxySend(const std::string& body, bool bProxyFound);

// The whole file; false when it can't be opened or read, or holds more than is ever posted.
inline constexpr std::size_t kMaxPostFile = 64 * 1024 * 1024;
bool ReadFileToString(const WString& path, std::string* text);

}  // namespace corvane
