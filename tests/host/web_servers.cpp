#include "host/web_servers.h"

#include <arpa/inet.h>
#include <fcntl.h>
#include <netinet/in.h>
#include <poll.h>
#include <signal.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <fstream>
#include <sstream>
#include <stdexcept>

namespace corvane::test {

namespace {

sockaddr_in Loopback(int port) {
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  address.sin_port = htons(static_cast<std::uint16_t>(port));
  return address;
}

int Listen(int* port) {
  const int listener = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
  sockaddr_in address = Loopback(0);
  socklen_t size = sizeof address;
  if (bind(listener, reinterpret_cast<sockaddr*>(&address), size) != 0 || listen(listener, 16) != 0)
    throw std::runtime_error("no port to listen on");
  getsockname(listener, reinterpret_cast<sockaddr*>(&address), &size);
  *port = ntohs(address.sin_port);
  return listener;
}

std::string ContentOf(const std::string& file) {
  std::ostringstream text;
  text << std::ifstream(file, std::ios::binary).rdbuf();
  return text.str();
}

void RunToEnd(const std::string& command) {
  if (std::system(command.c_str()) != 0) throw std::runtime_error("failed: " + command);
}

std::string WithPort(std::string text, int port) {
  constexpr std::string_view kPlace = "@PLAIN@";
  for (std::size_t at = 0; (at = text.find(kPlace)) != text.npos;)
    text.replace(at, kPlace.size(), std::to_string(port));
  return text;
}

}  // namespace

int FreePort() {
  int port = 0;
  close(Listen(&port));
  return port;
}

bool AwaitPort(int port) {
  for (int i = 0; i < 500; ++i) {
    const int client = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    const sockaddr_in address = Loopback(port);
    const bool open =
        connect(client, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0;
    close(client);
    if (open) return true;
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
  }
  return false;
}

ServerProcess::ServerProcess(const std::vector<std::string>& command, const std::string& outputFile)
    : m_Process(fork()) {
  if (m_Process < 0) throw std::runtime_error("no process for a server");
  if (m_Process > 0) return;
  const int output = open(outputFile.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
  dup2(output, STDOUT_FILENO);
  dup2(output, STDERR_FILENO);
  std::vector<std::string> words = command;
  std::vector<char*> argv;
  for (std::string& word : words) argv.push_back(word.data());
  argv.push_back(nullptr);
  execvp(argv[0], argv.data());
  _exit(127);
}

ServerProcess::~ServerProcess() {
  kill(m_Process, SIGTERM);
  for (int i = 0; i < 200; ++i) {
    if (waitpid(m_Process, nullptr, WNOHANG) == m_Process) return;
    std::this_thread::sleep_for(std::chrono::milliseconds(10));
  }
  kill(m_Process, SIGKILL);
  waitpid(m_Process, nullptr, 0);
}

Nginx::Nginx(const std::string& directory, const std::string& plain, const std::string& secure)
    : m_Directory(directory), m_Plain(FreePort()), m_Secure(FreePort()) {
  RunToEnd("openssl req -x509 -newkey rsa:2048 -nodes -days 2 -subj /CN=other.example -keyout " +
           directory + "/key.pem -out " + directory + "/cert.pem 2>/dev/null");
  std::ofstream(directory + "/nginx.conf")
      << "daemon off; master_process off; worker_processes 1; pid " << directory << "/pid;\n"
      << "error_log " << directory << "/error.log; events {}\n"
      << "http { log_format short '$request_method $request_uri $status $request_length';\n"
      << "access_log " << directory << "/access.log short; client_max_body_size 64m;\n"
      << "client_body_temp_path " << directory << "/b; proxy_temp_path " << directory << "/p;\n"
      << "fastcgi_temp_path " << directory << "/f; uwsgi_temp_path " << directory << "/u;\n"
      << "scgi_temp_path " << directory << "/s; default_type text/plain;\n"
      << "server { listen 127.0.0.1:" << m_Plain << ";\n"
      << plain << "}\n"
      << "server { listen 127.0.0.1:" << m_Secure << " ssl; ssl_certificate " << directory
      << "/cert.pem; ssl_certificate_key " << directory << "/key.pem;\n"
      << WithPort(secure, m_Plain) << "}\n}\n";
  const char* program = access("/usr/sbin/nginx", X_OK) == 0 ? "/usr/sbin/nginx" : "nginx";
  m_pServer = std::make_unique<ServerProcess>(
      std::vector<std::string>{program, "-p", directory, "-c", directory + "/nginx.conf", "-e",
                               directory + "/error.log"},
      directory + "/nginx.out");
  if (!AwaitPort(m_Plain) || !AwaitPort(m_Secure))
    throw std::runtime_error("nginx does not start: " + ContentOf(directory + "/error.log") +
                             ContentOf(directory + "/nginx.out"));
}

std::string Nginx::Log() const { return ContentOf(m_Directory + "/access.log"); }

TinyProxy::TinyProxy(const std::string& directory, const std::string& credentials,
                     const std::string& known, int knownPort)
    : m_Directory(directory), m_Port(FreePort()) {
  std::ofstream config(directory + "/tinyproxy.conf");
  config << "Port " << m_Port << "\nListen 127.0.0.1\nTimeout 60\nAllow 127.0.0.1\nLogFile \""
         << directory << "/tinyproxy.log\"\nLogLevel Connect\nMaxClients 20\n";
  if (!credentials.empty()) config << "BasicAuth " << credentials << "\n";
  if (!known.empty()) config << "Upstream http 127.0.0.1:" << knownPort << " \"" << known << "\"\n";
  config.close();
  m_pServer = std::make_unique<ServerProcess>(
      std::vector<std::string>{"tinyproxy", "-d", "-c", directory + "/tinyproxy.conf"},
      directory + "/tinyproxy.out");
  if (!AwaitPort(m_Port))
    throw std::runtime_error("tinyproxy does not start: " +
                             ContentOf(directory + "/tinyproxy.out"));
}

std::string TinyProxy::Log() const {
  return ContentOf(m_Directory + "/tinyproxy.log") + ContentOf(m_Directory + "/tinyproxy.out");
}

RawServer::RawServer(std::function<void(int socket)> serve)
    : m_Port(0), m_hListen(Listen(&m_Port)) {
  m_Thread = std::thread([listener = m_hListen, serve = std::move(serve)] {
    for (;;) {
      const int client = accept4(listener, nullptr, nullptr, SOCK_CLOEXEC);
      if (client < 0) return;
      serve(client);
      close(client);
    }
  });
}

RawServer::~RawServer() {
  shutdown(m_hListen, SHUT_RDWR);
  m_Thread.join();
  close(m_hListen);
}

std::string RawServer::ReadHead(int socket) {
  std::string text;
  char byte = 0;
  while (!text.ends_with("\r\n\r\n") && recv(socket, &byte, 1, 0) == 1) text += byte;
  return text;
}

bool RawServer::Write(int socket, const std::string& text) {
  std::size_t sent = 0;
  while (sent < text.size()) {
    const ssize_t count = send(socket, text.data() + sent, text.size() - sent, MSG_NOSIGNAL);
    if (count <= 0) return false;
    sent += static_cast<std::size_t>(count);
  }
  return true;
}

void RawServer::Hold(int socket) {
  constexpr int kDeafMs = 500, kMostMs = 30'000;
  pollfd wait{socket, POLLRDHUP, 0};
  poll(&wait, 1, kDeafMs);
  // The end of the other side stands behind all that it has sent.
  const timeval limit{kMostMs / 1000, 0};
  setsockopt(socket, SOL_SOCKET, SO_RCVTIMEO, &limit, sizeof limit);
  char piece[65536];
  while (recv(socket, piece, sizeof piece, 0) > 0) {
  }
}

}  // namespace corvane::test
