// Events, mutexes, semaphores and threads, and waiting for them.
#include <gtest/gtest.h>
#include <windows.h>

#include <algorithm>
#include <atomic>
#include <compare>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <iterator>
#include <memory>
#include <mutex>
#include <random>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "tests/winapi/UnderWine.h"
#include "tests/winapi/WideText.h"

namespace {

// A time that only a wait without end would need.
constexpr DWORD kLong = 120000;

class Handle {
 public:
  explicit Handle(HANDLE handle) : m_handle(handle) { EXPECT_NE(handle, nullptr); }
  ~Handle() { EXPECT_TRUE(CloseHandle(m_handle)); }
  Handle(const Handle&) = delete;
  Handle& operator=(const Handle&) = delete;
  operator HANDLE() const { return m_handle; }

 private:
  HANDLE m_handle;
};

HANDLE NewEvent(bool manualReset, bool set) {
  return CreateEventW(nullptr, manualReset, set, nullptr);
}

HANDLE NewMutex(bool owned) {
  return CreateMutexW(nullptr, owned, nullptr);
}

HANDLE NewSemaphore(LONG count, LONG maximum) {
  return CreateSemaphoreW(nullptr, count, maximum, nullptr);
}

DWORD Look(HANDLE object) {
  return WaitForSingleObject(object, 0);
}

// What a function gives on a thread of its own, which has then ended.
template <class Call>
DWORD Elsewhere(Call call) {
  DWORD result = 0;
  std::thread([&] { result = call(); }).join();
  return result;
}

TEST(Wait, EventsStaySetForAllOrForOne) {
  const Handle automatic(NewEvent(false, true)), manual(NewEvent(true, false));
  EXPECT_EQ(Look(automatic), WAIT_OBJECT_0);
  EXPECT_EQ(Look(automatic), WAIT_TIMEOUT) << "the first wait has taken it";
  EXPECT_TRUE(SetEvent(automatic));
  EXPECT_TRUE(SetEvent(automatic));
  EXPECT_EQ(Look(automatic), WAIT_OBJECT_0);
  EXPECT_EQ(Look(automatic), WAIT_TIMEOUT) << "setting doesn't count";

  EXPECT_TRUE(SetEvent(manual));
  EXPECT_EQ(Look(manual), WAIT_OBJECT_0);
  EXPECT_EQ(Elsewhere([&] { return Look(manual); }), WAIT_OBJECT_0);
  EXPECT_TRUE(ResetEvent(manual));
  EXPECT_EQ(Look(manual), WAIT_TIMEOUT);
  EXPECT_TRUE(PulseEvent(manual));
  EXPECT_EQ(Look(manual), WAIT_TIMEOUT) << "nobody waited";
  EXPECT_EQ(WaitForSingleObject(manual, 5), WAIT_TIMEOUT);
}

// Whether a thread waits already can't be seen, so the pulse comes until it has met them all.
TEST(Wait, APulseWakesThoseThatWait) {
  const Handle manual(NewEvent(true, false));
  std::atomic<int> woken = 0;
  std::vector<std::thread> threads;
  for (int t = 0; t < 3; ++t) {
    threads.emplace_back([&] { woken += WaitForSingleObject(manual, kLong) == WAIT_OBJECT_0; });
  }
  while (woken < 3) {
    EXPECT_TRUE(PulseEvent(manual));
    Sleep(1);
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(Look(manual), WAIT_TIMEOUT);
}

TEST(Wait, SemaphoresCountWithinTheirBounds) {
  LONG previous = -1;
  const Handle semaphore(NewSemaphore(0, 2));
  EXPECT_FALSE(ReleaseSemaphore(semaphore, 3, &previous));
  EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_TOO_MANY_POSTS));
  EXPECT_EQ(Look(semaphore), WAIT_TIMEOUT);
  EXPECT_TRUE(ReleaseSemaphore(semaphore, 1, nullptr));
  EXPECT_TRUE(ReleaseSemaphore(semaphore, 1, &previous));
  EXPECT_EQ(previous, 1);
  EXPECT_FALSE(ReleaseSemaphore(semaphore, 0x7FFFFFFF, nullptr));
  EXPECT_EQ(Look(semaphore), WAIT_OBJECT_0);
  EXPECT_EQ(Look(semaphore), WAIT_OBJECT_0);
  EXPECT_EQ(Look(semaphore), WAIT_TIMEOUT);
  EXPECT_FALSE(ReleaseSemaphore(semaphore, -1, nullptr));
  EXPECT_TRUE(UnderWine() || !ReleaseSemaphore(semaphore, 0, nullptr));

