#pragma once
#include <string>
#include <vector>

namespace corvane::platform::sim {
struct CapturedBeacon;
}

namespace corvane::lab {

// The commands of the workbench. Each takes the words behind its name, prints to standard output,
// and gives the exit status. They throw UsageError for words that they do not understand and
// std::runtime_error, with file and place, for input that they cannot read.
int RunCommand(const std::vector<std::string>& words);
int ScoresCommand(const std::vector<std::string>& words);
int ExplainCommand(const std::vector<std::string>& words);
int ElementsCommand(const std::vector<std::string>& words);
int EngineCommand(const std::vector<std::string>& words);
int CompareCommand(const std::vector<std::string>& words);
int ReportCommand(const std::vector<std::string>& words);
int AnonymiseCommand(const std::vector<std::string>& words);
int ReplayCommand(const std::vector<std::string>& words);
int MakeWorldCommand(const std::vector<std::string>& words);
int RegistryCommand(const std::vector<std::string>& words);

// What ElementsCommand prints for a beacon that has a frequency. On a platform in force.
std::string ElementsLine(const platform::sim::CapturedBeacon& beacon);

inline constexpr char kRunHelp[] =
    "corvane-lab run (WORLD | --air FILE.jsonl | --recording FILE) [--for DURATION] [--seed N] "
    "[--mode MODE] "
    "[--profile P] [--user]\n        [--json FILE]\n"
    "    Runs the service over a world in virtual time and prints what happens, then a summary.\n"
    "    --for DURATION  how long (default: the world's own duration, else 30m)\n"
    "    --seed N        seed of everything that is left to chance (default 1)\n"
    "    --json FILE     writes the events, every round with what it decided and why, and the "
    "summary to\n"
    "                    FILE, one JSON object a line\n"
    "    --air FILE      makes the world out of captured beacons\n"
    "    --recording FILE  makes it out of what a service recorded (see docs/recording.md)\n"
    "    --record FILE   the service records what it hears; the recording goes to FILE\n"
    "    --record-mb N   and may take N million bytes; checked for size and form throughout\n"
    "    --mode MODE     all adapters act in this mode: autoswitch, event or popup\n"
    "    --profile P     by which rules the service decides: classic or balanced (default: the "
    "world's)\n"
    "    --user          somebody answers the suggestions, half of them with a yes\n"
    "    --interleave    by the seed, threads may change hands at any call of the platform\n"
    "    --faults P      P percent of the platform's calls fail, by the seed (implies "
    "--interleave)\n"
    "    --seeds A-B     runs each of these seeds and reports only those that go wrong\n";
inline constexpr char kScoresHelp[] =
    "corvane-lab scores (WORLD --at TIME | --air FILE.jsonl) [--seed N] [--mode MODE] "
    "[--profile P]\n        [--json]\n"
    "    Prints the access points of each adapter, best first, with their score logs.\n";
inline constexpr char kExplainHelp[] =
    "corvane-lab explain (WORLD | --air FILE.jsonl) --at TIME [--adapter N] [--seed N] [--mode "
    "MODE] [--profile P]\n"
    "        [--user] [--json]\n"
    "    Tells why the round at that time ended as it did: what was decided, and for each access "
    "point its\n"
    "    score with the terms, its counter, and the rule that stopped it. Where several rounds "
    "fall "
    "on that\n"
    "    millisecond, tells of each; between two rounds, of the one that ended last.\n"
    "    --adapter N     that adapter only, counted from 0 (default: all)\n"
    "    --json          one JSON object for each round\n";
inline constexpr char kEngineHelp[] =
    "corvane-lab engine WORLD --at TIME [--seed N] [--json] [--dump FILE] [--interleave] "
    "[--faults P]\n"
    "        [--seeds A-B]\n"
    "    Runs the load-balance engine alone over a world, and shows at that time its adapters, "
    "gateways,\n"
    "    counts and words, and what its driver has heard until then.\n"
    "    --json          as one JSON object\n"
    "    --dump FILE     writes the first table to FILE, byte for byte as the driver sees it\n"
    "    --interleave    by the seed, threads may change hands at any call of the platform\n"
    "    --faults P      P percent of the platform's calls fail, by the seed (implies "
    "--interleave)\n"
    "    --seeds A-B     runs each of these seeds and reports only those that go wrong\n";
inline constexpr char kRegistryHelp[] =
    "corvane-lab registry\n"
    "    Prints docs/registry.md: what each value of the registry is.\n";
inline constexpr char kElementsHelp[] =
    "corvane-lab elements FILE.jsonl\n"
    "    Decodes the elements of each captured beacon and prints one JSON object a line.\n";
inline constexpr char kCompareHelp[] =
    "corvane-lab compare (WORLD | FOLDER | RECORDING.jsonl | --made A-B)... [--profiles LIST] "
    "[--why] [--by-kind]\n"
    "        [--worst N] [--json] [-j N]\n"
    "    Holds the service against an oracle that knows the future and against the rules of peers, "
    "in the\n"
    "    same worlds. Shares are those of the oracle.\n"
    "    --made A-B      made worlds (see make-world) with every second seed from A to B\n"
    "    --kinds LIST    of these kinds only: flat,office\n"
    "    --profiles LIST how the service is to act: classic, balanced (default: both), or either "
    "with\n"
    "                    settings: classic,classic:ScanInterval=60:SCOREDIFFPCT=5\n"
    "    --cold          no adapter is connected at the start\n"
    "    --roaming-driver  every driver roams by itself\n"
    "    --why           tells by cause what each profile misses\n"
    "    --by-kind       the rate by kind of world, too\n"
    "    --worst N       the N worst worlds of each profile, too\n"
    "    --no-peers      the oracle and the profiles only\n"
    "    --for DURATION  at most so much of each world\n"
    "    --seed N        seed of everything that is left to chance (default 1)\n"
    "    --json          one JSON object for each world, and one for their sum\n"
    "    -j N            so many worlds at once (default: as many as there are processors)\n";
inline constexpr char kReportHelp[] =
    "corvane-lab report (WORLD | --air FILE.jsonl | --recording FILE) -o PAGE.html [--for "
    "DURATION] [--seed N]\n"
    "        [--mode MODE] [--profile P] [--user] [--compare]\n"
    "    Runs the service over a world and makes a page to look at: what each adapter was on, how "
    "every\n"
    "    access point stood, what was decided and why. One file that needs nothing else.\n"
    "    -o PAGE.html    where the page goes\n"
    "    --for DURATION  how long (default: the world's own duration, else 30m)\n"
    "    --compare       beside it what the peers' rules and the oracle make of the same world\n";
inline constexpr char kReplayHelp[] =
    "corvane-lab replay RECORDING [--seed N] [--mode MODE] [--profile P] [--show N]\n"
    "    Runs the service over what a recording tells (see docs/recording.md), and holds its "
    "scores "
    "and\n"
    "    decisions against the recorded ones.\n"
    "    --show N        prints the first N rounds that decide otherwise (default 10)\n";
inline constexpr char kAnonymiseHelp[] =
    "corvane-lab anonymise RECORDING -o FILE\n"
    "    Writes the recording without the names and addresses in it, once it has seen that none is "
    "left\n"
    "    and that it is scored and decided upon as before.\n";
inline constexpr char kMakeWorldHelp[] =
    "corvane-lab make-world (KIND --seed N | --kinds) [-o FILE] [--cold] [--roaming-driver]\n"
    "        [--background] [--two-adapters]\n"
    "    Makes the file of a world: a place of that kind with its walks, traffic and trouble. The "
    "same\n"
    "    words make the same file. Even seeds are for tuning, odd ones for proof.\n"
    "    --kinds         lists the kinds\n"
    "    --cold          not connected at the start\n"
    "    --roaming-driver, --background, --two-adapters\n"
    "                    the driver roams by itself; a trickle that never ends; two adapters\n";

}  // namespace corvane::lab
