// A critical section as an object, and the guard that enters and leaves it.
//
//   kelp::CCriticalSecLock lock(&m_section);  // left at the end of the block
#pragma once

#include <windows.h>

#include "kelp0lang/Export.h"

namespace kelp {

// One thread at a time is inside; it may enter again and leaves as often as it has entered.
class KELP0LANG_API CCriticalSec {
 public:
  CCriticalSec();
  ~CCriticalSec();
  CCriticalSec(const CCriticalSec&) = delete;
  CCriticalSec& operator=(const CCriticalSec&) = delete;

  void Enter();
  void Leave();

  // One for the whole process, for hosts to enter and leave; the library itself never enters it.
  static CCriticalSec& GetGlobalCritSection();

 private:
  CRITICAL_SECTION m_section;
};

// Inside for as long as it lives. The pointer isn't null.
class KELP0LANG_API CCriticalSecLock {
 public:
  explicit CCriticalSecLock(CCriticalSec* section) : m_section(section) { m_section->Enter(); }
  ~CCriticalSecLock() { m_section->Leave(); }
  CCriticalSecLock(const CCriticalSecLock&) = delete;
  CCriticalSecLock& operator=(const CCriticalSecLock&) = delete;

 private:
  CCriticalSec* m_section;
};

}  // namespace kelp