  constexpr LONG kBad[][2] = {{-1, 1}, {2, 1}, {0, 0}, {0, -1}};
  for (const auto& [count, maximum] : kBad) {
    EXPECT_EQ(NewSemaphore(count, maximum), nullptr) << count << " of " << maximum;
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_INVALID_PARAMETER));
  }
}

TEST(Wait, AMutexBelongsToAThread) {
  const Handle mutex(NewMutex(true));
  EXPECT_EQ(Look(mutex), WAIT_OBJECT_0) << "the owner takes it again";
  const auto release = [&]() -> DWORD {
    SetLastError(0);
    return ReleaseMutex(mutex) ? 0 : GetLastError();
  };
  EXPECT_EQ(Elsewhere([&] { return Look(mutex); }), WAIT_TIMEOUT);
  EXPECT_EQ(Elsewhere(release), static_cast<DWORD>(ERROR_NOT_OWNER));
  EXPECT_EQ(release(), 0u);
  EXPECT_EQ(Elsewhere([&] { return Look(mutex); }), WAIT_TIMEOUT) << "taken twice";
  EXPECT_EQ(release(), 0u);
  EXPECT_EQ(release(), static_cast<DWORD>(ERROR_NOT_OWNER));
}

TEST(Wait, AMutexIsAbandonedByAThreadThatEnds) {
  const Handle mutex(NewMutex(false)), other(NewMutex(false)), event(NewEvent(true, true));
  const auto take = [&] { return Look(mutex); };
  EXPECT_EQ(Elsewhere(take), WAIT_OBJECT_0);
  EXPECT_EQ(Elsewhere(take), WAIT_ABANDONED) << "told once for each time";
  EXPECT_EQ(Look(mutex), WAIT_ABANDONED);
  EXPECT_EQ(Look(mutex), WAIT_OBJECT_0);
  EXPECT_TRUE(ReleaseMutex(mutex));
  EXPECT_TRUE(ReleaseMutex(mutex));
  EXPECT_FALSE(ReleaseMutex(mutex));

  const HANDLE objects[] = {other, mutex, event};
  EXPECT_EQ(Elsewhere([&] { return Look(other), take(); }), WAIT_OBJECT_0);
  EXPECT_EQ(WaitForMultipleObjects(2, &objects[1], FALSE, 0), WAIT_ABANDONED_0);
  EXPECT_TRUE(ReleaseMutex(mutex));
  const DWORD all = WaitForMultipleObjects(3, objects, TRUE, 0);
  EXPECT_GE(all, WAIT_ABANDONED_0);
  EXPECT_LT(all, WAIT_ABANDONED_0 + 3);
  EXPECT_TRUE(ReleaseMutex(mutex));
  EXPECT_TRUE(ReleaseMutex(other));
}

// Closed while it is owned: the thread's end finds nothing to abandon.
TEST(Wait, AnOwnedMutexMayBeClosed) {
  EXPECT_EQ(Elsewhere([&] { return CloseHandle(NewMutex(true)); }), 1u);
}

