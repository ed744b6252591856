#include "monitors/adapter_kind.h"

#include <gtest/gtest.h>

namespace corvane {
namespace {

TEST(VpnName, FindsTapAsAWordAndProductsAnywhere) {
  const WStringView named[] = {u"tap-windows adapter v9",
                               u"my tap adapter",
                               u"tap device",
                               u"tap-x",
                               u"a tap b",
                               u"a tap-b",
                               u"a-tap-b",
                               u"a-tap b",
                               u"virtual tap",
                               u"virtual-tap",
                               u"myvpnclient",
                               u"sonicwall",
                               u"cisco anyconnect secure mobility client",
                               u"pangp virtual ethernet",
                               u"perimeter 81",
                               u"nordlynx",
                               u"unencrypted",
                               u"vyprnet",
                               u"wan (ikev2)",
                               u"wan (sstp)",
                               u"wan (pptp)",
                               u"ncp secure client",
                               u"shrew soft",
                               u"shrewsoft"};
  for (const WStringView name : named) EXPECT_TRUE(HasVpnName(name)) << Narrow(name);
  const WStringView others[] = {u"",          u"tap",     u"adaptive",
                                u"tapestry",  u"a.tap.b", u"ethernet tapx",
                                u"ncpsecure", u"shrew",   u"vp n"};
  for (const WStringView name : others) EXPECT_FALSE(HasVpnName(name)) << Narrow(name);
}

TEST(AdapterKind, TellsVpnAndWiredAdapters) {
  constexpr std::uint32_t kUp = 1, kDown = 2;
  struct Case {
    WStringView description;
    std::uint32_t ifType, operStatus;
    bool vpn, candidate;
  };
  const Case cases[] = {
      {u"TAP-Windows Adapter V9", 6, kUp, true, false},
      {u"TAP-Windows Adapter V9", 6, kDown, false, false},
      {u"TAP-Windows Adapter V9", 999, kUp, true, false},  // counts whatever its type
      {u"Some TAP Adapter", 999, kUp, false, false},
      {u"Teredo Tunneling Pseudo-Interface", 131, kUp, false, false},
      {u"Teredo VPN", 6, kUp, false, false},
      {u"Microsoft Wi-Fi Direct Virtual Adapter", 71, kUp, false, false},
      {u"Contoso VPN", 71, kUp, false, false},  // a VPN by name alone must be of a fitting type
      {u"Contoso VPN", 53, kUp, true, false},
      {u"Contoso Virtual", 53, kUp, false, false},
      {u"Realtek PCIe GbE", 6, kUp, false, true},
      {u"Realtek PCIe GbE", 6, kDown, false, true},
      {u"Realtek PCIe GbE", 6, 0, false, true},
      {u"Intel Wireless", 71, kUp, false, true},
      {u"Dial-up", 23, kUp, true, false},
      {u"Dial-up", 23, kDown, false, false},
      {u"Serial line", 28, kUp, true, false},
      {u"Tunnel", 131, kUp, true, false},
      {u"Cisco AnyConnect Secure Mobility Client", 6, kUp, true, false},
      {u"Bluetooth Device (Personal Area Network)", 6, kUp, false, false},
      {u"Microsoft LOOPBACK", 6, kUp, false, false},
      {u"Network Multiplexor", 6, kUp, false, false},
      {u"WAN Miniport (IP)", 6, kUp, false, false},
      {u"Loopback Pseudo-Interface 1", 24, kUp, false, false},
  };
  for (const Case& one : cases) {
    const AdapterFacts facts{one.description, one.ifType, one.operStatus};
    EXPECT_EQ(IsActiveVpn(facts), one.vpn) << Narrow(one.description) << ' ' << one.ifType;
    EXPECT_EQ(IsLanCandidate(facts), one.candidate) << Narrow(one.description) << ' ' << one.ifType;
  }
}

}  // namespace
}  // namespace corvane
