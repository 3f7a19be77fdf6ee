// Events, mutexes, semaphores and threads, and waiting for them.
#include <gtest/gtest.h>
#include <windows.h>

#include <algorithm>
#include <atomic>
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

#include "tests/winapi/ErrorOf.h"
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

// What becomes of them later the random programs below show.
TEST(Wait, ObjectsBeginAsAsked) {
  const Handle event(NewEvent(false, true)), mutex(NewMutex(true)), semaphore(NewSemaphore(1, 2));
  for (const HANDLE object : {HANDLE{event}, HANDLE{semaphore}}) {
    EXPECT_EQ(Look(object), WAIT_OBJECT_0);
    EXPECT_EQ(Look(object), WAIT_TIMEOUT) << "the first wait has taken it";
    EXPECT_EQ(WaitForSingleObject(object, 5), WAIT_TIMEOUT);
  }
  EXPECT_EQ(Elsewhere([&] { return Look(mutex); }), WAIT_TIMEOUT);
  EXPECT_TRUE(ReleaseMutex(mutex) && !ReleaseMutex(mutex));
  const Handle manual(NewEvent(true, true));
  EXPECT_EQ(Look(manual), WAIT_OBJECT_0);
  EXPECT_TRUE(PulseEvent(manual));
  EXPECT_EQ(Look(manual), WAIT_TIMEOUT) << "nobody waited";
}

// Whether a thread waits already can't be seen, so the pulse comes until it has met them all.
TEST(Wait, APulseWakesThoseThatWait) {
  const Handle manual(NewEvent(true, false));
  std::atomic<int> woken = 0;
  {
    std::vector<std::jthread> threads;
    for (int t = 0; t < 3; ++t) {
      threads.emplace_back([&] { woken += WaitForSingleObject(manual, kLong) == WAIT_OBJECT_0; });
    }
    for (; woken < 3; Sleep(1)) EXPECT_TRUE(PulseEvent(manual));
  }
  EXPECT_EQ(Look(manual), WAIT_TIMEOUT);
}

TEST(Wait, SemaphoresCountWithinTheirBounds) {
  LONG previous = -1;
  const Handle semaphore(NewSemaphore(0, 2));
  EXPECT_TRUE(ReleaseSemaphore(semaphore, 1, nullptr) && ReleaseSemaphore(semaphore, 1, &previous));
  EXPECT_EQ(previous, 1);
  EXPECT_EQ(ErrorOf(ReleaseSemaphore(semaphore, 0x7FFFFFFF, nullptr)), ERROR_TOO_MANY_POSTS);
  EXPECT_FALSE(ReleaseSemaphore(semaphore, -1, nullptr));
  EXPECT_TRUE(UnderWine() || !ReleaseSemaphore(semaphore, 0, nullptr));

  constexpr LONG kBad[][2] = {{-1, 1}, {2, 1}, {0, 0}, {0, -1}};
  for (const auto& [count, maximum] : kBad) {
    EXPECT_EQ(ErrorOf(NewSemaphore(count, maximum)), ERROR_INVALID_PARAMETER) << count;
  }
}

TEST(Wait, AThreadThatEndsAbandonsAllItsMutexes) {
  const Handle a(NewMutex(false)), b(NewMutex(false));
  EXPECT_EQ(Elsewhere([&] { return Look(a) + Look(b); }), WAIT_OBJECT_0);
  for (const HANDLE mutex : {HANDLE{a}, HANDLE{b}}) {
    EXPECT_EQ(Look(mutex), WAIT_ABANDONED);
    EXPECT_EQ(Look(mutex), WAIT_OBJECT_0) << "told once";
    EXPECT_TRUE(ReleaseMutex(mutex) && ReleaseMutex(mutex) && !ReleaseMutex(mutex));
  }
}

// Closed while it is owned: the thread's end finds nothing to abandon.
TEST(Wait, AnOwnedMutexMayBeClosed) {
  EXPECT_EQ(Elsewhere([&] { return CloseHandle(NewMutex(true)); }), 1u);
}

