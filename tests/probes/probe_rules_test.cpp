#include <gtest/gtest.h>

#include <cstring>

#include "platform/icmp_api.h"
#include "probes/blast_packet.h"
#include "probes/hop_stats.h"
#include "probes/ip4_text.h"
#include "probes/rtt_statistics.h"

namespace corvane::test {

TEST(RttStatistics, MeanAndDeviationAreOfTheWholePopulation) {
  const struct {
    std::list<std::uint32_t> times;
    double mean, deviation;
  } cases[] = {{{}, 0.0, 0.0},
               {{7}, 7.0, 0.0},
               {{2, 4, 4, 4, 5, 5, 7, 9}, 5.0, 2.0},
               {{0, 0xFFFFFFFF}, 2147483647.5, 2147483647.5}};
  for (const auto& one : cases) {
    EXPECT_DOUBLE_EQ(MeanOf(one.times), one.mean);
    EXPECT_DOUBLE_EQ(DeviationOf(one.times), one.deviation);
  }
}

TEST(PublicAddress, EndsAtTheEdgesOfThePrivateRanges) {
  const struct {
    const char* address;
    bool isPublic;
  } cases[] = {{"10.0.0.1", false},      {"9.255.255.255", true},    {"11.0.0.0", true},
               {"172.15.255.255", true}, {"172.16.0.0", false},      {"172.31.255.255", false},
               {"172.32.0.1", true},     {"192.168.255.255", false}, {"192.167.0.1", true},
               {"192.169.0.1", true},    {"100.64.0.1", true}};
  for (const auto& one : cases) {
    const auto address = ReadIp4(one.address);
    ASSERT_TRUE(address) << one.address;
    EXPECT_EQ(IsPublicAddress(*address), one.isPublic) << one.address;
  }
  const std::pair<std::uint8_t, bool> firsts[] = {{0x1F, false}, {0x20, true},  {0x3F, true},
                                                  {0x40, false}, {0xFD, false}, {0xFE, false}};
  for (const auto& [first, isPublic] : firsts) {
    EXPECT_EQ(IsPublicAddress(Ip6Address{first}), isPublic) << int{first};
  }
}

TEST(Ip4Text, IsFourNumbersAndNothingElse) {
  for (const char* text :
       {"", "1.2.3", "1.2.3.4.5", "1.2.3.256", "1..2.3", "a.b.c.d", "1.2.3.4 "}) {
    EXPECT_FALSE(ReadIp4(text)) << text;
  }
  const std::uint8_t bytes[] = {255, 255, 254, 0};
  const auto read = ReadIp4("255.255.254.0");
  ASSERT_TRUE(read);
  EXPECT_EQ(std::memcmp(&*read, bytes, 4), 0);
}

TEST(HopStats, KeepTenTimesAndTheShareOfTheHop) {
  HopStats first, second;
  for (const std::uint32_t rtt : {40u, 3u, 4u, 5u, 6u, 7u, 8u, 9u, 10u, 11u}) {
    first.TakeAnswer(rtt, nullptr);
  }
  EXPECT_EQ(first.m_RttHistory.front(), 40u);
  first.TakeAnswer(12, nullptr);
  EXPECT_EQ(first.m_RttHistory, (std::list<std::uint32_t>{3, 4, 5, 6, 7, 8, 9, 10, 11, 12}));
  EXPECT_EQ(first.m_SegmentHistory, first.m_RttHistory) << "the first hop's share is all";
  EXPECT_EQ(first.m_MinRttMs, 3u);
  EXPECT_EQ(first.m_MaxRttMs, 40u) << "of all time";
  EXPECT_EQ(first.m_Replies, 11u);
  for (const auto& [rtt, share] : {std::pair(30u, 18u), {12u, 0u}, {5u, 0u}}) {
    second.TakeAnswer(rtt, &first);
    EXPECT_EQ(second.m_LastSegmentMs, share) << rtt;
  }
}

TEST(IpStatus, HasANameOrItsNumber) {
  EXPECT_EQ(IpStatusName(platform::IP_REQ_TIMED_OUT), "IP_REQ_TIMED_OUT");
  EXPECT_EQ(IpStatusName(platform::IP_BAD_ROUTE), "IP_BAD_ROUTE");
  EXPECT_EQ(IpStatusName(11050), "IP ERROR: 11050");
}

// The numbers are the worked example of RFC 1071, section 3, and a packet by hand.
TEST(Checksum, IsThatOfTheInternet) {
  const std::uint8_t example[] = {0x00, 0x01, 0xF2, 0x03, 0xF4, 0xF5, 0xF6, 0xF7};
  const std::uint8_t sum[] = {0x22, 0x0D};  // not of ddf2
  std::uint16_t expected;
  std::memcpy(&expected, sum, 2);
  EXPECT_EQ(InternetChecksum(example, sizeof example), expected);
  const std::uint8_t odd[] = {0x01, 0x02, 0x03}, padded[] = {0x01, 0x02, 0x03, 0x00};
  EXPECT_EQ(InternetChecksum(odd, 3), InternetChecksum(padded, 4));
}

TEST(Checksum, OfIcmp6CoversThePseudoHeader) {
  // ::1 to ::1, echo request with identifier 1 and sequence 1: 0001+0001+0008+003A+8000+0001+0001.
  Ip6Address loopback{};
  loopback[15] = 1;
  const std::uint8_t echo[] = {0x80, 0, 0, 0, 0, 1, 0, 1};
  const std::uint8_t sum[] = {0x7F, 0xB9};
  std::uint16_t expected;
  std::memcpy(&expected, sum, 2);
  EXPECT_EQ(Icmp6Checksum(loopback, loopback, echo, sizeof echo), expected);
}

TEST(BlastPacket, IsOneThatTheReceiverIgnores) {
  for (const auto& [family, size, type, fill] :
       {std::tuple(int{platform::AF_INET}, 1480u, 254, 0x41),
        {int{platform::AF_INET6}, 1460u, 200, 0x42}}) {
    auto packet = BlastPacket(family, 0x1234, 0x5678);
    ASSERT_EQ(packet.size(), size);
    EXPECT_EQ(packet[0], type);
    EXPECT_EQ(packet[1], 0);
    EXPECT_EQ(packet[8], fill);
    EXPECT_EQ(packet.back(), fill);
    StoreChecksum(&packet, InternetChecksum(packet.data(), packet.size()));
    EXPECT_EQ(InternetChecksum(packet.data(), packet.size()), 0) << "as its receiver checks it";
  }
}

}  // namespace corvane::test
