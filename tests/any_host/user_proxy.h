#pragma once
#include <memory>
#include <string>

namespace corvane::test {

// The proxy of the user that this process runs as, for plain addresses; none at the end.
class UserProxy {
 public:
  UserProxy();
  ~UserProxy();
  UserProxy(const UserProxy&) = delete;
  UserProxy& operator=(const UserProxy&) = delete;

  // The host reads it when it starts. `bypass` is a host that is reached without it.
  void Set(const std::string& proxy, const std::string& bypass);

 private:
  struct Settings;
  std::unique_ptr<Settings> m_pSettings;
};

}  // namespace corvane::test