TEST(Wait, SeveralObjects) {
  const Handle a(NewEvent(false, false)), b(NewEvent(false, true)), c(NewSemaphore(1, 1));
  const HANDLE abc[] = {a, b, c};
  const HANDLE twice[] = {b, b};
  EXPECT_EQ(WaitForMultipleObjects(3, abc, TRUE, 0), WAIT_TIMEOUT);
  EXPECT_EQ(WaitForMultipleObjects(3, abc, TRUE, 3), WAIT_TIMEOUT);
  EXPECT_EQ(WaitForMultipleObjects(3, abc, FALSE, 0), WAIT_OBJECT_0 + 1) << "none was taken before";
  EXPECT_EQ(WaitForMultipleObjects(3, abc, FALSE, 0), WAIT_OBJECT_0 + 2);
  EXPECT_EQ(WaitForMultipleObjects(3, abc, FALSE, 0), WAIT_TIMEOUT);
  EXPECT_TRUE(SetEvent(a) && SetEvent(b) && ReleaseSemaphore(c, 1, nullptr));
  EXPECT_EQ(WaitForMultipleObjects(3, abc, TRUE, kLong), WAIT_OBJECT_0);
  EXPECT_EQ(WaitForMultipleObjects(3, abc, FALSE, 0), WAIT_TIMEOUT) << "all were taken";
  EXPECT_TRUE(SetEvent(b));
  EXPECT_EQ(WaitForMultipleObjects(2, twice, FALSE, 0), WAIT_OBJECT_0);

  std::vector<HANDLE> many(MAXIMUM_WAIT_OBJECTS + 1, a);
  many[MAXIMUM_WAIT_OBJECTS - 1] = b;
  EXPECT_TRUE(SetEvent(b));
  EXPECT_EQ(WaitForMultipleObjects(MAXIMUM_WAIT_OBJECTS, many.data(), FALSE, 0),
            DWORD{MAXIMUM_WAIT_OBJECTS - 1});
  for (const DWORD count : {0, MAXIMUM_WAIT_OBJECTS + 1}) {
    EXPECT_EQ(WaitForMultipleObjects(count, many.data(), FALSE, 0), WAIT_FAILED);
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_INVALID_PARAMETER));
  }
  if (!UnderWine()) {
    EXPECT_EQ(WaitForMultipleObjects(2, twice, TRUE, 0), WAIT_FAILED);
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_INVALID_PARAMETER));
  }
}

TEST(Wait, BadHandlesAreRefused) {
  const Handle event(NewEvent(true, true)), mutex(NewMutex(false));
  const HANDLE closed = NewEvent(true, true);
  EXPECT_TRUE(CloseHandle(closed));
  const HANDLE two[] = {event, closed};
  const std::pair<const char*, std::function<bool()>> kCalls[] = {
      {"wait null", [] { return Look(nullptr) != WAIT_FAILED; }},
      {"wait closed", [&] { return Look(closed) != WAIT_FAILED; }},
      {"wait any", [&] { return WaitForMultipleObjects(2, two, FALSE, 0) != WAIT_FAILED; }},
      {"wait all", [&] { return WaitForMultipleObjects(2, two, TRUE, 0) != WAIT_FAILED; }},
      {"close null", [] { return CloseHandle(nullptr); }},
      {"close twice", [&] { return CloseHandle(closed); }},
      {"close garbage", [] { return CloseHandle(reinterpret_cast<HANDLE>(0x7FFFFFF0)); }},
      {"set mutex", [&] { return SetEvent(mutex); }},
      {"reset mutex", [&] { return ResetEvent(mutex); }},
      {"pulse closed", [&] { return PulseEvent(closed); }},
      {"release event", [&] { return ReleaseMutex(event); }},
      {"release event as semaphore", [&] { return ReleaseSemaphore(event, 1, nullptr); }},
      {"exit code of event",
       [&] {
         DWORD code;
         return GetExitCodeThread(event, &code);
       }},
  };
  for (const auto& [what, succeeds] : kCalls) {
    SetLastError(0);
    EXPECT_FALSE(succeeds()) << what;
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_INVALID_HANDLE)) << what;
  }
  EXPECT_TRUE(CloseHandle(GetCurrentThread())) << "stands for nothing that can be closed";
#ifndef _WIN32
  EXPECT_EQ(CreateEventW(nullptr, TRUE, TRUE, WTEXT("name")), nullptr) << "not shared, so refused";
  EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_NOT_SUPPORTED));
#endif
}

// A handle that was closed isn't that of an object made later.
TEST(Wait, HandlesAreNotSoonUsedAgain) {
#ifdef _WIN32
  GTEST_SKIP() << "Windows may give a number again";
#endif
  const HANDLE closed = NewEvent(true, true);
  EXPECT_TRUE(CloseHandle(closed));
  for (int i = 0; i < 100; ++i) {
    const Handle next(NewEvent(true, true));
    EXPECT_EQ(Look(closed), WAIT_FAILED);
  }
}

struct Job {
  HANDLE begin;
  DWORD id;
};

DWORD WINAPI RunJob(LPVOID parameter) {
  const auto* job = static_cast<const Job*>(parameter);
  WaitForSingleObject(job->begin, kLong);
  return GetCurrentThreadId() == job->id ? 7 : 8;
}

DWORD WINAPI ReturnStackSpace(LPVOID) {
  // More than most systems give by themselves.
  volatile char space[12 << 20];
  for (std::size_t i = 0; i < sizeof(space); i += 1024) space[i] = 1;
  return 9;
}

