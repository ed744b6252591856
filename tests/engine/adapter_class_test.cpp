#include "engine/adapter_class.h"

#include <gtest/gtest.h>

#include <string>

#include "engine/engine_bits.h"

namespace corvane {
namespace {

enum Kind : unsigned {
  kPlain = 0,
  kManaged = 1,
  kMarked = 2,  // the state says not managed
  kTunnel = 4,
  kDirect = 8,
  kHyperV = 16,
  kPpp = 32,
  kAd = 64,
  kMobile = 128,
  kChecked = 256,
  kHidden = 512,  // gets no slot
};

unsigned KindOf(const LBAdapterClass& a) {
  return (a.managed ? kManaged : 0u) | (a.state == slot_state::kNotManaged ? kMarked : 0u) |
         (a.tunnel ? kTunnel : 0u) | (a.wifiDirect ? kDirect : 0u) | (a.hyperV ? kHyperV : 0u) |
         (a.ppp ? kPpp : 0u) | (a.is11ad ? kAd : 0u) | (a.mobile ? kMobile : 0u) |
         (a.needsVersionCheck ? kChecked : 0u) | (a.report ? 0u : kHidden);
}

constexpr LBSettings kUsual{};
constexpr LBSettings kNo11ad{.enable11ad = 0};
constexpr LBSettings kOpenVpn{.enableOpenVpn = 1};

struct Case {
  WStringView description;
  std::uint32_t ifType;
  std::uint32_t classFlags, baseFlags;
  unsigned kind;
  WStringView name = {};
  LBSettings settings = kUsual;
};

constexpr WStringView kWhole = u"*";  // the name is the description

const Case kCases[] = {
    // Known vendors, wired and wireless.
    {u"Realtek PCIe GbE", 6, 0x4001, 0x4001, kManaged, kWhole},
    {u"Intel(R) Ethernet Connection I219-LM", 6, 0x4001, 0x4001, kManaged, kWhole},
    {u"Marvell Yukon 88E8056", 6, 0x4001, 0x4001, kManaged, kWhole},
    {u"Linksys USB3GIG", 6, 0x4001, 0x4001, kManaged, kWhole},
    {u"Broadcom NetXtreme Gigabit Ethernet", 6, 0x4001, 0x4001, kManaged, kWhole},
    {u"Qualcomm Atheros AR8161", 6, 0x4001, 0x4001, kManaged, kWhole},
    {u"Adapter by Atheros", 6, 0x4001, 0x4001, kManaged, kWhole},
    {u"realtek PCIe GbE", 6, 0x2001, 0x2001, kMarked},  // case counts
    {u"Intel(R) Wi-Fi 6 AX200 160MHz", 71, 0x4402, 0x4402, kManaged, kWhole},
    {u"Intel(R) Wireless-AC 9560", 71, 0x4402, 0x4402, kManaged | kChecked, kWhole},
    {u"Intel(R) Wireless-AC 9560", 6, 0x4001, 0x4001, kManaged, kWhole},
    {u"Intel(R) Dual Band Wireless-AC 8265", 71, 0x4402, 0x4402, kManaged, kWhole},
    {u"Broadcom for Intel(R) Wireless-AC 9", 71, 0x4402, 0x4402, kManaged, kWhole},  // not Intel's
    {u"Realtek 8822CE Wireless LAN 802.11ac PCI-E NIC", 71, 0x4402, 0x4402, kManaged, kWhole},
    {u"Intel(R) Wi-Fi Direct thing", 71, 0x4402, 0x4402, kManaged, kWhole},  // the vendor is known
    {u"Broadcom NetXtreme 57xx Gigabit Controller with a long name behind it", 6, 0x4001, 0x4001,
     kManaged, u"Broadcom NetXtreme 57xx Gigabit Controller with a"},
    {u"Realtek something", 53, 0x4000, 0x4000, kManaged},
    // Nobody's.
    {u"ASIX AX88179 USB 3.0 to Gigabit Ethernet Adapter", 6, 0x2001, 0x2001, kMarked},
    {u"Some Virtual Adapter Of The House", 53, 0x2000, 0x2000, kMarked},
    {u"MediaTek Wi-Fi 6 MT7921", 71, 0x6402, 0x6402, kMarked, kWhole},
    {u"", 6, 0x2001, 0x2001, kMarked},
    // Made by Windows.
    {u"Microsoft Wi-Fi Direct Virtual Adapter", 71, 0x2802, 0x2802, kMarked | kDirect, kWhole},
    {u"Microsoft Wi-Fi Direct Virtual Adapter #2", 6, 0x2001, 0x2001, kMarked | kDirect},
    {u"Hyper-V Virtual Ethernet Adapter", 6, 0x2001, 0x2001, kMarked | kHyperV},
    {u"Microsoft Hyper-V Network Adapter", 6, 0x2003, 0x2003, kMarked | kHyperV},
    {u"Hyper-V over Wi-Fi Direct", 71, 0x2802, 0x2802, kMarked | kDirect, kWhole},
    {u"Microsoft Kernel Debug Network Adapter", 6, 0x2003, 0x2003, kMarked},
    {u"Microsoft Teredo Tunneling Adapter", 131, 0x2002, 0x2002, kMarked},
    {u"Microsoft Network for Intel", 6, 0x6003, 0x6003, kMarked, kWhole},
    {u"Bluetooth Device (Personal Area Network)", 6, 0x2003, 0x2003, kMarked},
    {u"Bluetooth PAN", 53, 0x2002, 0x2002, kMarked},
    {u"bluetooth PAN", 53, 0x2000, 0x2000, kMarked},
    {u"Software Loopback Interface 1", 24, 0x2000, 0x2000, kMarked | kHidden},
    {u"Software Loopback", 24, 0x2000, 0x2000, kMarked | kHidden},
    {u"Software Loopbac", 24, 0x2000, 0x2000, kMarked},
    // Tunnels.
    {u"WAN Miniport (IKEv2)", 23, 0x22001, 0x22001, kMarked | kPpp},
    {u"Realtek PPP", 23, 0x22001, 0x22001, kMarked | kPpp},
    {u"TAP Adapter V9", 6, 0x2009, 0x2009, kMarked | kTunnel},
    {u"TAP Adapter V9", 53, 0x2009, 0x2009, kMarked | kTunnel},
    {u"TAP Adapter V9", 6, 0x6009, 0x6009, kManaged | kTunnel, {}, kOpenVpn},
    {u"TAP-Windows Adapter V9", 6, 0x2001, 0x2001, kMarked},
    {u"LogMeIn Hamachi Virtual Ethernet Adapter", 6, 0x206001, 0x204001, kMarked | kTunnel},
    {u"LogMeIn VPN", 53, 0x206001, 0x204001, kMarked | kTunnel},
    {u"Acme VPN", 6, 0x2009, 0x2009, kMarked | kTunnel},
    {u"Acme VPN", 53, 0x2009, 0x2009, kMarked | kTunnel},
    {u"Sixteen long VPN", 53, 0x2009, 0x2009, kMarked | kTunnel},  // 16 characters
    {u"Seventeen long VP", 53, 0x2000, 0x2000, kMarked},           // 17, and no word
    {u"Seventeen is  VPN", 53, 0x2000, 0x2000, kMarked},           // 17 with the word
    {u"Fortinet SSL VPN Virtual Ethernet Adapter", 6, 0x2001, 0x2001, kMarked},
    {u"Intel VPN", 6, 0x4009, 0x4009, kManaged | kMarked | kTunnel, kWhole},
    {u"Acme vpn", 53, 0x2000, 0x2000, kMarked},
    // Mobile broadband and 802.11ad.
    {u"Sierra Mobile Broadband Adapter", 243, 0x84000, 0x84000, kManaged | kMobile},
    {u"Sierra Mobile Broadband Adapter", 244, 0x84000, 0x84000, kManaged | kMobile, {}, kNo11ad},
    {u"Sierra Mobile Broadband Adapter", 6, 0x2001, 0x2001, kMarked},
    {u"LTE Modem", 243, 0x84000, 0x84000, kManaged | kMobile, kWhole},
    {u"LTE Modem", 244, 0x2000, 0x2000, kMarked, {}, kNo11ad},
    {u"LTE Modem with a long name", 244, 0x2000, 0x2000, kMarked},
    {u"Qualcomm Atheros Sparrow 11ad Wireless", 71, 0x10C006, 0x10C006, kManaged | kAd, kWhole},
    {u"Qualcomm Atheros Sparrow 11ad Wireless", 71, 0x4402, 0x4402, kManaged, kWhole, kNo11ad},
    {u"Qualcomm Atheros QCA61x4A Wireless", 71, 0xC006, 0xC006, kManaged, kWhole},
    {u"Qualcomm Atheros QCA61x4A Wireless", 71, 0x4402, 0x4402, kManaged, kWhole, kNo11ad},
    {u"Qualcomm Atheros QCA61x4", 71, 0x4402, 0x4402, kManaged, kWhole},
    // The maker's own.
    {u"Vantor Gale G1 Gigabit", 6, 0xC011, 0x11, kManaged, u"Vantor Gale G1"},
    {u"Vantor GALE G1", 6, 0xC011, 0x11, kManaged, u"Vantor GALE G1"},
    {u"Vantor gale G1", 6, 0x4001, 0x1, kManaged},
    {u"Vantor Gale G2", 6, 0xC021, 0x21, kManaged, u"Vantor Gale G2"},
    {u"Vantor GALE G3 #2", 6, 0xC041, 0x41, kManaged, u"Vantor GALE G3"},
    {u"Vantor Gale G4", 6, 0x100C001, 0x1000001, kManaged, u"Vantor Gale G4"},
    {u"Vantor GALE G4", 6, 0x4001, 0x1, kManaged},
    {u"Vantor Gale G5", 6, 0x40C001, 0x400001, kManaged, u"Vantor Gale G5"},
    {u"Vantor Gale V5", 6, 0x80C001, 0x800001, kManaged, u"Vantor Gale V5"},
    {u"Vantor Gale 5GbE", 6, 0xC201, 0x201, kManaged},
    {u"Vantor Gale 10GbE", 6, 0xD001, 0x1001, kManaged},
    {u"Vantor something with Wi-Fi Direct", 6, 0x4001, 0x1, kManaged},
    {u"Aquantia 10Gbit", 6, 0x4001, 0x1, kManaged},
    {u"Aquantia Hyper-V", 6, 0x4001, 0x1, kManaged | kHyperV},
    {u"Vantor Breeze W1", 71, 0xC106, 0xC106, kManaged, u"Vantor Breeze W1"},
    {u"Vantor BREEZE W1 AC", 71, 0xC106, 0xC106, kManaged, u"Vantor BREEZE W1"},
    {u"Vantor Breeze W2", 71, 0xC086, 0xC086, kManaged, u"Vantor Breeze W2"},
    {u"Vantor Breeze W3", 71, 0x4C002, 0x4C002, kManaged | kChecked, u"Vantor Breeze W3"},
    {u"Vantor Wi-Fi 6", 71, 0x200C002, 0x200C002, kManaged, u"Vantor Wi-Fi"},
    {u"Vantor Wireless", 71, 0xC006, 0xC006, kManaged, u"Vantor Wireless"},
    {u"Vantor Radio", 71, 0xC002, 0xC002, kManaged, kWhole},
    {u"Vantor Modem", 243, 0x8C000, 0x8C000, kManaged | kMobile},
    {u"Vantor Modem", 244, 0x82000, 0x82000, kMarked | kMobile, {}, kNo11ad},
    {u"Vantor Mobile Broadband Adapter", 243, 0x84000, 0x84000, kManaged | kMobile},
    {u"Vantor Bluetooth", 53, 0, 0, kMarked},
    {u"A Vantor Gale G1", 6, 0x2001, 0x2001, kMarked},  // only at the beginning
};

TEST(AdapterClass, FollowsFromTypeAndDescription) {
  for (const Case& one : kCases) {
    const LBAdapterClass got = LBClassifyAdapter(one.description, one.ifType, one.settings);
    const std::string text = WideToUtf8(one.description) + ", type " + std::to_string(one.ifType);
    EXPECT_EQ(got.classFlags, one.classFlags) << text;
    EXPECT_EQ(got.baseFlags, one.baseFlags) << text;
    EXPECT_EQ(KindOf(got), one.kind) << text;
    EXPECT_EQ(WideToUtf8(got.name), WideToUtf8(one.name == kWhole ? one.description : one.name))
        << text;
  }
}

TEST(AdapterClass, OnlyTheValueOneTurnsAKindOn) {
  EXPECT_FALSE(LBClassifyAdapter(u"LTE Modem", 243, {.enable11ad = 2}).managed);
  EXPECT_FALSE(LBClassifyAdapter(u"TAP Adapter", 6, {.enableOpenVpn = 2}).managed);
}

TEST(AdapterClass, KeepsALongerNameOfTheMakersRadios) {
  const WString description = u"Vantor Radio " + WString(120, u'x');
  EXPECT_EQ(LBClassifyAdapter(description, 71, kUsual).name, description.substr(0, 95));
}

TEST(AdapterClass, FlagsHaveWords) {
  EXPECT_EQ(WideToUtf8(ClassFlagWords(0x4402)), "wireless generic-wireless managed");
  EXPECT_EQ(WideToUtf8(ClassFlagWords(0x80000001)), "wired 0x80000000");
  EXPECT_EQ(WideToUtf8(EngineStateWords(24)), "device-held ready");
  EXPECT_EQ(WideToUtf8(ChangeBitWords(0)), "-");
}

}  // namespace
}  // namespace corvane
