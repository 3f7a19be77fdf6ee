#include "kelp0lang/ProcessProgress.h"

#include <algorithm>
#include <cstddef>

namespace kelp {

using Notification = CProcessProgressManager::IProgressNotification;

void Notification::OnNewTaskStarted(CProcessProgressManager*, const WChar*) {}
void Notification::OnProcessProgress(CProcessProgressManager*, double, double) {}
void Notification::OnCurTaskTerminated(CProcessProgressManager*) {}
void Notification::OnAbort(CProcessProgressManager*) {}

CProcessProgressManager::CProcessProgressManager(const CProcessProgressManager& other)
    : m_levels(other.m_levels), m_listeners(other.m_listeners), m_status(other.m_status.load()) {}

CProcessProgressManager& CProcessProgressManager::operator=(const CProcessProgressManager& other) {
  m_levels = other.m_levels;
  m_listeners = other.m_listeners;
  m_status = other.m_status.load();
  return *this;
}

template <class... Parameters, class... Arguments>
void CProcessProgressManager::Notify(
    void (IProgressNotification::*notification)(CProcessProgressManager*, Parameters...),
    Arguments... arguments) {
  const std::size_t count = m_listeners.size();
  for (std::size_t i = 0; i < count; ++i) (m_listeners[i]->*notification)(this, arguments...);
}

void CProcessProgressManager::InitTask(const WChar* name, double weight) {
  const double progress = GetCurTaskCompletePercentage();
  if (progress + weight > 1.0) weight = 1.0 - progress;
  m_levels.push_back({0.0, weight});
  enumProcessStatus before = psNotExecuting;
  if (m_levels.size() == 1) m_status.compare_exchange_strong(before, psExecuting);
  Notify(&IProgressNotification::OnNewTaskStarted, name);
}

void CProcessProgressManager::EndTask() {
  if (m_levels.empty()) return;
  const double weight = m_levels.back().weight;
  if (m_levels.size() == 1) {
    enumProcessStatus before = psExecuting;
    m_status.compare_exchange_strong(before, psFinished);
  } else {
    m_levels[m_levels.size() - 2].progress += weight;
  }
  m_levels.pop_back();
  Notify(&IProgressNotification::OnCurTaskTerminated);
}

void CProcessProgressManager::SetCurTaskPercentComlete(double value) {
  if (m_levels.empty()) return;
  value = std::min(std::max(0.0, value), 1.0);  // in this order a NaN gives 0.0
  m_levels.back().progress = value;
  Notify(&IProgressNotification::OnProcessProgress, GetOverallCompletePercentage(), value);
}

double CProcessProgressManager::GetCurTaskCompletePercentage() const {
  return m_levels.empty() ? 0.0 : m_levels.back().progress;
}

double CProcessProgressManager::GetOverallCompletePercentage() const {
  if (m_levels.empty()) return 0.0;
  double sum = 0.0;
  for (std::size_t i = m_levels.size() - 1; i > 0; --i) {
    sum = (sum + m_levels[i].progress) * m_levels[i].weight;
  }
  return sum + m_levels[0].progress;
}

void CProcessProgressManager::Abort() {
  enumProcessStatus before = psExecuting;
  if (!m_status.compare_exchange_strong(before, psAborted)) return;
  Notify(&IProgressNotification::OnAbort);
}

void CProcessProgressManager::Register(IProgressNotification* listener) {
  m_listeners.push_back(listener);
}

void CProcessProgressManager::Unregister(IProgressNotification* listener) {
  const auto found = std::find(m_listeners.begin(), m_listeners.end(), listener);
  if (found != m_listeners.end()) m_listeners.erase(found);
}

}  // namespace kelp
