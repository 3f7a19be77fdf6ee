// The progress of a command over long files: a bar on standard error, and the clean end by Ctrl-C.
//
//   Progress progress(line, console);
//   {
//     const Progress::Task reading(progress, KTEXT("reading"), 0.8);
//     progress.Set(0.5);
//   }
//
// On a terminal the bar appears when the work takes long, and goes with the object. By --progress
// it appears at once, and elsewhere as lines.
//
// Threads: all but IsAborted belongs to the thread that made the object.
#pragma once

#include <chrono>

#include "console/Console.h"
#include "fieldbook/values/Text.h"
#include "kelp0lang/ProcessProgress.h"

namespace fieldbook {

// What the user hears after Ctrl-C.
Message Stopped();

class Progress {
 public:
  // A part of the work, with its share of the whole, 0 to 1.
  class Task {
   public:
    Task(Progress& progress, const WChar* name, double share);  // a source text
    ~Task();
    Task(const Task&) = delete;
    Task& operator=(const Task&) = delete;

   private:
    Progress& m_progress;
  };

  Progress(const CommandLine& line, Console& console);
  ~Progress();
  Progress(const Progress&) = delete;
  Progress& operator=(const Progress&) = delete;

  // How far the current task is, 0 to 1. Throws Failure when the user has pressed Ctrl-C.
  void Set(double fraction);
  // The same with more to tell behind the bar.
  void Set(double fraction, const WString& more);
  // Throws Failure when the user has pressed Ctrl-C; whoever works on other threads finds it out by
  // IsAborted.
  void RequireGoingOn();
  bool IsAborted() const { return m_manager.IsProcessAborted(); }

 private:
  class Bar : public kelp::CProcessProgressManager::IProgressNotification {
   public:
    Bar(bool isAsked, Console& console);
    void OnNewTaskStarted(kelp::CProcessProgressManager* manager, const WChar* name) override;
    void OnProcessProgress(kelp::CProcessProgressManager* manager, double overall,
                           double currentTask) override;
    void OnCurTaskTerminated(kelp::CProcessProgressManager* manager) override;
    void OnAbort(kelp::CProcessProgressManager* manager) override;
    void SetMore(const WString& more) { m_more = more; }

   private:
    void Draw(double overall);

    Console& m_console;
    bool m_isAsked;
    std::chrono::steady_clock::time_point m_begin = std::chrono::steady_clock::now();
    WString m_task;
    WString m_more;
    WString m_text;  // as it is drawn
    int m_percent = -1;
  };

  const InterruptScope m_interrupts;
  Bar m_bar;
  kelp::CProcessProgressManager m_manager;
};

}  // namespace fieldbook
