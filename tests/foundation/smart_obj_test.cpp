#include "foundation/smart_obj.h"

#include <memory>
#include <vector>

#include "foundation/averager.h"
#include "foundation/generic_malloc.h"
#include "foundation/guarded.h"
#include "foundation/singleton.h"
#include "support/platform_test.h"

namespace corvane {
namespace {

class SmartObjTest : public test::PlatformTest {};

int g_Destroyed = 0;

class CSample : public SmartObjEx<CSample, SmartObj<>> {
 public:
  explicit CSample(int value = 0) : m_Value(value) {}
  ~CSample() override { ++g_Destroyed; }
  const char* GetClassName() const override { return "CSample"; }
  int m_Value;
};

class CTooBig : public SmartObjEx<CTooBig, SmartObj<>> {
 public:
  const char* GetClassName() const override { return "CTooBig"; }
  static void* operator new(std::size_t, const std::nothrow_t&) noexcept { return nullptr; }
  static void operator delete(void*, const std::nothrow_t&) noexcept {}
  static void operator delete(void*) noexcept {}
};

std::vector<std::string> LiveNames() {
  std::vector<std::string> names;
  live_objects::ForEach(
      [](const live_objects::Entry& entry, void* context) {
        static_cast<std::vector<std::string>*>(context)->push_back(entry.name);
      },
      &names);
  return names;
}

TEST_F(SmartObjTest, HoldersCountAndTheLastOneDeletes) {
  g_Destroyed = 0;
  CSmartPointer<CSample> first = CSample::CreateObject(7);
  EXPECT_EQ(first->GetRefCount(), 1u);
  {
    CSmartPointer<CSample> copy = first;
    CSmartPointer<CSample> other(first.get());
    EXPECT_EQ(first->GetRefCount(), 3u);
    other = copy;  // the same object
    EXPECT_EQ(first->GetRefCount(), 3u);
    CSmartPointer<CSample> moved = std::move(copy);
    EXPECT_FALSE(copy);
    EXPECT_EQ(first->GetRefCount(), 3u);
    const auto& self = moved;
    moved = self;
    EXPECT_EQ(moved->GetRefCount(), 3u);
  }
  EXPECT_EQ(first->GetRefCount(), 1u);
  EXPECT_EQ(first.CreateObject(8)->m_Value, 8);
  EXPECT_EQ(g_Destroyed, 1);
  EXPECT_EQ(first->AddRef(), 2u);
  EXPECT_EQ(first->Release(), 1u);
  first.reset();
  EXPECT_EQ(g_Destroyed, 2);
}

TEST_F(SmartObjTest, ReleaseWithoutAReferenceDoesNothing) {
  g_Destroyed = 0;
  const auto neverHeld = std::make_unique<CSample>();
  EXPECT_EQ(neverHeld->Release(), 0u);
  EXPECT_EQ(neverHeld->GetRefCount(), 0u);
  EXPECT_EQ(g_Destroyed, 0);
}

TEST_F(SmartObjTest, LiveObjectsBearTheirClassNameOnceTheyWereHeld) {
  auto* const neverHeld = new CSample;
  EXPECT_EQ(LiveNames(), std::vector<std::string>{"SmartObj"});
  EXPECT_EQ(LiveObjectCount(), 1u);
  {
    const auto held = CSample::CreateObject();
    auto names = LiveNames();
    std::sort(names.begin(), names.end());
    EXPECT_EQ(names, (std::vector<std::string>{"CSample", "SmartObj"}));
    EXPECT_EQ(LiveObjectCount(), 2u);
  }
  delete neverHeld;
  EXPECT_EQ(LiveObjectCount(), 0u);
  EXPECT_TRUE(LiveNames().empty());
}

TEST_F(SmartObjTest, CountHoldsUnderManyThreads) {
  g_Destroyed = 0;
  CSmartPointer<CSample> shared = CSample::CreateObject();
  std::vector<std::thread> threads;
  for (int i = 0; i < 4; ++i) {
    threads.emplace_back([&shared] {
      for (int n = 0; n < 2000; ++n) {
        CSmartPointer<CSample> mine = shared;
        const auto own = CSample::CreateObject();
        mine = own;
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(shared->GetRefCount(), 1u);
  EXPECT_EQ(LiveObjectCount(), 1u);
}

TEST_F(SmartObjTest, OutOfMemoryIsToldAndThrown) {
  try {
    CSmartPointer<CTooBig>().CreateObject();
    FAIL();
  } catch (const Exception& e) {
    EXPECT_STREQ(e.what(), "instance CreateObject(): out of memory");
  }
  EXPECT_EQ(os.console.Error(),
            "2026-11-18 04:20:00.123 instance CSmartPointer::CreateObject(): new DerivedSmartT() "
            "failed\n");
  EXPECT_THROW(CTooBig::CreateObject(), Exception);
  EXPECT_NE(
      os.console.Error().find("static SmartObjEx::CreateObject(): new DerivedSmartT() failed"),
      std::string::npos);
}

TEST_F(SmartObjTest, EmbeddedObjectSharesItsOwnersLifeAndLock) {
  const auto owner = CSample::CreateObject();
  CAveragerEmbedded<int> averager(owner.get());
  EXPECT_EQ(averager.AddRef(), 2u);
  EXPECT_EQ(owner->GetRefCount(), 2u);
  averager.Lock();
  owner->Lock();  // the same recursive lock
  owner->Unlock();
  averager.Unlock();
  EXPECT_EQ(averager.Release(), 1u);
  EXPECT_STREQ(averager.GetClassName(), "CAveragerEmbedded");
}

TEST_F(SmartObjTest, AveragesForgetTheirMeanWithEachValue) {
  CAveragerBase<int> whole;
  EXPECT_EQ(whole.Mean(), -1);
  EXPECT_EQ(whole.Mean(-100), -100);
  whole.Add(3);
  whole.Add(4);
  EXPECT_EQ(whole.Mean(), 3);
  whole.Add(-7);
  EXPECT_EQ(whole.Mean(), 0);
  whole.Add(8);
  EXPECT_EQ(whole.Mean(), 2);
  whole.Reset();
  EXPECT_EQ(whole.Mean(), -1);

  CAveragerBase<double> real;
  real.Add(3.0);
  real.Add(4.0);
  EXPECT_DOUBLE_EQ(real.Mean(), 3.5);
}

TEST_F(SmartObjTest, LockGuardLeavesOnceAndTakesNull) {
  CCritSec section;
  {
    CCritSecLock guard(&section, false);
    guard.Leave();  // not entered
    guard.Enter();
    guard.Enter();  // once is enough
    guard.Leave();
    std::thread([&section] { CCritSecLock free(section); }).join();
    guard.Enter();
  }
  std::thread([&section] { CCritSecLock free(section); }).join();
  CCritSecLock none(nullptr);
}

TEST_F(SmartObjTest, MemoryBlockCopiesAndRefuses) {
  const auto block = CGenericMalloc::CreateObject();
  block->Initialize(4);
  EXPECT_EQ(std::string(block->GetData(), block->GetData() + block->GetSize()),
            std::string(4, '\0'));
  block->Initialize("abcdef", 6, 6);
  EXPECT_EQ(std::string(block->GetData(), block->GetData() + block->GetSize()), "abcdef");
  const auto message = [&block](const void* data, std::uint32_t size, std::uint32_t minimum) {
    try {
      block->Initialize(data, size, minimum);
    } catch (const Exception& e) {
      return std::string(e.what());
    }
    return std::string();
  };
  EXPECT_EQ(message(nullptr, 6, 0), "CGenericMalloc::Initialize() - pData is NULL");
  EXPECT_EQ(message("abc", 3, 4), "CGenericMalloc::Initialize() - dwDataSize 3 too small");
  EXPECT_EQ(block->GetSize(), 6u);  // the old block stays
  EXPECT_EQ(message("", 0, 0), "");
  EXPECT_EQ(block->GetSize(), 0u);
}

TEST_F(SmartObjTest, GuardTurnsAPlatformFaultIntoAFailureValue) {
  EXPECT_EQ(Guarded("CLBConfig", "DoStopLBEngine", -1, [] { return 5; }), 5);
  EXPECT_EQ(os.console.Output(), "");
  EXPECT_EQ(Guarded("CLBConfig", "DoStopLBEngine", -1,
                    []() -> int { throw platform::PlatformFault{0xC0000005}; }),
            -1);
  EXPECT_EQ(os.console.Output(),
            "\n>>>>>>>>>>>>>>>>>>>>[[ CLBConfig::filterException 0xc0000005 ]]\n\n"
            "CLBConfig::DoStopLBEngine: __EXCEPTION__ - s_LastExceptionCode=0xc0000005\n");
  EXPECT_THROW(Guarded("C", "f", 0, []() -> int { throw Exception("other"); }), Exception);
}

TEST_F(SmartObjTest, ContainedOperationsLetNothingOut) {
  const auto run = [](auto&& fn) { return Contained("CWinICMP2", "f", -1, fn); };
  EXPECT_EQ(run([] { return 5; }), 5);
  EXPECT_EQ(run([]() -> int { throw Exception("own"); }), -1);
  EXPECT_EQ(run([]() -> int { throw std::bad_alloc(); }), -1);
  EXPECT_EQ(run([]() -> int { throw platform::PlatformFault{5}; }), -1);
  EXPECT_THROW(run([]() -> int { throw platform::ThreadAbandoned{}; }), platform::ThreadAbandoned);
  GiveBack("CWinICMP2", "g", [] { throw Exception("back"); });
  EXPECT_EQ(os.console.Output(),
            "CWinICMP2::f: Exception: own\nCWinICMP2::f: std:exception: std::bad_alloc\n"
            "\n>>>>>>>>>>>>>>>>>>>>[[ CWinICMP2::filterException 0x5 ]]\n\n"
            "CWinICMP2::f: __EXCEPTION__ - s_LastExceptionCode=0x00000005\n"
            "CWinICMP2::g: Exception: back\n");
}

// A destructor must not be left by the report, either.
TEST_F(SmartObjTest, WhatIsGivenBackMayFaultAndSoMayItsReport) {
  struct FailingSink : ILogSink {
    void Write(std::uint32_t, const char*, std::string_view) override { Fail(); }
    void Write(std::uint32_t, const char*, WStringView) override { Fail(); }
    std::string GetMemoryLog() override { return {}; }
    void Fail() {
      ++calls;
      throw std::runtime_error("no file");
    }
    int calls = 0;
  } sink;
  SetLogSink(&sink);
  GiveBack("CInterfacePDH", "PdhCloseQuery", [] { throw platform::PlatformFault{0xC0000005}; });
  SetLogSink(nullptr);
  EXPECT_EQ(sink.calls, 1);
  EXPECT_EQ(os.console.Output(),
            "\n>>>>>>>>>>>>>>>>>>>>[[ CInterfacePDH::filterException 0xc0000005 ]]\n\n");
}

std::string g_Order;

struct Lower {
  ~Lower() { g_Order += "lower "; }
};
struct Upper {
  Upper() { Singleton<Lower>::GetInstance(); }
  ~Upper() { g_Order += "upper "; }
};

TEST_F(SmartObjTest, SingletonsGoInReverseOrderAndComeBack) {
  g_Order.clear();
  Upper* made[2] = {};
  std::thread other([&made] { made[0] = &Singleton<Upper>::GetInstance(); });
  made[1] = &Singleton<Upper>::GetInstance();
  other.join();
  EXPECT_EQ(made[0], made[1]);
  singletons::DropAll();
  EXPECT_EQ(g_Order, "upper lower ");
  Singleton<Lower>::GetInstance();
  singletons::DropAll();
  EXPECT_EQ(g_Order, "upper lower lower ");
}

}  // namespace
}  // namespace corvane
