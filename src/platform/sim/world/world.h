#pragma once
// The world of a simulated PC as plain data: what its machine, its air and its networks are like,
// and what happens to them. "docs/worlds.md" tells the JSON form, member by member. All times are
// milliseconds since the machine came up, in which the program starts at 0.

#include <array>
#include <cstdint>
#include <limits>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/registry_api.h"
#include "platform/sim/world/driver_part.h"
#include "platform/wlan_types.h"

namespace corvane::platform::sim {

using Mac = std::array<BYTE, 6>;

inline constexpr int kAllAdapters = -1;
inline constexpr std::uint64_t kForever = std::numeric_limits<std::uint64_t>::max();

// From `fromMs` on, up to `toMs`, which is not included.
struct Span {
  std::uint64_t fromMs = 0;
  std::uint64_t toMs = kForever;
  bool Holds(std::uint64_t ms) const { return fromMs <= ms && ms < toMs; }
  void ShiftBy(std::uint64_t ms) {
    fromMs += ms;
    if (toMs != kForever) toMs += ms;
  }
};

struct Point {  // metres
  double x = 0.0;
  double y = 0.0;
};

// A place at a time; between two of them the machine moves evenly, after the last it stands.
struct Waypoint {
  std::uint64_t atMs = 0;
  Point at;
};

struct SignalPoint {
  std::uint64_t atMs = 0;
  double dbm = 0.0;
};

struct IpAddress {
  static constexpr int kV4 = 2;   // AF_INET
  static constexpr int kV6 = 23;  // AF_INET6 of Windows
  int family = kV4;
  std::array<BYTE, 16> bytes{};  // in network order; four of them for IPv4
  int prefix = 24;               // bits of the subnet
};

// What an adapter gets from the network that it is on.
struct IpSettings {
  std::vector<IpAddress> unicast;
  std::vector<IpAddress> gateways;
  std::vector<IpAddress> dnsServers;
  std::u16string dnsSuffix;
  bool dhcp = true;
};

// A row of the neighbour tables (ARP and ND). It stands there whatever the adapters do.
struct Neighbour {
  IpAddress address;
  Mac mac{};
  Mac resolved{};  // what asking the network gives; all zero: the MAC above
};

// A network as the network list knows it; with `ssid`, one that Wi-Fi adapters can be on.
struct Network {
  std::u16string name;    // may carry an instance number: "Office 2"
  bool nullName = false;  // the list gives no name for it
  std::u16string description;
  std::string ssid;           // empty for one that is not Wi-Fi
  LONG category = 0;          // NLM_NETWORK_CATEGORY: 0 public, 1 private, 2 domain
  bool internet = true;       // what the list says while connected
  DWORD connectivity = 0x40;  // NLM_CONNECTIVITY while connected: 0x40 IPv4 Internet, 0x20 local
  bool connected = false;     // for one that is not Wi-Fi: connected at the start
  std::uint64_t createdSecs = 0, connectedSecs = 0;  // seconds since 1970
  IpSettings ip;                                     // given to an adapter that is on it
  std::vector<Neighbour> neighbours;  // the MACs of its gateways and hosts, while somebody is on it
};

inline constexpr LONG kAuthOwe = 10;  // DOT11_AUTH_ALGO_OWE

struct Security {
  LONG auth = DOT11_AUTH_ALGO_80211_OPEN;
  LONG cipher = DOT11_CIPHER_ALGO_NONE;
  std::u16string key;  // the passphrase; a profile with another one fails to connect
  bool Enabled() const { return cipher != DOT11_CIPHER_ALGO_NONE; }
};

// A router on the way into the Internet.
struct Hop {
  IpAddress address;
  double rttMs = 0.0;  // there and back
};
inline constexpr double kEchoLost = -1.0;

// What an adapter heard of an access point, as it was recorded. Between two points the signal moves
// evenly; from one of kNothingHeard on there is none.
inline constexpr double kNothingHeard = std::numeric_limits<double>::quiet_NaN();
using HeardTrack = std::vector<SignalPoint>;

// Elements that an access point sent from a time on.
struct SentElements {
  std::uint64_t atMs = 0;
  std::shared_ptr<const std::vector<BYTE>> bytes;
};

struct AccessPoint {
  Mac bssid{};
  std::string ssid;            // bytes, at most 32
  ULONG frequencyMhz = 2412;   // centre of the primary channel
  bool hidden = false;         // heard with an empty SSID, unless a scan asked for it by name
  std::vector<BYTE> elements;  // of a probe response, with the SSID; CarryNoSsid gives the beacon's
  WORD beaconPeriod = 100;     // time units of 1024 us
  WORD capability = 0x0001;    // IEEE 802.11 clause 9.4.1.4
  LONG phy = dot11_phy_type_ht;
  LONG bssType = dot11_BSS_type_infrastructure;
  Security security;
  double txPowerDbm = 20.0;
  Point at;
  std::vector<SignalPoint> track;  // the signal over time, in place of power and position
  std::vector<Span> alive;         // empty: always
  // Of a recorded one, in place of power, position, track and life: what each adapter heard, by its
  // position, and what was sent, by rising time.
  std::vector<HeardTrack> heard;
  std::vector<SentElements> sent;
  DWORD refuseReason = 0;      // WLAN reason code with which every connect fails; 0 for none
  int network = -1;            // position in World::networks; -1: the first of its SSID
  std::vector<Hop> hops;       // behind it, nearest first; empty: its gateway and one more
  std::vector<double> noise;   // ms that each echo over it takes longer, in turn; or kEchoLost
  std::size_t noiseTaken = 0;  // echoes so far that the noise has met
};

// WlanGetProfile's flags: 0 for one of all users.
inline constexpr DWORD kProfileGroupPolicy = 1;
inline constexpr DWORD kProfileUser = 2;

struct Profile {
  int adapter = kAllAdapters;
  std::u16string name;
  std::u16string xml;
  std::string ssid;
  bool autoConnect = true;
  bool nonBroadcast = false;
  Security security;
  DWORD flags = 0;
  DWORD grantedAccess = WLAN_WRITE_ACCESS;
  DWORD readError = 0;  // WlanGetProfile fails with it; 0: it does not
};

struct Filter {
  LONG type = wlan_filter_list_type_user_deny;
  std::string ssid;
  LONG bssType = dot11_BSS_type_infrastructure;
};

// What the adapter carries in a span of time; spans that overlap add up. An adapter carries only
// while it is connected.
struct Traffic {
  int adapter = 0;
  Span span;
  double inMbps = 0.0;
  double outMbps = 0.0;
  double inErrorsPerSec = 0.0;  // packets
  double outErrorsPerSec = 0.0;
};

// The driver's own roaming inside one SSID.
struct DriverRoaming {
  bool enabled = false;
  int belowDbm = -75;  // looks around while its access point is weaker
  int marginDb = 8;    // and moves to one that is stronger by as much
};

// How long something took that began at that time.
struct Took {
  std::uint64_t atMs = 0;
  DWORD ms = 0;
};

struct Adapter {
  GUID guid;
  std::u16string description;
  std::u16string connectionName;  // stands in the registry, too, where the system keeps it
  Mac mac{};
  DWORD ifIndex = 0;
  std::vector<LONG> phys;        // DOT11_PHY_TYPE, in the order of dot11PhyTypes
  std::vector<int> bands{2, 5};  // that it hears: 2, 5, 6
  bool present = true;
  bool radioOn = true;            // the software switch, of every PHY
  bool hardwareRadioOn = true;    // the switch on the case
  bool autoConnect = true;        // the system connects it to its profiles by itself
  Mac connectedTo{};              // BSSID at the start; all zero: by autoConnect or not at all
  DWORD scanMs = 2500;            // a scan of all channels
  DWORD connectMs = 1500;         // from connection start to complete
  DWORD staleMs = 30'000;         // an access point not heard for so long leaves the BSS list
  int sensitivityDbm = -92;       // what is weaker is not heard
  bool privateInterface = false;  // its driver answers private calls
  std::vector<Took> scansTook, connectsTook;  // of a recorded one, by rising time
  int streams = 2;                            // spatial streams, 1 to 8
  double txLimitMbps = 0.0;                   // cap on link rates; 0: none
  DriverRoaming roaming;
};

// Any other adapter of the machine: wired LAN, VPN, loopback, virtual, tunnel. The Wi-Fi adapters
// are in the tables by themselves.
struct OtherAdapter {
  GUID guid;
  std::u16string description;
  std::u16string friendlyName;
  DWORD ifIndex = 0;
  DWORD ifType = 6;  // IANA ifType: 6 Ethernet, 23 PPP, 24 loopback, 28 SLIP, 53, 71, 131 tunnel
  bool up = false;
  bool present = true;
  Mac mac{};
  DWORD mtu = 1500;
  double linkMbps = 1000.0;
  IpSettings ip;
  int network = -1;  // position in World::networks of the one that it is on while up
};

struct Power {
  bool mains = true;
  BYTE batteryPercent = 100;
};

enum class BluetoothLink { kClassic, kLowEnergy, kSco };

// What a Bluetooth radio moves in a span of time; spans that overlap add up.
struct BluetoothTraffic {
  Span span;
  BluetoothLink link = BluetoothLink::kClassic;
  double readKbps = 0.0;
  double writtenKbps = 0.0;
};

// A Bluetooth adapter. Its name is its description in the registry and its instance among the
// counters.
struct BluetoothRadio {
  std::u16string name;
  bool on = true;  // false: switched off in the device manager
  std::vector<BluetoothTraffic> traffic;
};

// The session on the console, and what the program's own child says there of the user's
// environment.
struct Session {
  bool loggedOn = true;
  std::string user = "user";
  DWORD sessionId = 1;
  std::string childOutput;  // all that the child writes
  DWORD childExitCode = 999;
  DWORD childMs = 200;                    // run time
  std::vector<std::u16string> processes;  // names of programs that run there
};

// How a web host can be reached.
enum class WebReach { kAnyWay, kDirect, kProxy, kNoWay };
enum class WebCertificate { kGood, kUnknown, kRefused };

// What a host of the web answers. The first that fits host and path does.
struct WebAnswer {
  std::string host;
  std::string path;  // with the query; empty: every path of the host
  WebReach reach = WebReach::kAnyWay;
  WebCertificate certificate = WebCertificate::kGood;
  DWORD status = 200;
  std::string reason = "OK";
  std::vector<std::string> headers;  // "Name: value"
  std::string redirect;              // the whole address; goes out as Location
  std::string body;
  DWORD delayMs = 0;  // until the response begins
};

// What the PC knows of proxies: the user's settings, and what the network tells.
struct WebProxies {
  bool known = true;  // false: the user's settings can't be read
  std::u16string proxy;
  std::u16string bypass;
  std::u16string configUrl;
  std::u16string detectedUrl;    // that DHCP or DNS give; empty for none
  std::u16string detectedProxy;  // that a configuration gives for every address; empty: it fails
};

struct Web {
  std::vector<WebAnswer> answers;
  WebProxies proxies;
};

// What NetGetDCName gives for a domain.
struct DomainController {
  std::u16string domain;
  std::u16string name;  // "\\OFFICE-DC"
};

// A program at the service's pipes. Its process runs from the start on.
struct Client {
  std::string name;  // how the timeline calls it
  std::u16string program = u"Corvane_ConfigApp.exe";
};

enum class ClientAct {
  kConnect,    // to the request pipe
  kSend,       // message: a request; connects before, if need be
  kSubscribe,  // to the notification pipe
  kStall,      // reads nothing more
  kRead,       // reads again
  kVanish,     // leaves both pipes
};

struct ClientAction {
  std::string client;
  ClientAct act = ClientAct::kConnect;
  std::string message;        // UTF-8
  bool withToken = true;      // `message` is an object, to which the client adds its token
  std::uint64_t everyMs = 0;  // and again after as much time; 0: once
};

// The program's key below HKEY_LOCAL_MACHINE; an adapter's is the subkey of its GUID text.
inline constexpr char16_t kHomeKey[] = u"SOFTWARE\\OstrelNetworks\\Corvane";

struct RegistryWrite {
  std::u16string key;  // whole path below HKEY_LOCAL_MACHINE
  std::u16string name;
  DWORD type = REG_DWORD;  // or REG_SZ, REG_QWORD
  std::uint64_t number = 0;
  std::u16string text;
  bool remove = false;
};

// A file that lies in the folder of the program's executable before it starts.
struct ProgramFile {
  std::u16string name;
  std::string text;
};

// What an entry of the timeline does. Behind each, the members of Action that it reads.
enum class ActionKind {
  kMove,              // to, speed: the machine walks there from where it is
  kScan,              // adapter, ssid, good: somebody else's scan
  kConnect,           // adapter, ssid, bssid: somebody else connects; zero BSSID: the strongest
  kDisconnect,        // adapter: somebody else disconnects it
  kRoam,              // adapter, bssid: the driver roams inside the SSID
  kRadio,             // adapter, on, hardware
  kAdapter,           // adapter, on: plugged in or pulled out
  kTraffic,           // traffic: from now on; its span counts from the time of the action
  kAccessPoint,       // bssid, on: dies or comes back
  kLoad,              // bssid, stations, utilisation: the load element changes
  kSignal,            // bssid, dbm: fixed from now on; NaN gives the signal back to power and track
  kNoise,             // bssid, noise: from now on, beginning with the first; empty: quiet again
  kRefuse,            // bssid, code: connects fail with this reason; 0: no more
  kWlanService,       // on: the WLAN service stops (every call 1062) or runs again
  kPower,             // on (mains), percent
  kSuspend,           // the machine sleeps
  kResume,            // and wakes
  kBluetooth,         // text (radio), on: a Bluetooth radio is switched on or off
  kBluetoothTraffic,  // text (radio), bluetooth: from now on, as kTraffic
  kRegistry,          // registry
  kNetwork,      // network (name), and what of category, internet, connectivity and on is given
  kNetworkList,  // on: the network list service fails or answers again
  kInterface,    // interface (friendly name), on: another adapter goes up or down
  kInterfacePresent,  // interface, on: it is plugged in or pulled out
  kNeighbour,         // neighbour, on: a row of the neighbour tables is set or taken out
  kProfile,           // profile, on: added or replaced, or deleted by name
  kFilter,            // filter, on: added or taken out
  kSession,           // session: from now on
  kProcess,           // text (name), on: a program of the session starts or ends
  kNotification,      // adapter, source, code, number: a bare notification of the WLAN service
  kWeb,               // answer: in the place of the one of its host and path, or as a new one
  kProxies,           // proxies: from now on
  kClient,            // client: a program does something at its pipes
  kDriver,            // driver: what it says changes
  kAddresses,         // interface, ip: its addresses from now on
  kKey,               // the console key is pressed
};

struct Action {
  std::uint64_t atMs = 0;
  ActionKind kind = ActionKind::kKey;
  int adapter = 0;
  bool on = false;
  bool good = true;
  bool hardware = false;
  std::string ssid;
  Mac bssid{};
  Point to;
  double speed = 1.4;  // metres a second
  double dbm = 0.0;
  int stations = -1;     // -1: as it was
  int utilisation = -1;  // 0 to 255; -1: as it was
  std::vector<double> noise;
  DWORD code = 0;
  DWORD source = 0;
  DWORD number = 0;
  int percent = -1;  // -1: as it was
  std::u16string network;
  std::u16string interfaceName;
  std::u16string text;
  int category = -1;               // -1: as it was
  int internet = -1;               // 0, 1, or -1 as it was
  int connected = -1;              // 0, 1, or -1 as it was
  std::int64_t connectivity = -1;  // flags, or -1 as it was
  Traffic traffic;
  BluetoothTraffic bluetooth;
  RegistryWrite registry;
  Neighbour neighbour;
  Profile profile;
  Filter filter;
  Session session;
  WebAnswer answer;
  WebProxies proxies;
  ClientAction client;
  DriverPart driver;
  IpSettings ip;
  std::string line;  // the action in a few words, for IPcObserver::OnTimeline
};

struct World {
  std::string name;
  std::string description;
  std::uint64_t durationMs = 0;  // length of its story; 0: none of its own

  std::vector<Adapter> adapters;
  std::vector<AccessPoint> accessPoints;
  std::vector<Profile> profiles;
  std::vector<Filter> filters;
  std::vector<Network> networks;
  std::vector<OtherAdapter> otherAdapters;
  std::vector<Neighbour> neighbours;
  std::vector<Traffic> traffic;
  std::vector<Waypoint> path{{}};  // by rising time, at least one
  double shadowingDb = 3.0;        // standard deviation; 0: a bare function of distance
  double pathLossExponent = 3.0;
  Power power;
  std::vector<BluetoothRadio> bluetooth;
  Session session;
  Web web;
  std::vector<DomainController> domainControllers;
  std::optional<DriverPart> driver;     // of the load-balance engine; nothing: not installed
  std::vector<RegistryWrite> registry;  // what stands there before the program starts
  std::vector<ProgramFile> files;
  std::vector<Client> clients;
  std::vector<Action> timeline;  // by rising time; entries of one time in the file's order
};

}  // namespace corvane::platform::sim
