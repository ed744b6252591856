#include "any_host/user_proxy.h"

#include <stdlib.h>

namespace corvane::test {

struct UserProxy::Settings {};

UserProxy::UserProxy() { Set("", ""); }
UserProxy::~UserProxy() { Set("", ""); }

void UserProxy::Set(const std::string& proxy, const std::string& bypass) {
  setenv("http_proxy", proxy.c_str(), 1);
  setenv("https_proxy", "", 1);
  setenv("no_proxy", bypass.c_str(), 1);
}

}  // namespace corvane::test
