// Critical sections, events, mutexes and semaphores.
#include <algorithm>
#include <memory>
#include <utility>

#include "Fail.h"
#include "kernel32/KernelObject.h"

namespace winapi {

class Mutex : public KernelObject {
 public:
  static constexpr KernelType kType = KernelType::kMutex;
  Mutex() : KernelObject(kType) {}
  // Its handle may be closed while it is owned.
  ~Mutex() override {
    if (m_owner != nullptr) std::erase(m_owner->owned, this);
  }

  bool IsFree() const { return m_owner == nullptr; }
  bool IsSignalled(const Thread& thread) const override { return IsFree() || m_owner == &thread; }

  bool Take(Thread& thread) override {
    if (IsFree()) {
      m_owner = &thread;
      thread.owned.push_back(this);
    }
    ++m_count;
    return std::exchange(m_abandoned, false);
  }

  bool Release(Thread& thread) {
    if (m_owner != &thread) return false;
    if (--m_count > 0) return true;
    std::erase(thread.owned, this);
    m_owner = nullptr;
    return true;
  }

  // The caller takes it off the owner's list.
  void Abandon() override {
    m_owner = nullptr;
    m_count = 0;
    m_abandoned = true;
  }

 private:
  Thread* m_owner = nullptr;
  unsigned m_count = 0;
  bool m_abandoned = false;
};

namespace {

class Event : public KernelObject {
 public:
  static constexpr KernelType kType = KernelType::kEvent;
  Event(bool manualReset, bool set) : KernelObject(kType), m_manualReset(manualReset), m_set(set) {}

  void Set(bool set) { m_set = set; }
  bool IsSignalled(const Thread&) const override { return m_set; }
  bool Take(Thread&) override {
    if (!m_manualReset) m_set = false;
    return false;
  }

 private:
  const bool m_manualReset;
  bool m_set;
};

class Semaphore : public KernelObject {
 public:
  static constexpr KernelType kType = KernelType::kSemaphore;
  Semaphore(LONG count, LONG maximum) : KernelObject(kType), m_count(count), m_maximum(maximum) {}

  LONG Count() const { return m_count; }
  bool IsSignalled(const Thread&) const override { return m_count > 0; }
  bool Take(Thread&) override {
    --m_count;
    return false;
  }
  bool Release(LONG count) {
    if (count > m_maximum - m_count) return false;
    m_count += count;
    return true;
  }

 private:
  LONG m_count;
  const LONG m_maximum;
};

HANDLE Add(std::shared_ptr<KernelObject> object, LPCWSTR name) {
  if (name == nullptr) return KernelLock().Add(std::move(object));
  return Fail<HANDLE>(ERROR_NOT_SUPPORTED);
}

}  // namespace
}  // namespace winapi

using winapi::KernelLock;

void WINAPI InitializeCriticalSection(LPCRITICAL_SECTION section) {
  pthread_mutexattr_t attributes;
  pthread_mutexattr_init(&attributes);
  pthread_mutexattr_settype(&attributes, PTHREAD_MUTEX_RECURSIVE);
  pthread_mutex_init(&section->mutex, &attributes);
  pthread_mutexattr_destroy(&attributes);
}

void WINAPI EnterCriticalSection(LPCRITICAL_SECTION section) {
  pthread_mutex_lock(&section->mutex);
}

BOOL WINAPI TryEnterCriticalSection(LPCRITICAL_SECTION section) {
  return pthread_mutex_trylock(&section->mutex) == 0;
}

void WINAPI LeaveCriticalSection(LPCRITICAL_SECTION section) {
  pthread_mutex_unlock(&section->mutex);
}

void WINAPI DeleteCriticalSection(LPCRITICAL_SECTION section) {
  pthread_mutex_destroy(&section->mutex);
}

HANDLE WINAPI CreateEventW(LPSECURITY_ATTRIBUTES, BOOL manualReset, BOOL initialState,
                           LPCWSTR name) {
  return winapi::Add(std::make_shared<winapi::Event>(manualReset != FALSE, initialState != FALSE),
                     name);
}

BOOL WINAPI SetEvent(HANDLE event) {
  KernelLock lock;
  auto* const object = lock.Find<winapi::Event>(event);
  if (object == nullptr) return FALSE;
  object->Set(true);
  lock.EndWaits(*object);
  return TRUE;
}

BOOL WINAPI ResetEvent(HANDLE event) {
  const KernelLock lock;
  auto* const object = lock.Find<winapi::Event>(event);
  if (object == nullptr) return FALSE;
  object->Set(false);
  return TRUE;
}

BOOL WINAPI PulseEvent(HANDLE event) {
  KernelLock lock;
  auto* const object = lock.Find<winapi::Event>(event);
  if (object == nullptr) return FALSE;
  object->Set(true);
  lock.EndWaits(*object);
  object->Set(false);
  return TRUE;
}

HANDLE WINAPI CreateMutexW(LPSECURITY_ATTRIBUTES, BOOL initialOwner, LPCWSTR name) {
  const auto mutex = std::make_shared<winapi::Mutex>();
  const HANDLE handle = winapi::Add(mutex, name);
  if (handle != nullptr && initialOwner != FALSE) WaitForSingleObject(handle, 0);
  return handle;
}

BOOL WINAPI ReleaseMutex(HANDLE mutex) {
  KernelLock lock;
  auto* const object = lock.Find<winapi::Mutex>(mutex);
  if (object == nullptr) return FALSE;
  if (!object->Release(winapi::Thread::Current())) return Fail(ERROR_NOT_OWNER);
  if (object->IsFree()) lock.EndWaits(*object);
  return TRUE;
}

HANDLE WINAPI CreateSemaphoreW(LPSECURITY_ATTRIBUTES, LONG initialCount, LONG maximumCount,
                               LPCWSTR name) {
  if (maximumCount < 1 || initialCount < 0 || initialCount > maximumCount) {
    return Fail<HANDLE>(ERROR_INVALID_PARAMETER);
  }
  return winapi::Add(std::make_shared<winapi::Semaphore>(initialCount, maximumCount), name);
}

BOOL WINAPI ReleaseSemaphore(HANDLE semaphore, LONG count, LPLONG previousCount) {
  KernelLock lock;
  auto* const object = lock.Find<winapi::Semaphore>(semaphore);
  if (object == nullptr) return FALSE;
  if (count < 1) return Fail(ERROR_INVALID_PARAMETER);
  const LONG previous = object->Count();
  if (!object->Release(count)) return Fail(ERROR_TOO_MANY_POSTS);
  if (previousCount != nullptr) *previousCount = previous;
  lock.EndWaits(*object);
  return TRUE;
}
