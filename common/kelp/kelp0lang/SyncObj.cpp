#include "kelp0lang/SyncObj.h"

#include <windows.h>

#include <cstddef>

namespace kelp {
namespace {

HANDLE Handle(const CSyncObj& object) {
  return reinterpret_cast<HANDLE>(static_cast<std::uintptr_t>(object.GetHandle()));
}

template <std::size_t n>
DWORD Wait(const CSyncObj* const (&objects)[n], bool all, std::uint64_t timeout) {
  HANDLE handles[n];
  for (std::size_t i = 0; i < n; ++i) handles[i] = Handle(*objects[i]);
  return WaitForMultipleObjects(n, handles, all, static_cast<DWORD>(timeout));
}

template <std::size_t n>
bool WaitAll(const CSyncObj* const (&objects)[n], std::uint64_t timeout) {
  return Wait(objects, true, timeout) < n;
}

template <std::size_t n>
int WaitAny(const CSyncObj* const (&objects)[n], std::uint64_t timeout) {
  const DWORD result = Wait(objects, false, timeout);
  return result == WAIT_TIMEOUT || result == WAIT_FAILED ? -1 : static_cast<int>(result);
}

}  // namespace

CSyncObj::~CSyncObj() {
  if (m_handle != nullptr) CloseHandle(m_handle);
  m_handle = nullptr;
}

bool CSyncObj::Lock(std::uint64_t milliseconds) {
  return WaitForSingleObject(m_handle, static_cast<DWORD>(milliseconds)) == WAIT_OBJECT_0;
}

bool CSyncObj::Lock() {
  return Lock(kSyncForever);
}

std::uint64_t CSyncObj::GetHandle() const {
  return reinterpret_cast<std::uintptr_t>(m_handle);
}

CSyncEvent::CSyncEvent(bool initialState, bool manualReset)
    : CSyncObj(CreateEventW(nullptr, manualReset, initialState, nullptr)) {}

bool CSyncEvent::Unlock() {
  return ::SetEvent(Handle(*this)) != FALSE;
}

bool CSyncEvent::ResetEvent() {
  return ::ResetEvent(Handle(*this)) != FALSE;
}

bool CSyncEvent::PulseEvent() {
  return ::PulseEvent(Handle(*this)) != FALSE;
}

CSyncMutex::CSyncMutex(bool initiallyOwned)
    : CSyncObj(CreateMutexW(nullptr, initiallyOwned, nullptr)) {}

bool CSyncMutex::Unlock() {
  return ReleaseMutex(Handle(*this)) != FALSE;
}

CSyncSemaphore::CSyncSemaphore(int initialCount, int maximumCount)
    : CSyncObj(CreateSemaphoreW(nullptr, initialCount, maximumCount, nullptr)) {}

bool CSyncSemaphore::Unlock(int count) {
  return ReleaseSemaphore(Handle(*this), count, nullptr) != FALSE;
}

bool CSyncSemaphore::Unlock() {
  return Unlock(1);
}

bool WaitForSyncAll(CSyncObj* a, CSyncObj* b, std::uint64_t timeout) {
  return WaitAll({a, b}, timeout);
}

bool WaitForSyncAll(CSyncObj* a, CSyncObj* b, CSyncObj* c, std::uint64_t timeout) {
  return WaitAll({a, b, c}, timeout);
}

bool WaitForSyncAll(CSyncObj* a, CSyncObj* b, CSyncObj* c, CSyncObj* d, std::uint64_t timeout) {
  return WaitAll({a, b, c, d}, timeout);
}

bool WaitForSyncAll(CSyncObj* a, CSyncObj* b, CSyncObj* c, CSyncObj* d, CSyncObj* e,
                    std::uint64_t timeout) {
  return WaitAll({a, b, c, d, e}, timeout);
}

int WaitForSyncAny(CSyncObj* a, CSyncObj* b, std::uint64_t timeout) {
  return WaitAny({a, b}, timeout);
}

int WaitForSyncAny(CSyncObj* a, CSyncObj* b, CSyncObj* c, std::uint64_t timeout) {
  return WaitAny({a, b, c}, timeout);
}

int WaitForSyncAny(CSyncObj* a, CSyncObj* b, CSyncObj* c, CSyncObj* d, std::uint64_t timeout) {
  return WaitAny({a, b, c, d}, timeout);
}

int WaitForSyncAny(CSyncObj* a, CSyncObj* b, CSyncObj* c, CSyncObj* d, CSyncObj* e,
                   std::uint64_t timeout) {
  return WaitAny({a, b, c, d, e}, timeout);
}

}  // namespace kelp