TEST(Threads, AreSignalledWhenTheyEnd) {
  const Handle begin(NewEvent(true, false));
  Job job{begin, 0};
  const Handle thread(CreateThread(nullptr, 0, RunJob, &job, 0, &job.id));
  DWORD code = 0;
  EXPECT_TRUE(GetExitCodeThread(thread, &code));
  EXPECT_EQ(code, DWORD{STILL_ACTIVE});
  EXPECT_EQ(Look(thread), WAIT_TIMEOUT);
  EXPECT_TRUE(SetEvent(begin));
  EXPECT_EQ(WaitForSingleObject(thread, kLong), WAIT_OBJECT_0);
  EXPECT_EQ(Look(thread), WAIT_OBJECT_0) << "and stay so";
  EXPECT_TRUE(GetExitCodeThread(thread, &code));
  EXPECT_EQ(code, 7u);

  const Handle large(CreateThread(nullptr, 16 << 20, ReturnStackSpace, nullptr, 0, nullptr));
  EXPECT_EQ(WaitForSingleObject(large, kLong), WAIT_OBJECT_0);
  EXPECT_TRUE(GetExitCodeThread(large, &code));
  EXPECT_EQ(code, 9u);
  EXPECT_EQ(WaitForSingleObject(GetCurrentThread(), 1), WAIT_TIMEOUT) << "nobody sees his own end";
}

// Its local objects are destroyed before anyone hears of the end.
struct Farewell {
  ~Farewell() {
    if (said != nullptr) *said = true;
  }
  bool* said = nullptr;
};

DWORD WINAPI LeaveFarewell(LPVOID said) {
  thread_local Farewell farewell;
  farewell.said = static_cast<bool*>(said);
  return 0;
}

TEST(Threads, EndBehindTheirLocalObjects) {
#ifdef _WIN32
  GTEST_SKIP() << "mingw-w64 frees such objects before it destroys them";
#endif
  for (int round = 0; round < 50; ++round) {
    bool said = false;
    const Handle thread(CreateThread(nullptr, 0, LeaveFarewell, &said, 0, nullptr));
    ASSERT_EQ(WaitForSingleObject(thread, kLong), WAIT_OBJECT_0);
    ASSERT_TRUE(said);
  }
}

std::uint64_t Ticks(const FILETIME& time) {
  return std::uint64_t{time.dwHighDateTime} << 32 | time.dwLowDateTime;
}

struct ThreadTimes {
  std::uint64_t creation, exit, processor;
  explicit ThreadTimes(HANDLE thread) {
    FILETIME times[4] = {};
    EXPECT_TRUE(GetThreadTimes(thread, &times[0], &times[1], &times[2], &times[3]));
    creation = Ticks(times[0]);
    exit = Ticks(times[1]);
    processor = Ticks(times[2]) + Ticks(times[3]);
  }
};

DWORD WINAPI Work(LPVOID) {
  // Until the clock of the thread has gone on by 50 milliseconds.
  const std::uint64_t start = ThreadTimes(GetCurrentThread()).processor;
  while (ThreadTimes(GetCurrentThread()).processor < start + 500000) {
  }
  return 0;
}

TEST(Threads, CountTheProcessorsTime) {
  const ThreadTimes before(GetCurrentThread());
  const Handle thread(CreateThread(nullptr, 0, Work, nullptr, 0, nullptr));
  EXPECT_EQ(WaitForSingleObject(thread, kLong), WAIT_OBJECT_0);
  const ThreadTimes worked(thread), after(GetCurrentThread());
  // Wine forgets them with the thread.
  EXPECT_TRUE(UnderWine() || worked.processor >= 500000);
  EXPECT_GE(worked.exit, worked.creation + 500000);
  EXPECT_GE(after.processor, before.processor);
  EXPECT_EQ(after.creation, before.creation);
  EXPECT_LE(before.creation, worked.creation);
  EXPECT_GT(before.creation, 0x01D00000u * (std::uint64_t{1} << 32)) << "this century";
  const ThreadTimes again(thread);
  EXPECT_EQ(again.exit, worked.exit);
  EXPECT_EQ(again.processor, worked.processor);
}

// Waits against a model of the rules: a thread at a time makes a random call, whose result the
// model knows; some of the calls wait without end until a later one lets them go.

enum class Kind { kAutomatic, kManual, kMutex, kSemaphore };