TEST(Wait, SeveralObjects) {
  const Handle a(NewEvent(false, false)), b(NewEvent(false, true));
  const HANDLE ab[] = {a, b}, twice[] = {b, b};
  EXPECT_EQ(WaitForMultipleObjects(2, ab, TRUE, 3), WAIT_TIMEOUT);
  EXPECT_EQ(WaitForMultipleObjects(2, twice, FALSE, 0), WAIT_OBJECT_0) << "wasn't taken before";
  std::vector<HANDLE> many(MAXIMUM_WAIT_OBJECTS + 1, a);
  many[MAXIMUM_WAIT_OBJECTS - 1] = b;
  EXPECT_TRUE(SetEvent(b));
  EXPECT_EQ(WaitForMultipleObjects(MAXIMUM_WAIT_OBJECTS, many.data(), FALSE, 0),
            DWORD{MAXIMUM_WAIT_OBJECTS - 1});
  const auto error = [](DWORD count, const HANDLE* handles, BOOL all) {
    return ErrorOf(WaitForMultipleObjects(count, handles, all, 0), WAIT_FAILED);
  };
  EXPECT_EQ(error(0, many.data(), FALSE), ERROR_INVALID_PARAMETER);
  EXPECT_EQ(error(MAXIMUM_WAIT_OBJECTS + 1, many.data(), FALSE), ERROR_INVALID_PARAMETER);
  EXPECT_TRUE(UnderWine() || error(2, twice, TRUE) == ERROR_INVALID_PARAMETER);
}

TEST(Wait, BadHandlesAreRefused) {
  const Handle event(NewEvent(true, true)), mutex(NewMutex(false));
  const HANDLE closed = NewEvent(true, true);
  EXPECT_TRUE(CloseHandle(closed));
  const HANDLE two[] = {event, closed};
  DWORD code;
  const long errors[] = {ErrorOf(Look(nullptr), WAIT_FAILED),
                         ErrorOf(Look(closed), WAIT_FAILED),
                         ErrorOf(WaitForMultipleObjects(2, two, FALSE, 0), WAIT_FAILED),
                         ErrorOf(WaitForMultipleObjects(2, two, TRUE, 0), WAIT_FAILED),
                         ErrorOf(CloseHandle(nullptr)),
                         ErrorOf(CloseHandle(closed)),
                         ErrorOf(CloseHandle(reinterpret_cast<HANDLE>(0x7FFFFFF0))),
                         ErrorOf(SetEvent(mutex)),
                         ErrorOf(ResetEvent(mutex)),
                         ErrorOf(PulseEvent(closed)),
                         ErrorOf(ReleaseMutex(event)),
                         ErrorOf(ReleaseSemaphore(event, 1, nullptr)),
                         ErrorOf(GetExitCodeThread(event, &code))};
  for (const long& error : errors) EXPECT_EQ(error, ERROR_INVALID_HANDLE) << &error - errors;
  EXPECT_TRUE(CloseHandle(GetCurrentThread())) << "stands for nothing that can be closed";
#ifndef _WIN32
  EXPECT_EQ(ErrorOf(CreateEventW(nullptr, TRUE, TRUE, WTEXT("name"))), ERROR_NOT_SUPPORTED)
      << "not shared, so refused";
  // Windows may give a number again.
  for (int i = 0; i < 100; ++i) {
    const Handle next(NewEvent(true, true));
    EXPECT_EQ(Look(closed), WAIT_FAILED) << "isn't soon used again";
  }
#endif
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
  // Wine forgets it with the thread, or a moment later.
  EXPECT_TRUE(UnderWine() || worked.processor >= 500000);
  EXPECT_GE(worked.exit, worked.creation + 500000);
  EXPECT_GE(after.processor, before.processor);
  EXPECT_EQ(after.creation, before.creation);
  EXPECT_LE(before.creation, worked.creation);
  EXPECT_GT(before.creation, 0x01D00000u * (std::uint64_t{1} << 32)) << "this century";
  const ThreadTimes again(thread);
  EXPECT_EQ(again.exit, worked.exit);
  EXPECT_TRUE(UnderWine() || again.processor == worked.processor);
}

