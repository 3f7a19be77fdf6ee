// What the requests of a command share, so that all of them can be ended at once.
#pragma once

#include <mutex>

namespace fieldbook {

// For all threads.
class WebSession {
 public:
  WebSession() = default;
  ~WebSession() { Stop(); }
  WebSession(const WebSession&) = delete;
  WebSession& operator=(const WebSession&) = delete;

  // A handle of WinINet for requests to stand under, opened by the first who asks. Throws Failure
  // behind Stop, and httpclientexceptionW where it can't be opened.
  void* Handle();
  // Requests that wait for their server fail now.
  void Stop();
  bool IsStopped() const;

 private:
  mutable std::mutex m_mutex;
  void* m_handle = nullptr;
  bool m_isStopped = false;
};

}  // namespace fieldbook