constexpr Kind kKinds[] = {Kind::kAutomatic, Kind::kAutomatic, Kind::kManual,   Kind::kMutex,
                           Kind::kMutex,     Kind::kMutex,     Kind::kSemaphore};
constexpr int kObjects = std::size(kKinds);
constexpr int kThreads = 4;
constexpr int kMaxCount = 3;  // of a semaphore

struct ModelObject {
  Kind kind;
  int count = 0;  // of a semaphore, of an event that is set 1, how often a mutex was taken
  int owner = -1;
  bool abandoned = false;

  bool operator==(const ModelObject&) const = default;
  bool CanBeTaken(int thread) const {
    return kind == Kind::kMutex ? owner == -1 || owner == thread : count > 0;
  }
  bool Take(int thread) {
    if (kind == Kind::kMutex) {
      owner = thread;
      ++count;
    } else if (kind != Kind::kManual) {
      --count;
    }
    return std::exchange(abandoned, false);
  }
};

struct ModelWait {
  int thread;
  std::vector<int> objects;
  bool all;

  bool operator==(const ModelWait&) const = default;
};

struct ModelEnd {
  int thread;
  DWORD result;

  auto operator<=>(const ModelEnd&) const = default;
};

struct Model {
  std::vector<ModelObject> objects;
  std::vector<ModelWait> waiting;

  Model() {
    for (const Kind kind : kKinds) objects.push_back({kind});
  }
  bool operator==(const Model&) const = default;

  bool IsWaiting(int thread) const {
    return std::any_of(waiting.begin(), waiting.end(),
                       [=](const ModelWait& wait) { return wait.thread == thread; });
  }
  int Owned(int thread) const {
    return static_cast<int>(std::count_if(objects.begin(), objects.end(), [=](const auto& object) {
      return object.kind == Kind::kMutex && object.owner == thread;
    }));
  }

  // The result of a wait that can end now, WAIT_TIMEOUT otherwise.
  DWORD TryWait(const ModelWait& wait) {
    const auto can = [&](int object) {
      return objects[static_cast<std::size_t>(object)].CanBeTaken(wait.thread);
    };
    const auto take = [&](int object) {
      return objects[static_cast<std::size_t>(object)].Take(wait.thread);
    };
    if (wait.all) {
      if (!std::all_of(wait.objects.begin(), wait.objects.end(), can)) return WAIT_TIMEOUT;
      bool abandoned = false;
      for (const int object : wait.objects) abandoned |= take(object);
      return abandoned ? WAIT_ABANDONED_0 : WAIT_OBJECT_0;
    }
    const auto first = std::find_if(wait.objects.begin(), wait.objects.end(), can);
    if (first == wait.objects.end()) return WAIT_TIMEOUT;
    const auto place = static_cast<DWORD>(first - wait.objects.begin());
    return (take(*first) ? WAIT_ABANDONED_0 : WAIT_OBJECT_0) + place;
  }

  // Ends the waits that can end, in their order or the other way round.
  std::vector<ModelEnd> EndWaits(bool reversed) {
    std::vector<ModelEnd> ends;
    if (reversed) std::reverse(waiting.begin(), waiting.end());
    for (std::size_t i = 0; i < waiting.size();) {
      const DWORD result = TryWait(waiting[i]);
      if (result == WAIT_TIMEOUT) {
        ++i;
        continue;
      }
      ends.push_back({waiting[i].thread, result});
      waiting.erase(waiting.begin() + static_cast<std::ptrdiff_t>(i));
      i = 0;
    }
    if (reversed) std::reverse(waiting.begin(), waiting.end());
    std::sort(ends.begin(), ends.end());
    return ends;
  }
};

// What a call gave: its result and, where it failed, the last error.
struct Outcome {
  DWORD result;
  DWORD error;

  bool operator==(const Outcome&) const = default;
};

Outcome OutcomeOf(BOOL result) {
  return {static_cast<DWORD>(result), result ? 0 : GetLastError()};
}

// A thread that makes the calls that it is given, one at a time.
class Caller {
 public:
  Caller() : m_thread([this] { Run(); }) {}
  ~Caller() {
    Give(nullptr);
    m_thread.join();
  }
  void Give(std::function<Outcome()> call) {
    const std::lock_guard lock(m_mutex);
    m_call = std::move(call);
    m_state = State::kGiven;
    m_changed.notify_all();
  }
  bool IsDone() {
    const std::lock_guard lock(m_mutex);
    return m_state == State::kDone;
  }
  Outcome Result() {
    std::unique_lock lock(m_mutex);
    m_changed.wait(lock, [this] { return m_state == State::kDone; });
    return m_outcome;
  }

