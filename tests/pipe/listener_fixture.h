#pragma once
// The two listeners on their threads, and clients at the other ends of their pipes.

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "foundation/log_lines.h"
#include "notify/notification_manager.h"
#include "pipe/api_session_security_singleton.h"
#include "pipe/named_pipe_listener_notifications_json.h"
#include "platform/sim/kernel/fault_plan.h"
#include "platform/sim/kernel/sim_console.h"
#include "platform/sim/kernel/sim_crypto.h"
#include "platform/sim/kernel/sim_pipes.h"
#include "platform/sim/kernel/sim_registry.h"
#include "platform/sim/kernel/sim_session.h"
#include "settings/global_config_container.h"
#include "support/pc_fixture.h"

namespace corvane::test {

class ListenerTest : public KernelTest {
 protected:
  using Client = platform::sim::SimPipeClient;

  ListenerTest() { pid = kernel.Session().StartProcess(u"Corvane_ConfigApp.exe"); }
  void TearDown() override {
    clients.clear();
    if (notifications) {
      CNotificationManagerSingleton::GetInstance().Shutdown(1000);
      notifications->Shutdown();
      notifications.reset();
    }
    if (listener) {
      listener->Shutdown();
      listener.reset();
    }
    KernelTest::TearDown();
  }

  // A listener on "TRLSPipe"; the base answers by an echo.
  template <class Listener = CNamedPipeListener>
  void Serve() {
    CSmartPointer<Listener> made;
    made.CreateObject();
    listener = CSmartPointer<CNamedPipeListener>(made.get());
    listener->Initialize(u"TRLSPipe", false);
    ASSERT_EQ(listener->BeginThread(), 0);
    RunFor(10ms);
  }
  // The notification pipe, and the thread that delivers to it.
  void ServeNotifications() {
    notifications.CreateObject();
    notifications->Initialize(u"TRLSPipe_N", true);
    ASSERT_EQ(notifications->BeginThread(), 0);
    auto& manager = CNotificationManagerSingleton::GetInstance();
    manager.AddProvider(notifications.get());
    ASSERT_EQ(manager.BeginThread(), 0);
    RunFor(10ms);
  }
  // A client that is connected; it lives until the test ends.
  Client& Connect(WStringView name = u"TRLSPipe") {
    clients.push_back(std::make_unique<Client>(kernel.Pipes(), pid));
    EXPECT_TRUE(clients.back()->Connect(name));
    RunFor(10ms);
    return *clients.back();
  }
  // The reply to a message; "(none)" without one.
  std::string Ask(Client& client, const std::string& text) {
    client.Send(Utf8ToWide(text));
    RunFor(10ms);
    return Receive(client);
  }
  static std::string Receive(Client& client) {
    const auto text = client.Receive();
    return text ? WideToUtf8(*text) : "(none)";
  }
  Client& Subscribe() {
    Client& client = Connect(u"TRLSPipe_N");
    EXPECT_EQ(Ask(client, R"({"cmd":"Subscribe"})"),
              R"({ "status":"ok", "code":0, "request":{"cmd":"Subscribe"} })");
    return client;
  }
  std::string Request(const std::string& members, int nonce = 1) const {
    const std::string token = "session," + std::to_string(pid) + "," + std::to_string(nonce) + ",x";
    return "{\"art\":\"" + platform::sim::SimCrypto::EncryptToken(token) + "\"," + members + "}";
  }
  bool HasLog(std::string_view text) {
    return kernel.Console().Text().find(text) != std::string::npos;
  }
  static std::string Echo(const std::string& text) {
    return "ECHO Server Got:\r\n" + text + "\r\nEOR\r\n";
  }

  platform::DWORD pid = 0;
  std::vector<std::unique_ptr<Client>> clients;
  CSmartPointer<CNamedPipeListener> listener;
  CSmartPointer<CNamedPipeListenerNotificationsJson> notifications;
};

}  // namespace corvane::test
