// SIGPIPE kept from the process while a library writes to a server that may go.
#pragma once

#include <signal.h>

#include <ctime>

// For the calling thread and a scope. A signal that was raised in it is taken away; one that waited
// before stays.
class PipeSignalScope {
 public:
  PipeSignalScope() {
    sigemptyset(&m_pipe);
    sigaddset(&m_pipe, SIGPIPE);
    m_waited = IsWaiting();
    pthread_sigmask(SIG_BLOCK, &m_pipe, &m_before);
  }
  ~PipeSignalScope() {
    constexpr std::timespec kAtOnce = {};
    if (!m_waited && IsWaiting()) sigtimedwait(&m_pipe, nullptr, &kAtOnce);
    pthread_sigmask(SIG_SETMASK, &m_before, nullptr);
  }
  PipeSignalScope(const PipeSignalScope&) = delete;
  PipeSignalScope& operator=(const PipeSignalScope&) = delete;

 private:
  static bool IsWaiting() {
    sigset_t waiting;
    sigpending(&waiting);
    return sigismember(&waiting, SIGPIPE) == 1;
  }

  sigset_t m_pipe;
  sigset_t m_before;
  bool m_waited;
};