 private:
  enum class State { kNone, kGiven, kDone };

  void Run() {
    std::unique_lock lock(m_mutex);
    for (;;) {
      m_changed.wait(lock, [this] { return m_state == State::kGiven; });
      if (m_call == nullptr) return;
      m_state = State::kNone;
      lock.unlock();
      const Outcome outcome = m_call();
      lock.lock();
      m_outcome = outcome;
      m_state = State::kDone;
      m_changed.notify_all();
    }
  }

  std::mutex m_mutex;
  std::condition_variable m_changed;
  State m_state = State::kNone;
  std::function<Outcome()> m_call;
  Outcome m_outcome{};
  std::thread m_thread;
};

class RandomProgram {
 public:
  explicit RandomProgram(unsigned seed) : m_random(seed) {
    for (const Kind kind : kKinds) {
      m_handles.push_back(kind == Kind::kMutex       ? NewMutex(false)
                          : kind == Kind::kSemaphore ? NewSemaphore(0, kMaxCount)
                                                     : NewEvent(kind == Kind::kManual, false));
    }
    for (auto& caller : m_callers) caller = std::make_unique<Caller>();
  }
  ~RandomProgram() {
    for (const HANDLE handle : m_handles) EXPECT_TRUE(CloseHandle(handle));
  }

  void Run(int steps) {
    for (int i = 0; i < steps && !testing::Test::HasFailure(); ++i) Step();
    if (!testing::Test::HasFailure()) LetAllGo();
  }

 private:
  int Random(int count) { return static_cast<int>(m_random() % static_cast<unsigned>(count)); }

  void Step() {
    int thread = Random(kThreads);
    while (m_model.IsWaiting(thread)) thread = Random(kThreads);
    const int choice = Random(20);
    if (choice == 0) return EndThread(thread);
    if (choice < 11) return Change(thread, Random(kObjects), Random(2) == 0, false);
    Wait(thread);
  }

  // Sets or resets an event, releases a mutex or adds to a semaphore.
  void Change(int thread, int object, bool set, bool fully) {
    const HANDLE handle = m_handles[static_cast<std::size_t>(object)];
    Model next = m_model;
    ModelObject& state = next.objects[static_cast<std::size_t>(object)];
    Outcome expected{TRUE, 0};
    std::function<Outcome()> call;
    if (state.kind == Kind::kMutex) {
      if (state.owner != thread) {
        expected = {FALSE, ERROR_NOT_OWNER};
      } else if (--state.count == 0) {
        state.owner = -1;
      }
      call = [=] { return OutcomeOf(ReleaseMutex(handle)); };
    } else if (state.kind == Kind::kSemaphore) {
      const int count = fully ? std::max(1, kMaxCount - state.count) : 1 + Random(kMaxCount);
      if (state.count + count > kMaxCount) {
        expected = {FALSE, ERROR_TOO_MANY_POSTS};
      } else {
        state.count += count;
      }
      call = [=] { return OutcomeOf(ReleaseSemaphore(handle, count, nullptr)); };
    } else {
      state.count = set ? 1 : 0;
      call = [=] { return OutcomeOf(set ? SetEvent(handle) : ResetEvent(handle)); };
    }
    std::vector<ModelEnd> ends;
    if (!EndsAreCertain(next, ends)) return;
    const Outcome outcome = Make(thread, call);
    EXPECT_EQ(outcome, expected) << "object " << object;
    Expect(next, ends);
  }