// Waits against a model of the rules: a thread at a time makes a random call, whose result the
// model knows; some of the calls wait without end until a later one lets them go.

enum class Kind { kAutomatic, kManual, kMutex, kSemaphore };

constexpr Kind kKinds[] = {Kind::kAutomatic, Kind::kAutomatic, Kind::kManual,   Kind::kMutex,
                           Kind::kMutex,     Kind::kMutex,     Kind::kSemaphore};
constexpr std::size_t kObjects = std::size(kKinds), kThreads = 4, kNobody = kThreads;
constexpr int kMaxCount = 3;  // of a semaphore

struct ModelObject {
  Kind kind;
  int count = 0;  // of a semaphore, of an event that is set 1, how often a mutex was taken
  std::size_t owner = kNobody;
  bool abandoned = false;

  bool operator==(const ModelObject&) const = default;
  bool CanBeTaken(std::size_t thread) const {
    return kind == Kind::kMutex ? owner == kNobody || owner == thread : count > 0;
  }
  bool Take(std::size_t thread) {
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
  std::size_t thread;
  std::vector<std::size_t> objects;
  bool all;

  bool operator==(const ModelWait&) const = default;
};

using ModelEnd = std::pair<std::size_t, DWORD>;  // a thread and the result of its wait

struct Model {
  std::vector<ModelObject> objects;
  std::vector<ModelWait> waiting;

  Model() {
    for (const Kind kind : kKinds) objects.push_back({kind});
  }
  bool operator==(const Model&) const = default;

  bool IsWaiting(std::size_t thread) const {
    return std::any_of(waiting.begin(), waiting.end(),
                       [=](const ModelWait& wait) { return wait.thread == thread; });
  }
  auto Owned(std::size_t thread) const {
    return std::count_if(objects.begin(), objects.end(),
                         [=](const ModelObject& object) { return object.owner == thread; });
  }

