// Events, mutexes and semaphores of the platform as objects, and waiting for several of them.
//
//   kelp::CSyncEvent stop(false, true);
//   kelp::CSyncSemaphore jobs(0, 100);
//   while (kelp::WaitForSyncAny(&stop, &jobs, kelp::kSyncForever) == 1) DoJob();
//
// Times are milliseconds and go to the platform in 32 bits: 0 only looks, kSyncForever (and
// whatever has all the lower bits set) has no end.
//
// Nothing here throws. An object that the platform couldn't make has a null handle; all its
// operations give false.
//
// Threads: everything but construction and destruction is safe from any thread. An object outlives
// the waits for it.
#pragma once

#include <cstdint>

#include "kelp0lang/Export.h"

namespace kelp {

inline constexpr std::uint64_t kSyncForever = 0xFFFFFFFF;

class KELP0LANG_API CSyncObj {
 public:
  virtual ~CSyncObj();
  CSyncObj(const CSyncObj&) = delete;
  CSyncObj& operator=(const CSyncObj&) = delete;

  // Waits for the object and takes it. False when the time ran out, and for an abandoned mutex,
  // which is taken nevertheless.
  virtual bool Lock(std::uint64_t milliseconds);
  // Without end.
  virtual bool Lock();
  // Lets others have the object; true on success.
  virtual bool Unlock() = 0;

  // The platform's handle.
  std::uint64_t GetHandle() const;

 protected:
  // Takes over the handle.
  explicit CSyncObj(void* handle) : m_handle(handle) {}

 private:
  void* m_handle;
};

// A flag to wait for. With manualReset it stays set for all until ResetEvent, without it one wait
// takes it.
class KELP0LANG_API CSyncEvent : public CSyncObj {
 public:
  CSyncEvent(bool initialState, bool manualReset);

  bool SetEvent() { return Unlock(); }
  // Sets it.
  bool Unlock() override;
  bool ResetEvent();
  // Sets it for those that are waiting now, one or all, and resets it.
  bool PulseEvent();
};

// Owned by one thread, which may take it several times and releases it as often.
class KELP0LANG_API CSyncMutex : public CSyncObj {
 public:
  explicit CSyncMutex(bool initiallyOwned);

  // False where the calling thread isn't the owner.
  bool Unlock() override;
};

// A count that each Lock takes one of.
class KELP0LANG_API CSyncSemaphore : public CSyncObj {
 public:
  CSyncSemaphore(int initialCount, int maximumCount);

  // Adds to the count. Where the maximum would be passed it gives false and adds nothing.
  bool Unlock(int count);
  // Adds one.
  bool Unlock() override;
};

// Waits for all of two to five different objects at once, and takes none before all can be had.
// False when the time ran out, and where one of them was an abandoned mutex.
KELP0LANG_API bool WaitForSyncAll(CSyncObj* a, CSyncObj* b, std::uint64_t timeout);
KELP0LANG_API bool WaitForSyncAll(CSyncObj* a, CSyncObj* b, CSyncObj* c, std::uint64_t timeout);
KELP0LANG_API bool WaitForSyncAll(CSyncObj* a, CSyncObj* b, CSyncObj* c, CSyncObj* d,
                                  std::uint64_t timeout);
KELP0LANG_API bool WaitForSyncAll(CSyncObj* a, CSyncObj* b, CSyncObj* c, CSyncObj* d, CSyncObj* e,
                                  std::uint64_t timeout);

// Waits for one of two to five objects and takes it. Gives its place among them, from 0, the first
// of several; 0x80 more for an abandoned mutex; -1 when the time ran out or the wait failed.
KELP0LANG_API int WaitForSyncAny(CSyncObj* a, CSyncObj* b, std::uint64_t timeout);
KELP0LANG_API int WaitForSyncAny(CSyncObj* a, CSyncObj* b, CSyncObj* c, std::uint64_t timeout);
KELP0LANG_API int WaitForSyncAny(CSyncObj* a, CSyncObj* b, CSyncObj* c, CSyncObj* d,
                                 std::uint64_t timeout);
KELP0LANG_API int WaitForSyncAny(CSyncObj* a, CSyncObj* b, CSyncObj* c, CSyncObj* d, CSyncObj* e,
                                 std::uint64_t timeout);

}  // namespace kelp
