#include "fieldbook/web/WebSession.h"

#include <utility>

#include "fieldbook/console/Progress.h"
#include "fieldbook/web/WebClient.h"

namespace fieldbook {

void* WebSession::Handle() {
  const std::lock_guard lock(m_mutex);
  if (m_isStopped) throw Failure(Stopped());
  if (m_handle == nullptr) {
    WebClient client;
    client.SetAgent(KTEXT("fieldbook"));
    m_handle = client.OpenInternet();
  }
  return m_handle;
}

void WebSession::Stop() {
  void* handle = nullptr;
  {
    const std::lock_guard lock(m_mutex);
    m_isStopped = true;
    handle = std::exchange(m_handle, nullptr);
  }
  Dovek::CHttpToolW::CloseInternet(handle);
}

bool WebSession::IsStopped() const {
  const std::lock_guard lock(m_mutex);
  return m_isStopped;
}

}  // namespace fieldbook
