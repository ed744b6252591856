#pragma once
#include <string>

namespace corvane::platform::linux_host {

// The directory that holds what an instance keeps: the registry, the logs and the data. It belongs
// to one instance at a time, as long as this object lives.
class HostHome {
 public:
  // Makes the directory where it is missing. Throws HostError when it cannot be written to, or when
  // another instance has it.
  // With `share` it takes the directory whoever has it, and keeps nobody out.
  explicit HostHome(const std::string& path, bool share = false);
  ~HostHome();
  HostHome(const HostHome&) = delete;
  HostHome& operator=(const HostHome&) = delete;

  const std::string& Path() const { return m_Path; }  // absolute
  std::string RegistryPath() const { return m_Path + "/registry.db"; }

 private:
  std::string m_Path;
  int m_Lock = -1;
};

}  // namespace corvane::platform::linux_host