  // For some objects, without end only where another thread can let it go.
  void Wait(int thread) {
    ModelWait wait{thread, {}, Random(2) == 0};
    std::vector<HANDLE> handles;
    const int count = 1 + Random(4);
    while (static_cast<int>(handles.size()) < count) {
      const int object = Random(kObjects);
      if (std::count(wait.objects.begin(), wait.objects.end(), object) != 0) continue;
      wait.objects.push_back(object);
      handles.push_back(m_handles[static_cast<std::size_t>(object)]);
    }
    const bool single = count == 1 && Random(2) == 0;
    const bool endless = m_model.waiting.size() + 1 < kThreads && m_model.Owned(thread) == 0 &&
                         IsServedWithOthers(wait) && Random(3) > 0;
    const auto call = [=, all = wait.all] {
      const DWORD time = endless ? INFINITE : 0;
      return Outcome{single ? WaitForSingleObject(handles[0], time)
                            : WaitForMultipleObjects(static_cast<DWORD>(handles.size()),
                                                     handles.data(), all, time),
                     0};
    };
    const DWORD expected = m_model.TryWait(wait);
    if (expected == WAIT_TIMEOUT && endless) {
      m_model.waiting.push_back(wait);
      m_callers[static_cast<std::size_t>(thread)]->Give(call);
      return;
    }
    ExpectResult(Make(thread, call).result, expected, wait);
  }

  // Whether others that wait now needn't be left without by this wait, so that all can be let go.
  bool IsServedWithOthers(const ModelWait& wait) const {
    return std::none_of(wait.objects.begin(), wait.objects.end(), [this](int object) {
      const Kind kind = kKinds[object];
      return (kind == Kind::kAutomatic || kind == Kind::kMutex) &&
             std::any_of(m_model.waiting.begin(), m_model.waiting.end(), [=](const auto& other) {
               return std::count(other.objects.begin(), other.objects.end(), object) != 0;
             });
    });
  }

  // The thread goes, and a new one takes its place.
  void EndThread(int thread) {
    if (m_model.Owned(thread) > 1) return;
    Model next = m_model;
    for (ModelObject& object : next.objects) {
      if (object.kind != Kind::kMutex || object.owner != thread) continue;
      object.owner = -1;
      object.count = 0;
      object.abandoned = true;
    }
    std::vector<ModelEnd> ends;
    if (!EndsAreCertain(next, ends)) return;
    m_callers[static_cast<std::size_t>(thread)] = std::make_unique<Caller>();
    Expect(next, ends);
  }

  // Ends the waits of the model. False where it matters which comes first.
  static bool EndsAreCertain(Model& model, std::vector<ModelEnd>& ends) {
    Model other = model;
    ends = model.EndWaits(false);
    return ends == other.EndWaits(true) && model == other;
  }

  Outcome Make(int thread, const std::function<Outcome()>& call) {
    Caller& caller = *m_callers[static_cast<std::size_t>(thread)];
    caller.Give(call);
    return caller.Result();
  }

  // The waits that the model has ended have ended, and no others.
  void Expect(const Model& next, const std::vector<ModelEnd>& ends) {
    for (const ModelEnd& end : ends) {
      const auto wait = std::find_if(m_model.waiting.begin(), m_model.waiting.end(),
                                     [&](const auto& w) { return w.thread == end.thread; });
      ExpectResult(m_callers[static_cast<std::size_t>(end.thread)]->Result().result, end.result,
                   *wait);
    }
    m_model = next;
    for (const ModelWait& wait : m_model.waiting) {
      EXPECT_FALSE(m_callers[static_cast<std::size_t>(wait.thread)]->IsDone());
    }
  }

  // Which place an abandoned mutex among all has isn't settled.
  static void ExpectResult(DWORD result, DWORD expected, const ModelWait& wait) {
    if (wait.all && expected == WAIT_ABANDONED_0) {
      EXPECT_GE(result, WAIT_ABANDONED_0);
      EXPECT_LT(result, WAIT_ABANDONED_0 + wait.objects.size());
    } else {
      EXPECT_EQ(result, expected);
    }
  }

  // Whoever waits owns nothing, so all mutexes come free, and then events and counts are enough.
  void LetAllGo() {
    while (!m_model.waiting.empty() && !testing::Test::HasFailure()) {
      for (int thread = 0; thread < kThreads; ++thread) {
        if (m_model.IsWaiting(thread)) continue;
        for (int object = 0; object < kObjects; ++object) Change(thread, object, true, true);
      }
    }
  }

  std::mt19937 m_random;
  Model m_model;
  std::vector<HANDLE> m_handles;
  std::unique_ptr<Caller> m_callers[kThreads];
};

TEST(Wait, RandomProgramsAgreeWithTheModel) {
  for (unsigned seed = 1; seed <= 60 && !HasFailure(); ++seed) {
    SCOPED_TRACE("seed " + std::to_string(seed));
    RandomProgram(seed).Run(120);
  }
}

