#pragma once
// Real servers on the loopback, each a process of the test.

#include <sys/types.h>

#include <chrono>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

namespace corvane::test {

// A program that runs as long as the object.
class ServerProcess {
 public:
  ServerProcess(const std::vector<std::string>& command, const std::string& outputFile);
  ~ServerProcess();  // ends it
  ServerProcess(const ServerProcess&) = delete;
  ServerProcess& operator=(const ServerProcess&) = delete;

 private:
  pid_t m_Process;
};

// A port that is free now.
int FreePort();
// Whether a port of the loopback takes connections within a few seconds.
bool AwaitPort(int port);

// nginx with a configuration of the test's: `plain` and `secure` are what stands in the server
// blocks of its two ports, "@PLAIN@" for the number of the first; the certificate is signed by
// itself.
class Nginx {
 public:
  Nginx(const std::string& directory, const std::string& plain, const std::string& secure);
  int PlainPort() const { return m_Plain; }
  int SecurePort() const { return m_Secure; }
  // The requests so far: method, address, status and length, one a line.
  std::string Log() const;

 private:
  std::string m_Directory;
  int m_Plain, m_Secure;
  std::unique_ptr<ServerProcess> m_pServer;
};

// tinyproxy, which lets everything through; what it is asked for on host `known` it gets from that
// port of the loopback.
class TinyProxy {
 public:
  TinyProxy(const std::string& directory, const std::string& credentials = {},
            const std::string& known = {}, int knownPort = 0);
  int Port() const { return m_Port; }
  std::string Log() const;

 private:
  std::string m_Directory;
  int m_Port;
  std::unique_ptr<ServerProcess> m_pServer;
};

// A server that does to each connection what the test says; the function gets the socket.
class RawServer {
 public:
  explicit RawServer(std::function<void(int socket)> serve);
  ~RawServer();
  int Port() const { return m_Port; }

  static std::string ReadHead(int socket);  // up to the empty line
  static bool Write(int socket, const std::string& text);
  // Hears nothing for half a second, and then waits until the other side hangs up.
  static void Hold(int socket);

 private:
  int m_Port;
  int m_hListen;
  std::thread m_Thread;
};

}  // namespace corvane::test
