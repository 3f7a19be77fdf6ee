#include "fieldbook/console/Progress.h"

#include <string>

#include "kelp0lang/Translate.h"

namespace fieldbook {
namespace {

constexpr std::chrono::milliseconds kLong(300);  // work below it needs no bar
constexpr int kBarColumns = 20;
constexpr int kLineStep = 10;  // percent between two lines where the bar can't be drawn over

WString BarText(int percent, const WString& task) {
  const auto filled = static_cast<std::size_t>(percent * kBarColumns / 100);
  std::basic_string<WChar> text = KTEXT("[");
  text.append(filled, KTEXT('#')).append(kBarColumns - filled, KTEXT('.')).append(KTEXT("] "));
  const WString number = WString::ValueOf(percent);
  text.append(static_cast<std::size_t>(3 - number.Length()), KTEXT(' '));
  return ToWString(text).Concat(number).Concat(KTEXT("% ")).Concat(task);
}

}  // namespace

Message Stopped() {
  return {KTEXT("stopped by Ctrl-C"), {}};
}

Progress::Bar::Bar(bool isAsked, Console& console) : m_console(console), m_isAsked(isAsked) {}

void Progress::Bar::OnNewTaskStarted(kelp::CProcessProgressManager*, const WChar* name) {
  m_task = name;
  m_more = WString();
}

void Progress::Bar::OnProcessProgress(kelp::CProcessProgressManager*, double overall, double) {
  Draw(overall);
}

void Progress::Bar::OnCurTaskTerminated(kelp::CProcessProgressManager* manager) {
  if (manager->IsProcessExecuting()) Draw(manager->GetOverallCompletePercentage());
  if (!manager->IsProcessFinished()) return;
  Draw(1);
  m_console.EraseStatus();
}

void Progress::Bar::OnAbort(kelp::CProcessProgressManager*) {
  m_console.EraseStatus();
}

void Progress::Bar::Draw(double overall) {
  const bool isTerminal = m_console.IsStatusTerminal();
  if (!m_isAsked && (!isTerminal || std::chrono::steady_clock::now() - m_begin < kLong)) {
    return;
  }
  constexpr double kRounding = 1e-6;  // sums of shares
  const int percent = static_cast<int>(overall * 100 + kRounding);
  const bool isStep = isTerminal || m_percent < 0 || percent >= m_percent + kLineStep ||
                      (percent == 100 && m_percent != 100);
  if (!isStep) return;
  const WString task = m_more.empty() ? m_task : m_task.Concat(KTEXT(", ")).Concat(m_more);
  const WString text = BarText(percent, task);
  if (text == m_text) return;
  m_percent = percent;
  m_text = text;
  m_console.PrintStatus(text);
}

Progress::Task::Task(Progress& progress, const WChar* name, double share) : m_progress(progress) {
  m_progress.m_manager.InitTask(kelp::Xlate(name).c_str(), share);
}

Progress::Task::~Task() {
  m_progress.m_manager.EndTask();
}

Progress::Progress(const CommandLine& line, Console& console)
    : m_bar(line.Has(Option::Progress), console) {
  m_manager.Register(&m_bar);
  m_manager.InitTask(line.Command().c_str(), 1);
}

// A failure that passes through leaves no bar behind.
Progress::~Progress() {
  m_manager.EndTask();
  m_manager.Unregister(&m_bar);
}

void Progress::Set(double fraction) {
  RequireGoingOn();
  m_manager.SetCurTaskPercentComlete(fraction);
}

void Progress::Set(double fraction, const WString& more) {
  m_bar.SetMore(more);
  Set(fraction);
}

void Progress::RequireGoingOn() {
  if (!m_interrupts.IsInterrupted()) return;
  m_manager.Abort();
  throw Failure(Stopped());
}

}  // namespace fieldbook
