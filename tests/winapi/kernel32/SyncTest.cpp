// Critical sections and the last error of a thread.
#include <gtest/gtest.h>
#include <windows.h>

#include <atomic>
#include <thread>

namespace {

class CriticalSection : public testing::Test {
 protected:
  CriticalSection() { InitializeCriticalSection(&m_section); }
  ~CriticalSection() override { DeleteCriticalSection(&m_section); }
  // Whether another thread can enter now.
  bool IsFree() {
    bool entered = false;
    std::thread([&] {
      entered = TryEnterCriticalSection(&m_section) != FALSE;
      if (entered) LeaveCriticalSection(&m_section);
    }).join();
    return entered;
  }
  CRITICAL_SECTION m_section;
};

TEST_F(CriticalSection, KeepsOthersOutUntilLeftAsOftenAsEntered) {
  EXPECT_TRUE(IsFree());
  EnterCriticalSection(&m_section);
  EnterCriticalSection(&m_section);
  EXPECT_TRUE(TryEnterCriticalSection(&m_section)) << "the owner enters again";
  EXPECT_FALSE(IsFree());
  LeaveCriticalSection(&m_section);
  LeaveCriticalSection(&m_section);
  EXPECT_FALSE(IsFree());
  LeaveCriticalSection(&m_section);
  EXPECT_TRUE(IsFree());
}

TEST_F(CriticalSection, OneThreadAtATime) {
  int count = 0;
  const auto add = [&] {
    for (int i = 0; i < 5000; ++i) {
      EnterCriticalSection(&m_section);
      ++count;
      LeaveCriticalSection(&m_section);
    }
  };
  { const std::jthread a(add), b(add), c(add), d(add); }
  EXPECT_EQ(count, 20000);
}

// The steps are tied by a plain atomic: a call of the thread library may itself set the last error.
TEST(LastError, BelongsToItsThread) {
  std::atomic<int> step = 0;
  std::thread other([&step] {
    while (step != 1) {
    }
    SetLastError(7);
    step = 2;
  });
  SetLastError(5);
  step = 1;
  while (step != 2) {
  }
  const DWORD error = GetLastError();
  other.join();
  EXPECT_EQ(error, 5u);
}

}  // namespace
