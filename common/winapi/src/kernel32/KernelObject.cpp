#include "kernel32/KernelObject.h"

#include <linux/futex.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <cstddef>
#include <mutex>
#include <utility>

#include "Fail.h"

namespace winapi {
namespace {

constinit std::mutex kernelMutex;

// A handle is the number of its place and how often the place was used before, so that a closed one
// isn't taken for the next.
struct Entry {
  std::shared_ptr<KernelObject> object;
  std::uintptr_t use = 0;
};

constexpr int kFlagBits = 2;
constexpr int kPlaceBits = 24;
constexpr std::uintptr_t kPlaceMask = (std::uintptr_t{1} << kPlaceBits) - 1;
constexpr std::uintptr_t kUseMask = (std::uintptr_t{1} << (62 - kPlaceBits - kFlagBits)) - 1;

struct HandleTable {
  std::vector<Entry> entries{1};  // the first place stays free: no handle is null
  std::vector<std::size_t> free;

  Entry* Find(HANDLE handle) {
    const auto value = reinterpret_cast<std::uintptr_t>(handle);
    const std::size_t place = (value >> kFlagBits) & kPlaceMask;
    if (place >= entries.size() || entries[place].object == nullptr) return nullptr;
    return ToHandle(place) == handle ? &entries[place] : nullptr;
  }
  HANDLE ToHandle(std::size_t place) const {
    const std::uintptr_t use = entries[place].use & kUseMask;
    return reinterpret_cast<HANDLE>((use << kPlaceBits | place) << kFlagBits);
  }
};

// It outlives all threads and static objects.
HandleTable& Table() {
  static HandleTable& table = *new HandleTable;
  return table;
}

// The process and the thread of the caller, and others like them.
bool IsPseudoHandle(HANDLE handle) {
  const auto value = reinterpret_cast<std::intptr_t>(handle);
  return value < 0 && value >= -6;
}

long Futex(const std::atomic<std::uint32_t>* word, int operation, std::uint32_t value,
           const std::timespec* deadline) {
  static_assert(sizeof(*word) == sizeof(std::uint32_t));
  return syscall(SYS_futex, word, operation | FUTEX_PRIVATE_FLAG, value, deadline, nullptr,
                 FUTEX_BITSET_MATCH_ANY);
}

}  // namespace

bool Parking::Sleep(const std::timespec* deadline) {
  while (!IsOpen()) {
    const long result = Futex(&m_open, FUTEX_WAIT_BITSET, 0, deadline);
    if (result != 0 && errno == ETIMEDOUT) return IsOpen();
  }
  return true;
}

void Parking::Wake(Place place) {
  Futex(place, FUTEX_WAKE, 1, nullptr);
}

bool KernelObject::Take(Thread&) {
  return false;
}

KernelLock::KernelLock() {
  kernelMutex.lock();
}

KernelLock::~KernelLock() {
  kernelMutex.unlock();
  for (const Parking::Place place : m_woken) Parking::Wake(place);
}

HANDLE KernelLock::Add(std::shared_ptr<KernelObject> object) {
  HandleTable& table = Table();
  if (table.free.empty()) {
    if (table.entries.size() > kPlaceMask) {
      return Fail<HANDLE>(ERROR_TOO_MANY_OPEN_FILES);
    }
    table.free.push_back(table.entries.size());
    table.entries.emplace_back();
  }
  const std::size_t place = table.free.back();
  table.free.pop_back();
  table.entries[place].object = std::move(object);
  return table.ToHandle(place);
}

KernelObject* KernelLock::Find(HANDLE handle) const {
  if (handle == kCurrentThread) return currentThread;
  const Entry* const entry = Table().Find(handle);
  if (entry != nullptr) return entry->object.get();
  return Fail<KernelObject*>(ERROR_INVALID_HANDLE);
}

KernelObject* KernelLock::FindOfType(HANDLE handle, KernelType type) const {
  KernelObject* const object = Find(handle);
  if (object == nullptr || object->m_type == type) return object;
  return Fail<KernelObject*>(ERROR_INVALID_HANDLE);
}

bool KernelLock::Close(HANDLE handle) {
  if (IsPseudoHandle(handle)) return true;
  Entry* const entry = Table().Find(handle);
  if (entry == nullptr) {
    return Fail(ERROR_INVALID_HANDLE);
  }
  Table().free.push_back(static_cast<std::size_t>(entry - Table().entries.data()));
  ++entry->use;
  m_closed = std::move(entry->object);
  return true;
}

bool KernelLock::TryTake(Thread& thread, KernelObject* const* objects, DWORD count, bool all,
                         DWORD& result) const {
  DWORD signalled = 0;
  DWORD first = count;
  for (DWORD i = 0; i < count && (all || signalled == 0); ++i) {
    if (!objects[i]->IsSignalled(thread)) continue;
    if (signalled++ == 0) first = i;
  }
  if (signalled < (all ? count : 1)) return false;
  if (!all) {
    result = (objects[first]->Take(thread) ? WAIT_ABANDONED_0 : WAIT_OBJECT_0) + first;
    return true;
  }
  bool abandoned = false;
  for (DWORD i = 0; i < count; ++i) abandoned |= objects[i]->Take(thread);
  result = abandoned ? WAIT_ABANDONED_0 : WAIT_OBJECT_0;
  return true;
}

void KernelLock::Enlist(PendingWait& wait) {
  wait.thread.parking.Close();
  for (const auto& object : wait.objects) object->m_waits.push_back(&wait);
}

void KernelLock::Dismiss(PendingWait& wait) {
  for (const auto& object : wait.objects) std::erase(object->m_waits, &wait);
  wait.objects.clear();
}

void KernelLock::EndWaits(KernelObject& object) {
  if (object.m_waits.empty()) return;
  // A wait that ends may be the last that holds it.
  const auto kept = object.shared_from_this();
  std::size_t next = 0;
  while (next < object.m_waits.size()) {
    PendingWait& wait = *object.m_waits[next];
    if (!object.IsSignalled(wait.thread)) return;
    KernelObject* objects[MAXIMUM_WAIT_OBJECTS];
    DWORD count = 0;
    for (const auto& waited : wait.objects) objects[count++] = waited.get();
    if (!TryTake(wait.thread, objects, count, wait.all, wait.result)) {
      ++next;
      continue;
    }
    Parking& parking = wait.thread.parking;
    Dismiss(wait);
    m_woken.push_back(parking.Open());
  }
}

}  // namespace winapi

BOOL WINAPI CloseHandle(HANDLE object) {
  return winapi::KernelLock().Close(object);
}