// What threads take at once they have alone, nothing gets lost, and nobody sleeps for ever.
class Exchange {
 public:
  void Run() {
    std::vector<std::thread> threads;
    for (unsigned t = 0; t < 4; ++t) threads.emplace_back([this, t] { Trade(t); });
    for (std::thread& thread : threads) thread.join();
    for (const HANDLE handle : m_handles) EXPECT_NE(Look(handle), WAIT_TIMEOUT);
    EXPECT_EQ(Look(m_handles[kTickets]), WAIT_OBJECT_0);
    EXPECT_EQ(Look(m_handles[kTickets]), WAIT_TIMEOUT);
    for (std::size_t i = 0; i < kMutexes; ++i) EXPECT_TRUE(ReleaseMutex(m_handles[i]));
  }

 private:
  static constexpr std::size_t kMutexes = 3;
  static constexpr std::size_t kTickets = kMutexes;    // a semaphore of two
  static constexpr std::size_t kToken = kMutexes + 1;  // an event
  static constexpr std::size_t kThings = kMutexes + 2;

  void Trade(unsigned seed) {
    std::mt19937 random(seed);
    for (int round = 0; round < 400; ++round) {
      std::vector<std::size_t> things;
      std::vector<HANDLE> handles;
      for (std::size_t i = 0; i < kThings; ++i) {
        if (random() % 2 != 0) continue;
        things.push_back(i);
        handles.push_back(m_handles[i]);
      }
      if (things.empty()) continue;
      const bool all = random() % 2 == 0;
      const DWORD time = random() % 8 == 0 ? 1 : kLong;
      const auto count = static_cast<DWORD>(handles.size());
      const DWORD result = WaitForMultipleObjects(count, handles.data(), all, time);
      if (result == WAIT_TIMEOUT && time == 1) continue;
      const DWORD place = result >= WAIT_ABANDONED_0 ? result - WAIT_ABANDONED_0 : result;
      ASSERT_LT(place, count);
      if (!all) things = {things[place]};
      // Now and then others come while it has them, and some give up.
      if (random() % 16 == 0) Sleep(random() % 3);
      for (const std::size_t thing : things) Use(thing);
    }
    // One that isn't given back: it is abandoned.
    EXPECT_LE(WaitForSingleObject(m_handles[seed % kMutexes], kLong), WAIT_ABANDONED);
  }

  void Use(std::size_t thing) {
    if (thing == kTickets) {
      EXPECT_LE(++m_ticketsOut, 2);
      --m_ticketsOut;
      EXPECT_TRUE(ReleaseSemaphore(m_handles[thing], 1, nullptr));
      return;
    }
    EXPECT_EQ(++m_users[thing], 1);
    --m_users[thing];
    EXPECT_TRUE(thing == kToken ? SetEvent(m_handles[thing]) : ReleaseMutex(m_handles[thing]));
  }

  const Handle m_handles[kThings] = {Handle(NewMutex(false)), Handle(NewMutex(false)),
                                     Handle(NewMutex(false)), Handle(NewSemaphore(2, 2)),
                                     Handle(NewEvent(false, true))};
  int m_users[kThings] = {};  // guarded by what it counts
  std::atomic<int> m_ticketsOut = 0;
};

// Where the time of a wait runs out as its object comes free, the object goes to the wait or stays,
// but isn't lost. The other calls keep those whose time has run out from leaving at once.
TEST(Wait, TimeOutsAndReleasesMeet) {
  const Handle semaphore(NewSemaphore(0, 0x7FFFFFFF)), other(NewEvent(true, true));
  std::atomic<int> taken = 0, waiting = 3;
  std::vector<std::thread> waiters;
  for (int t = 0; t < 3; ++t) {
    waiters.emplace_back([&] {
      for (int i = 0; i < 100; ++i) taken += WaitForSingleObject(semaphore, 1) == WAIT_OBJECT_0;
      --waiting;
    });
  }
  int released = 0;
  std::mt19937 random(5);
  while (waiting > 0) {
    for (unsigned i = random() % 8192; i > 0; --i) Look(other);
    released += ReleaseSemaphore(semaphore, 1, nullptr);
  }
  for (std::thread& waiter : waiters) waiter.join();
  while (Look(semaphore) == WAIT_OBJECT_0) ++taken;
  EXPECT_EQ(taken, released);
}

TEST(Wait, ThreadsTakeAndGiveBack) {
  Exchange().Run();
}

}  // namespace