  // The result of a wait that can end now, WAIT_TIMEOUT otherwise.
  DWORD TryWait(const ModelWait& wait) {
    const auto can = [&](std::size_t object) { return objects[object].CanBeTaken(wait.thread); };
    const auto take = [&](std::size_t object) { return objects[object].Take(wait.thread); };
    if (wait.all) {
      if (!std::all_of(wait.objects.begin(), wait.objects.end(), can)) return WAIT_TIMEOUT;
      bool abandoned = false;
      for (const std::size_t object : wait.objects) abandoned |= take(object);
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
using Outcome = std::pair<DWORD, DWORD>;

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
    m_isDone = false;
    m_changed.notify_all();
  }
  bool IsDone() {
    const std::lock_guard lock(m_mutex);
    return m_isDone;
  }
  Outcome Result() {
    std::unique_lock lock(m_mutex);
    m_changed.wait(lock, [this] { return m_isDone; });
    return m_outcome;
  }

 private:
  void Run() {
    std::unique_lock lock(m_mutex);
    for (;;) {
      m_changed.wait(lock, [this] { return !m_isDone; });
      if (m_call == nullptr) return;
      lock.unlock();
      const Outcome outcome = m_call();
      lock.lock();
      m_outcome = outcome;
      m_isDone = true;
      m_changed.notify_all();
    }
  }

  std::mutex m_mutex;
  std::condition_variable m_changed;
  bool m_isDone = true;
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
  std::size_t Random(std::size_t count) { return m_random() % count; }

  void Step() {
    std::size_t thread = Random(kThreads);
    while (m_model.IsWaiting(thread)) thread = Random(kThreads);
    const std::size_t choice = Random(20);
    if (choice == 0) return EndThread(thread);
    if (choice < 11) return Change(thread, Random(kObjects), Random(2) == 0, false);
    Wait(thread);
  }

  // Sets or resets an event, releases a mutex or adds to a semaphore.
  void Change(std::size_t thread, std::size_t object, bool set, bool fully) {
    const HANDLE handle = m_handles[object];
    Model next = m_model;
    ModelObject& state = next.objects[object];
    Outcome expected{TRUE, 0};
    std::function<Outcome()> call;
    if (state.kind == Kind::kMutex) {
      if (state.owner != thread) {
        expected = {FALSE, ERROR_NOT_OWNER};
      } else if (--state.count == 0) {
        state.owner = kNobody;
      }
      call = [=] { return OutcomeOf(ReleaseMutex(handle)); };
    } else if (state.kind == Kind::kSemaphore) {
      const int count =
          fully ? std::max(1, kMaxCount - state.count) : 1 + static_cast<int>(Random(kMaxCount));
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
    EXPECT_EQ(Make(thread, call), expected) << "object " << object;
    Expect(next, ends);
  }

  // For some objects, without end only where another thread can let it go.
  void Wait(std::size_t thread) {
    ModelWait wait{thread, {}, Random(2) == 0};
    std::vector<HANDLE> handles;
    const std::size_t count = 1 + Random(4);
    while (handles.size() < count) {
      const std::size_t object = Random(kObjects);
      if (std::count(wait.objects.begin(), wait.objects.end(), object) != 0) continue;
      wait.objects.push_back(object);
      handles.push_back(m_handles[object]);
    }
    const bool single = count == 1 && Random(2) == 0;
    const bool endless = m_model.waiting.size() + 1 < kThreads && m_model.Owned(thread) == 0 &&
                         IsServedWithOthers(wait) && Random(3) > 0;
    const auto call = [=, all = wait.all]() -> Outcome {
      const DWORD time = endless ? INFINITE : 0;
      if (single) return {WaitForSingleObject(handles[0], time), 0};
      return {WaitForMultipleObjects(static_cast<DWORD>(count), handles.data(), all, time), 0};
    };
    const DWORD expected = m_model.TryWait(wait);
    if (expected == WAIT_TIMEOUT && endless) {
      m_model.waiting.push_back(wait);
      m_callers[thread]->Give(call);
      return;
    }
    ExpectResult(Make(thread, call).first, expected, wait);
  }

  // Whether others that wait now needn't be left without by this wait, so that all can be let go.
  bool IsServedWithOthers(const ModelWait& wait) const {
    return std::none_of(wait.objects.begin(), wait.objects.end(), [this](std::size_t object) {
      const Kind kind = kKinds[object];
      return (kind == Kind::kAutomatic || kind == Kind::kMutex) &&
             std::any_of(m_model.waiting.begin(), m_model.waiting.end(), [=](const auto& other) {
               return std::count(other.objects.begin(), other.objects.end(), object) != 0;
             });
    });
  }

  // The thread goes, and a new one takes its place.
  void EndThread(std::size_t thread) {
    if (m_model.Owned(thread) > 1) return;
    Model next = m_model;
    for (ModelObject& object : next.objects) {
      if (object.owner == thread) object = {Kind::kMutex, 0, kNobody, true};
    }
    std::vector<ModelEnd> ends;
    if (!EndsAreCertain(next, ends)) return;
    m_callers[thread] = std::make_unique<Caller>();
    Expect(next, ends);
  }

  // Ends the waits of the model. False where it matters which comes first.
  static bool EndsAreCertain(Model& model, std::vector<ModelEnd>& ends) {
    Model other = model;
    ends = model.EndWaits(false);
    return ends == other.EndWaits(true) && model == other;
  }

  Outcome Make(std::size_t thread, const std::function<Outcome()>& call) {
    Caller& caller = *m_callers[thread];
    caller.Give(call);
    return caller.Result();
  }

  // The waits that the model has ended have ended, and no others.
  void Expect(const Model& next, const std::vector<ModelEnd>& ends) {
    for (const auto& [thread, result] : ends) {
      const auto wait = std::find_if(m_model.waiting.begin(), m_model.waiting.end(),
                                     [t = thread](const auto& w) { return w.thread == t; });
      ExpectResult(m_callers[thread]->Result().first, result, *wait);
    }
    m_model = next;
    for (const ModelWait& wait : m_model.waiting) EXPECT_FALSE(m_callers[wait.thread]->IsDone());
  }

  // Which place an abandoned mutex among all has isn't settled.
  static void ExpectResult(DWORD result, DWORD expected, const ModelWait& wait) {
    if (wait.all && expected == WAIT_ABANDONED_0) {
      EXPECT_LT(result - WAIT_ABANDONED_0, wait.objects.size());
    } else {
      EXPECT_EQ(result, expected);
    }
  }

  // Whoever waits owns nothing, so all mutexes come free, and then events and counts are enough.
  void LetAllGo() {
    while (!m_model.waiting.empty() && !testing::Test::HasFailure()) {
      for (std::size_t thread = 0; thread < kThreads; ++thread) {
        if (m_model.IsWaiting(thread)) continue;
        for (std::size_t object = 0; object < kObjects; ++object)
          Change(thread, object, true, true);
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
TEST(Wait, ThreadsTakeAndGiveBack) {
  constexpr std::size_t kThings = 5, kTickets = 3, kToken = 4;
  const Handle handles[kThings] = {Handle(NewMutex(false)), Handle(NewMutex(false)),
                                   Handle(NewMutex(false)), Handle(NewSemaphore(2, 2)),
                                   Handle(NewEvent(false, true))};
  int users[kThings] = {};  // guarded by what it counts
  std::atomic<int> ticketsOut = 0;
  const auto use = [&](std::size_t thing) {
    if (thing == kTickets) {
      EXPECT_LE(++ticketsOut, 2);
      --ticketsOut;
      EXPECT_TRUE(ReleaseSemaphore(handles[thing], 1, nullptr));
    } else {
      EXPECT_EQ(++users[thing], 1);
      --users[thing];
      EXPECT_TRUE(thing == kToken ? SetEvent(handles[thing]) : ReleaseMutex(handles[thing]));
    }
  };
  const auto trade = [&](unsigned seed) {
    std::mt19937 random(seed);
    for (int round = 0; round < 400; ++round) {
      std::vector<std::size_t> things;
      std::vector<HANDLE> wanted;
      for (std::size_t i = 0; i < kThings; ++i) {
        if (random() % 2 != 0) continue;
        things.push_back(i);
        wanted.push_back(handles[i]);
      }
      if (things.empty()) continue;
      const bool all = random() % 2 == 0;
      const DWORD time = random() % 8 == 0 ? 1 : kLong;
      const auto count = static_cast<DWORD>(wanted.size());
      const DWORD result = WaitForMultipleObjects(count, wanted.data(), all, time);
      if (result == WAIT_TIMEOUT && time == 1) continue;
      const DWORD place = result >= WAIT_ABANDONED_0 ? result - WAIT_ABANDONED_0 : result;
      ASSERT_LT(place, count);
      if (!all) things = {things[place]};
      // Now and then others come while it has them, and some give up.
      if (random() % 16 == 0) Sleep(random() % 3);
      for (const std::size_t thing : things) use(thing);
    }
    // One that isn't given back: it is abandoned.
    EXPECT_LE(WaitForSingleObject(handles[seed % kTickets], kLong), WAIT_ABANDONED);
  };
  {
    std::vector<std::jthread> threads;
    for (unsigned t = 0; t < 4; ++t) threads.emplace_back(trade, t);
  }
  for (const HANDLE handle : handles) EXPECT_NE(Look(handle), WAIT_TIMEOUT);
  EXPECT_EQ(Look(handles[kTickets]), WAIT_OBJECT_0);
  EXPECT_EQ(Look(handles[kTickets]), WAIT_TIMEOUT);
  for (std::size_t i = 0; i < kTickets; ++i) EXPECT_TRUE(ReleaseMutex(handles[i]));
}

// Where the time of a wait runs out as its object comes free, the object goes to the wait or stays,
// but isn't lost. The other calls keep those whose time has run out from leaving at once.
TEST(Wait, TimeOutsAndReleasesMeet) {
  const Handle semaphore(NewSemaphore(0, 0x7FFFFFFF)), other(NewEvent(true, true));
  std::atomic<int> taken = 0, waiting = 3;
  std::vector<std::jthread> waiters;
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
  while (Look(semaphore) == WAIT_OBJECT_0) ++taken;
  EXPECT_EQ(taken, released);
}

}  // namespace
