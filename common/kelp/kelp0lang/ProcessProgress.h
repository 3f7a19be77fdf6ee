// Progress of a long process that is made of nested tasks.
//
//   kelp::CProcessProgressManager progress;
//   progress.Register(&dialog);
//   progress.InitTask(KTEXT("Adjustment"), 1.0);
//   progress.InitTask(KTEXT("Reading"), 0.25);     // a quarter of the adjustment
//   progress.SetCurTaskPercentComlete(0.5);        // the dialog hears: overall 0.125, task 0.5
//   progress.EndTask();                            // the adjustment is at 0.25 now
//   ...
//
// All percentages are fractions, 0.0 to 1.0. A sub-task stands for a share of its parent, its
// weight, so the overall figure is right at any depth.
//
// Threads: a manager belongs to one thread, on which its listeners are called. Only Abort and the
// accessors of the status are safe from any thread; an OnAbort runs on that of the Abort, which
// walks the same list of listeners.
#pragma once

#include <atomic>
#include <cstdint>
#include <vector>

#include "kelp0lang/Export.h"
#include "kelptext/WideChar.h"

namespace kelp {

class KELP0LANG_API CProcessProgressManager {
 public:
  enum enumProcessStatus : std::int32_t {
    psNotExecuting,  // no task was started yet
    psExecuting,
    psFinished,  // the outermost task has ended
    psAborted,   // Abort came while it ran
  };

  // A listener. It neither registers nor unregisters while it is called. What it doesn't override
  // does nothing.
  //
  //   class Dialog : public kelp::CProcessProgressManager::IProgressNotification {
  //    public:
  //     explicit Dialog(kelp::CProcessProgressManager& progress) : m_progress(progress) {
  //       m_progress.Register(this);
  //     }
  //     ~Dialog() { m_progress.Unregister(this); }
  //
  //    private:
  //     void OnNewTaskStarted(kelp::CProcessProgressManager*, const WChar* name) override {
  //       ShowTask(name);
  //     }
  //     void OnProcessProgress(kelp::CProcessProgressManager* progress, double overall,
  //                            double currentTask) override {
  //       ShowBars(overall, currentTask);
  //       if (CancelWasPressed()) progress->Abort();  // OnAbort comes within this call
  //     }
  //     void OnCurTaskTerminated(kelp::CProcessProgressManager* progress) override {
  //       if (progress->IsProcessFinished()) Close();
  //     }
  //     void OnAbort(kelp::CProcessProgressManager*) override { ShowTask(KTEXT("stopping")); }
  //
  //     kelp::CProcessProgressManager& m_progress;  // outlives the dialog
  //   };
  class KELP0LANG_API IProgressNotification {
   public:
    virtual void OnNewTaskStarted(CProcessProgressManager* manager, const WChar* name);
    virtual void OnProcessProgress(CProcessProgressManager* manager, double overall,
                                   double currentTask);
    virtual void OnCurTaskTerminated(CProcessProgressManager* manager);
    virtual void OnAbort(CProcessProgressManager* manager);

   protected:
    ~IProgressNotification() = default;
  };

  CProcessProgressManager() = default;
  // With the open tasks, the listeners and the status.
  CProcessProgressManager(const CProcessProgressManager& other);
  CProcessProgressManager& operator=(const CProcessProgressManager& other);

  // Opens a task within the current one. A weight above what remains of that one is cut to it; the
  // weight of the outermost task counts for nothing.
  void InitTask(const WChar* name, double weight);
  // Closes the current task and moves its parent forward by its whole weight. Only the end of the
  // task is told, not the progress. Without a task it does nothing.
  void EndTask();

  // How far the current task is, cut to 0.0 to 1.0. Every call is told. Without a task it does
  // nothing.
  void SetCurTaskPercentComlete(double value);
  // 0.0 without a task.
  double GetCurTaskCompletePercentage() const;
  double GetOverallCompletePercentage() const;

  // Asks for the end of a process that executes, once. The workers find out by IsProcessAborted and
  // still close their tasks.
  void Abort();

  // Finished and aborted are final: tasks can go on, but the status stays.
  enumProcessStatus GetProcessStatus() { return m_status; }
  bool IsProcessNotExecuting() const { return m_status == psNotExecuting; }
  bool IsProcessExecuting() const { return m_status == psExecuting; }
  bool IsProcessFinished() const { return m_status == psFinished; }
  bool IsProcessAborted() const { return m_status == psAborted; }

  // Listeners hear in the order of their registration, one that is in twice twice. They aren't
  // owned.
  void Register(IProgressNotification* listener);
  // Takes out the first occurrence.
  void Unregister(IProgressNotification* listener);

 private:
  struct Level {
    double progress;
    double weight;  // share of the parent
  };
  template <class... Parameters, class... Arguments>
  void Notify(void (IProgressNotification::*notification)(CProcessProgressManager*, Parameters...),
              Arguments... arguments);

  std::vector<Level> m_levels;  // the outermost first
  std::vector<IProgressNotification*> m_listeners;
  std::atomic<enumProcessStatus> m_status{psNotExecuting};
};

}  // namespace kelp
