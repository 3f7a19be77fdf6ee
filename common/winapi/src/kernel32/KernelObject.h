// The objects behind handles, and waiting for them; internal to the layer.
//
// One lock guards the table of handles and the state of all objects, so that a wait for several of
// them sees all at one moment. Nobody sleeps under it, and who is to be woken is woken behind it. A
// wait that can end is given what it waits for by the thread that makes it so, before its own
// thread wakes; so nobody comes in between.
#pragma once

#include <windows.h>

#include <atomic>
#include <cstdint>
#include <ctime>
#include <memory>
#include <vector>

namespace winapi {

class KernelObject;
class Thread;

// Where a thread sleeps until another lets it go on.
class Parking {
 public:
  // Before others know of the sleeper.
  void Close() { m_open.store(0, std::memory_order_relaxed); }
  // Until it is open, or the time of CLOCK_MONOTONIC has come; null is never. Says whether it's
  // open.
  bool Sleep(const std::timespec* deadline);
  bool IsOpen() const { return m_open.load(std::memory_order_acquire) != 0; }

  // Opening and waking are two steps: once it is open the sleeper may go, and its place with it, so
  // that the second uses only the address.
  using Place = const std::atomic<std::uint32_t>*;
  Place Open() {
    m_open.store(1, std::memory_order_release);
    return &m_open;
  }
  static void Wake(Place place);

 private:
  std::atomic<std::uint32_t> m_open{0};
};

// A wait whose thread sleeps.
struct PendingWait {
  Thread& thread;
  std::vector<std::shared_ptr<KernelObject>> objects;
  bool all;
  DWORD result;
};

enum class KernelType {
  kEvent,
  kMutex,
  kSemaphore,
  kThread,
  kFile,
  kMapping,
  kPipe,
  kProcess,
  kSnapshot
};

class KernelObject : public std::enable_shared_from_this<KernelObject> {
 public:
  explicit KernelObject(KernelType type) : m_type(type) {}
  KernelObject(const KernelObject&) = delete;
  KernelObject& operator=(const KernelObject&) = delete;
  virtual ~KernelObject() = default;

  // Whether a wait of the thread would end now.
  virtual bool IsSignalled(const Thread& thread) const = 0;
  // What a wait that ends does to the object. Says whether it was an abandoned mutex.
  virtual bool Take(Thread& thread);
  // What the end of a thread does to an object that it owns.
  virtual void Abandon() {}

 private:
  friend class KernelLock;
  const KernelType m_type;
  std::vector<PendingWait*> m_waits;  // in the order in which they came
};

// The handle that stands for the thread that uses it, and that thread; null before it is known.
inline const HANDLE kCurrentThread = reinterpret_cast<HANDLE>(static_cast<std::intptr_t>(-2));
inline constinit thread_local Thread* currentThread = nullptr;

// The lock. All that touches an object or the table is done under it.
class KernelLock {
 public:
  KernelLock();
  // Unlocks, and then wakes whose waits have ended.
  ~KernelLock();
  KernelLock(const KernelLock&) = delete;
  KernelLock& operator=(const KernelLock&) = delete;

  HANDLE Add(std::shared_ptr<KernelObject> object);
  // The object behind a handle; null, and ERROR_INVALID_HANDLE, where there is none of that class.
  // That of the current thread has been used before the lock was taken.
  KernelObject* Find(HANDLE handle) const;
  template <class T>
  T* Find(HANDLE handle) const {
    return static_cast<T*>(FindOfType(handle, T::kType));
  }
  bool Close(HANDLE handle);

  // Ends the waits that can end now that the object is signalled.
  void EndWaits(KernelObject& object);
  // Gives a thread what it waits for, if that can be had now.
  bool TryTake(Thread& thread, KernelObject* const* objects, DWORD count, bool all,
               DWORD& result) const;
  // The wait begins, or ends without success.
  void Enlist(PendingWait& wait);
  void Dismiss(PendingWait& wait);

 private:
  KernelObject* FindOfType(HANDLE handle, KernelType type) const;
  std::vector<Parking::Place> m_woken;
  std::shared_ptr<KernelObject> m_closed;  // its end may take time, so it comes behind the lock
};

// A thread, made by CreateThread or known by its first wait or window.
class Thread : public KernelObject {
 public:
  static constexpr KernelType kType = KernelType::kThread;
  struct Times {
    std::uint64_t creation = 0;  // ticks of a FILETIME
    std::uint64_t exit = 0;
    std::uint64_t kernel = 0;
    std::uint64_t user = 0;
  };

  Thread() : KernelObject(kType) {}
  // That which runs this. It has ended when the destructors of its thread-local objects have run.
  static Thread& Current();
  bool IsSignalled(const Thread&) const override { return ended; }

  std::atomic<DWORD> id{0};  // 0 before it runs
  bool ended = false;
  DWORD exitCode = 0;
  Times times;  // those of the end, but for the creation
  std::vector<KernelObject*> owned;
  std::shared_ptr<void> windows;  // what user32 keeps of it; goes before waits for the thread end
  Parking parking;
};

}  // namespace winapi
