#include "kelp0lang/CriticalSec.h"

namespace kelp {

CCriticalSec::CCriticalSec() {
  InitializeCriticalSection(&m_section);
}

CCriticalSec::~CCriticalSec() {
  DeleteCriticalSection(&m_section);
}

void CCriticalSec::Enter() {
  EnterCriticalSection(&m_section);
}

void CCriticalSec::Leave() {
  LeaveCriticalSection(&m_section);
}

}  // namespace kelp
