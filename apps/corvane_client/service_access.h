#pragma once
#include <map>
#include <memory>
#include <optional>
#include <string>

namespace corvane::client {

using Values = std::map<std::string, std::string>;  // of a key of the registry, by name

// What --home names on this host, as the help tells it.
extern const char* const kHomeHelp;

// The events of a service, from the moment on at which this was made.
class IEventSource {
 public:
  virtual ~IEventSource() = default;
  // Waits up to `ms` for the next event, one JSON object. None when there is none in that time, or
  // on Ctrl-C. Throws ClientError when the service has gone.
  virtual std::optional<std::string> Next(int ms) = 0;
};

// A service as its clients see it. Operations throw ClientError (kNoService) without one.
class IServiceAccess {
 public:
  virtual ~IServiceAccess() = default;
  // Sends a JSON object, to which the proof of who asks is added, and gives the reply.
  virtual std::string Ask(const std::string& request) = 0;
  virtual std::unique_ptr<IEventSource> Subscribe() = 0;
  // Values of the service's home key, or of an adapter's key by its GUID.
  virtual Values Settings(const std::string& adapterGuid = {}) = 0;
  virtual void CheckIsServed() = 0;  // throws when nobody serves the pipes
  // The folder of the service's program, without a separator at its end. Throws ClientError
  // (kRefused) where this account is not told.
  virtual std::string ProgramFolder() = 0;
  // The folder that the service keeps its files in, likewise. Asks nobody.
  virtual std::string DataFolder() = 0;
  virtual void Sleep(int ms) = 0;
  virtual bool IsInterrupted() = 0;
};

}  // namespace corvane::client
