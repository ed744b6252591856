#pragma once
#include <map>
#include <memory>
#include <string>
#include <string_view>

struct sqlite3;

namespace corvane::platform::linux_host {

// Reads the registry of a service, running or not, and never writes: the service's own opening sets
// a broken database aside and makes a missing one, which is not a client's to do.
class RegistryReader {
 public:
  // Throws HostError when there is no database that can be read.
  explicit RegistryReader(const std::string& path);

  // The values of a key below HKEY_LOCAL_MACHINE by name, all at one moment: texts in UTF-8,
  // numbers in decimal. Empty when the key is not there. Throws HostError.
  std::map<std::string, std::string> Values(std::string_view key) const;

 private:
  struct Closer {
    void operator()(sqlite3* database) const;
  };
  std::unique_ptr<sqlite3, Closer> m_pDatabase;
};

}  // namespace corvane::platform::linux_host
