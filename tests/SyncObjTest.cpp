#include "kelp0lang/SyncObj.h"

#include <gtest/gtest.h>
#include <windows.h>

#include <thread>
#include <vector>

using namespace kelp;

namespace {

TEST(SyncObj, EventsAndSemaphores) {
  CSyncEvent automatic(true, false);
  EXPECT_TRUE(automatic.Lock(0));
  EXPECT_FALSE(automatic.Lock(0));
  EXPECT_TRUE(automatic.SetEvent());
  EXPECT_TRUE(automatic.ResetEvent());
  EXPECT_FALSE(automatic.Lock(0));
  CSyncObj& object = automatic;
  EXPECT_TRUE(object.Unlock()) << "sets it too";
  EXPECT_TRUE(object.Lock());

  CSyncEvent manual(false, true);
  EXPECT_TRUE(manual.PulseEvent());
  EXPECT_FALSE(manual.Lock(0));
  EXPECT_TRUE(manual.SetEvent());
  EXPECT_TRUE(manual.Lock(0) && manual.Lock(0));

  CSyncSemaphore semaphore(0, 2);
  EXPECT_FALSE(semaphore.Unlock(3));
  EXPECT_FALSE(semaphore.Lock(0));
  EXPECT_TRUE(semaphore.Unlock(2));
  EXPECT_FALSE(semaphore.Unlock());
  EXPECT_TRUE(semaphore.Lock(0) && semaphore.Lock(0));
  EXPECT_FALSE(semaphore.Lock(0));
  EXPECT_TRUE(semaphore.Unlock() && semaphore.Lock(0));
  EXPECT_FALSE(semaphore.Lock(0)) << "that was one";
}

TEST(SyncObj, AMutexOfAnotherThread) {
  CSyncMutex mutex(true);
  EXPECT_TRUE(mutex.Lock());
  const auto elsewhere = [](auto call) { std::thread(call).join(); };
  elsewhere([&] { EXPECT_FALSE(mutex.Lock(0) || mutex.Unlock()); });
  EXPECT_TRUE(mutex.Unlock() && mutex.Unlock());
  EXPECT_FALSE(mutex.Unlock());
  elsewhere([&] { EXPECT_TRUE(mutex.Lock(0)); });
  EXPECT_FALSE(mutex.Lock(0)) << "abandoned";
  EXPECT_TRUE(mutex.Unlock()) << "but had";

  CSyncEvent event(false, true);
  elsewhere([&] { EXPECT_TRUE(mutex.Lock(0)); });
  EXPECT_EQ(WaitForSyncAny(&event, &mutex, 0), 0x81);
  elsewhere([&] { EXPECT_TRUE(event.SetEvent()); });
  EXPECT_TRUE(WaitForSyncAll(&event, &mutex, 0)) << "told once only";
  EXPECT_TRUE(mutex.Unlock() && mutex.Unlock());
  elsewhere([&] { EXPECT_TRUE(mutex.Lock(0)); });
  EXPECT_FALSE(WaitForSyncAll(&event, &mutex, 0));
  EXPECT_TRUE(mutex.Unlock());
}

// Each form passes its objects in their order.
TEST(SyncObj, WaitsForTwoToFive) {
  CSyncEvent a(false, false), b(false, false), c(false, false), d(false, false), e(false, false);
  const struct {
    std::vector<CSyncEvent*> events;
    int (*any)(CSyncEvent* const*);
    bool (*all)(CSyncEvent* const*);
  } forms[] = {
      {{&a, &b},
       [](CSyncEvent* const* x) { return WaitForSyncAny(x[0], x[1], 0); },
       [](CSyncEvent* const* x) { return WaitForSyncAll(x[0], x[1], 0); }},
      {{&a, &b, &c},
       [](CSyncEvent* const* x) { return WaitForSyncAny(x[0], x[1], x[2], 0); },
       [](CSyncEvent* const* x) { return WaitForSyncAll(x[0], x[1], x[2], 0); }},
      {{&a, &b, &c, &d},
       [](CSyncEvent* const* x) { return WaitForSyncAny(x[0], x[1], x[2], x[3], 0); },
       [](CSyncEvent* const* x) { return WaitForSyncAll(x[0], x[1], x[2], x[3], 0); }},
      {{&a, &b, &c, &d, &e},
       [](CSyncEvent* const* x) { return WaitForSyncAny(x[0], x[1], x[2], x[3], x[4], 0); },
       [](CSyncEvent* const* x) { return WaitForSyncAll(x[0], x[1], x[2], x[3], x[4], 0); }},
  };
  for (const auto& form : forms) {
    CSyncEvent* const* const objects = form.events.data();
    const int count = static_cast<int>(form.events.size());
    EXPECT_EQ(form.any(objects), -1);
    for (int i = 0; i < count; ++i) {
      EXPECT_TRUE(objects[i]->SetEvent());
      EXPECT_EQ(form.any(objects), i);
    }
    for (int i = 0; i + 1 < count; ++i) EXPECT_TRUE(objects[i]->SetEvent());
    EXPECT_FALSE(form.all(objects));
    EXPECT_TRUE(objects[0]->Lock(0) && objects[0]->SetEvent()) << "not taken";
    EXPECT_TRUE(objects[count - 1]->SetEvent());
    EXPECT_TRUE(form.all(objects));
    EXPECT_EQ(form.any(objects), -1);
  }
}

TEST(SyncObj, TimesHave32Bits) {
  CSyncEvent event(false, true), other(false, true);
  EXPECT_FALSE(event.Lock(std::uint64_t{1} << 32));
  EXPECT_EQ(WaitForSyncAny(&event, &other, std::uint64_t{5} << 32 | 1), -1);
  std::thread setter([&] { event.SetEvent(); });
  EXPECT_EQ(WaitForSyncAny(&other, &event, ~std::uint64_t{0}), 1);
  setter.join();
}

TEST(SyncObj, WithoutAPlatformObjectAllFails) {
  CSyncSemaphore none(2, 1);
  CSyncEvent event(true, true);
  EXPECT_EQ(none.GetHandle(), 0u);
  EXPECT_FALSE(none.Lock(0) || none.Lock() || none.Unlock() || none.Unlock(1));
  EXPECT_EQ(WaitForSyncAny(&event, &none, kSyncForever), -1);
  EXPECT_FALSE(WaitForSyncAll(&event, &none, kSyncForever));

  const auto handle = reinterpret_cast<HANDLE>(static_cast<std::uintptr_t>(event.GetHandle()));
  EXPECT_EQ(WaitForSingleObject(handle, 0), WAIT_OBJECT_0) << "the platform's own";
}

}  // namespace
