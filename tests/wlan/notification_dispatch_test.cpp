#include "wlan/notification_dispatch.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace corvane {
namespace {

using namespace platform;
using testing::StrictMock;

class MockSink : public IWlanAllNotifications {
 public:
  std::uint32_t AddRef() override { return 1; }
  std::uint32_t Release() override { return 1; }
  std::uint32_t GetRefCount() override { return 1; }
  void Lock() override {}
  void Unlock() override {}
  MOCK_METHOD(void, ConnectionNotification, (DWORD code, const void* data), (override));
  MOCK_METHOD(void, ScanNotification, (DWORD code, DWORD reason), (override));
  MOCK_METHOD(void, MSMNotification, (const void* data), (override));
  MOCK_METHOD(void, MSMRadioStateNotification, (const void* data), (override));
  MOCK_METHOD(void, MSMSignalQualityNotification, (DWORD quality), (override));
  MOCK_METHOD(void, MSMAdapterOperationModeNotification, (DWORD mode), (override));
};

class DispatchTest : public testing::Test {
 protected:
  void Send(DWORD source, DWORD code, DWORD size) {
    WLAN_NOTIFICATION_DATA notification;
    notification.NotificationSource = source;
    notification.NotificationCode = code;
    notification.dwDataSize = size;
    notification.pData = size ? data : nullptr;
    DispatchNotification(notification, sink);
  }

  StrictMock<MockSink> sink;
  alignas(8) unsigned char data[600] = {42};
  static constexpr DWORD kWhole = sizeof(WLAN_CONNECTION_NOTIFICATION_DATA);
};

TEST_F(DispatchTest, EachCodeReachesItsOperation) {
  for (const DWORD code : {9u, 10u, 11u, 20u, 21u}) {
    EXPECT_CALL(sink, ConnectionNotification(code, data));
    Send(WLAN_NOTIFICATION_SOURCE_ACM, code, kWhole);
  }
  EXPECT_CALL(sink, ScanNotification(7, 0));
  Send(WLAN_NOTIFICATION_SOURCE_ACM, 7, 4);
  EXPECT_CALL(sink, ScanNotification(8, 42));
  Send(WLAN_NOTIFICATION_SOURCE_ACM, 8, 4);
  EXPECT_CALL(sink, MSMNotification(data)).Times(11);
  for (DWORD code = 1; code <= 13; ++code) {
    if (code != 7 && code != 8) Send(WLAN_NOTIFICATION_SOURCE_MSM, code, 4);
  }
  EXPECT_CALL(sink, MSMRadioStateNotification(data));
  Send(WLAN_NOTIFICATION_SOURCE_MSM, 7, sizeof(WLAN_PHY_RADIO_STATE));
  EXPECT_CALL(sink, MSMSignalQualityNotification(42));
  Send(WLAN_NOTIFICATION_SOURCE_MSM, 8, 4);
  EXPECT_CALL(sink, MSMAdapterOperationModeNotification(42));
  Send(WLAN_NOTIFICATION_SOURCE_MSM, 14, 4);
}

TEST_F(DispatchTest, UnknownOnesAndTooLittleDataArePassedOver) {
  for (const DWORD code : {0u, 1u, 6u, 12u, 13u, 14u, 22u, 0xFFFFFFFFu}) {
    Send(WLAN_NOTIFICATION_SOURCE_ACM, code, kWhole);
  }
  for (const DWORD code : {0u, 15u, 21u}) Send(WLAN_NOTIFICATION_SOURCE_MSM, code, kWhole);
  Send(64, 10, kWhole);
  Send(WLAN_NOTIFICATION_SOURCE_ACM, 10, 64);
  Send(WLAN_NOTIFICATION_SOURCE_ACM, 21, 0);
  Send(WLAN_NOTIFICATION_SOURCE_MSM, 7, 8);
  Send(WLAN_NOTIFICATION_SOURCE_MSM, 8, 0);
  Send(WLAN_NOTIFICATION_SOURCE_MSM, 14, 3);
}

TEST_F(DispatchTest, FailedScanEndsEvenWithoutAReason) {
  EXPECT_CALL(sink, ScanNotification(8, 0));
  Send(WLAN_NOTIFICATION_SOURCE_ACM, 8, 0);
}

}  // namespace
}  // namespace corvane
