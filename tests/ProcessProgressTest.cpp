#include "kelp0lang/ProcessProgress.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>
#include <string>
#include <utility>

#include "kelp0lang/String.h"

using kelp::CProcessProgressManager;

namespace {

// Writes down what it hears.
class Listener : public CProcessProgressManager::IProgressNotification {
 public:
  explicit Listener(char name = 'L') : m_name(name) {}
  void OnNewTaskStarted(CProcessProgressManager* manager, const WChar* name) override {
    Note(manager, "start " + std::string(kelp::WString(name).ToUtf8().c_str()));
  }
  void OnProcessProgress(CProcessProgressManager* manager, double overall, double task) override {
    char text[64];
    std::snprintf(text, sizeof(text), "%.4g/%.4g", overall, task);
    Note(manager, text);
  }
  void OnCurTaskTerminated(CProcessProgressManager* manager) override { Note(manager, "end"); }
  void OnAbort(CProcessProgressManager* manager) override { Note(manager, "abort"); }

  static std::string Heard() { return std::exchange(s_heard, ""); }

 private:
  void Note(CProcessProgressManager* manager, const std::string& what) {
    EXPECT_NE(manager, nullptr);
    s_heard += m_name + (" " + what) + ";";
  }
  static std::string s_heard;
  char m_name;
};

std::string Listener::s_heard;

TEST(ProcessProgress, NestedTasksMoveTheWhole) {
  Listener listener;
  CProcessProgressManager progress;
  progress.Register(&listener);
  EXPECT_EQ(progress.GetOverallCompletePercentage(), 0.0);
  progress.InitTask(KTEXT("a"), 0.1);  // the outermost stands for the whole, whatever its weight
  progress.SetCurTaskPercentComlete(0.5);
  progress.InitTask(KTEXT("b"), 0.25);
  progress.SetCurTaskPercentComlete(0.5);
  EXPECT_EQ(progress.GetCurTaskCompletePercentage(), 0.5);
  EXPECT_EQ(progress.GetOverallCompletePercentage(), 0.625);
  progress.InitTask(KTEXT("deep"), 0.5);
  progress.SetCurTaskPercentComlete(0.5);  // 0.5 + 0.25 * (0.5 + 0.5 * 0.5)
  progress.EndTask();
  progress.EndTask();
  EXPECT_EQ(progress.GetCurTaskCompletePercentage(), 0.75) << "by the whole weight of b";
  progress.InitTask(KTEXT("c"), 0.5);  // only a quarter is left
  progress.SetCurTaskPercentComlete(1.0);
  progress.EndTask();
  EXPECT_EQ(progress.GetOverallCompletePercentage(), 1.0);
  progress.EndTask();
  EXPECT_EQ(Listener::Heard(),
            "L start a;L 0.5/0.5;L start b;L 0.625/0.5;L start deep;L 0.6875/0.5;L end;L end;"
            "L start c;L 1/1;L end;L end;");
}

TEST(ProcessProgress, ValuesAreCut) {
  CProcessProgressManager progress;
  progress.SetCurTaskPercentComlete(0.5);
  EXPECT_EQ(progress.GetCurTaskCompletePercentage(), 0.0) << "no task";
  progress.EndTask();
  EXPECT_TRUE(progress.IsProcessNotExecuting());
  progress.InitTask(nullptr, 1.0);
  const double values[][2] = {{1.5, 1.0}, {-1.0, 0.0}, {0.25, 0.25}, {std::nan(""), 0.0}};
  for (const auto& [given, kept] : values) {
    progress.SetCurTaskPercentComlete(given);
    EXPECT_EQ(progress.GetCurTaskCompletePercentage(), kept) << given;
  }
}

TEST(ProcessProgress, TheStatusEndsOnce) {
  using Manager = CProcessProgressManager;
  Listener listener;
  for (const bool aborts : {false, true}) {
    Manager progress;
    progress.Register(&listener);
    progress.Abort();
    EXPECT_EQ(progress.GetProcessStatus(), Manager::psNotExecuting);
    progress.InitTask(KTEXT("a"), 1.0);
    progress.InitTask(KTEXT("b"), 1.0);
    progress.EndTask();
    EXPECT_TRUE(progress.IsProcessExecuting()) << "the outermost task is open";
    if (aborts) progress.Abort();
    progress.EndTask();
    const auto status = aborts ? Manager::psAborted : Manager::psFinished;
    EXPECT_EQ(progress.GetProcessStatus(), status);
    EXPECT_EQ(progress.IsProcessAborted(), aborts);
    EXPECT_EQ(progress.IsProcessFinished(), !aborts);
    progress.Abort();
    progress.InitTask(KTEXT("c"), 1.0);
    EXPECT_EQ(progress.GetProcessStatus(), status);
    EXPECT_EQ(Listener::Heard(), aborts ? "L start a;L start b;L end;L abort;L end;L start c;"
                                        : "L start a;L start b;L end;L end;L start c;");
  }
}

TEST(ProcessProgress, ListenersAreCalledInOrderAndLeaveOneByOne) {
  Listener x('x'), y('y');
  CProcessProgressManager progress;
  progress.Register(&x);
  progress.Register(&y);
  progress.Register(&x);
  progress.InitTask(KTEXT("t"), 1.0);
  progress.Unregister(&x);
  CProcessProgressManager copy(progress);
  progress.Unregister(&y);
  progress.Unregister(&y);
  progress.EndTask();
  EXPECT_EQ(Listener::Heard(), "x start t;y start t;x start t;x end;");
  EXPECT_TRUE(copy.IsProcessExecuting());
  copy.SetCurTaskPercentComlete(0.25);
  EXPECT_EQ(Listener::Heard(), "y 0.25/0.25;x 0.25/0.25;") << "the copy is a process of its own";
  progress = copy;
  EXPECT_TRUE(progress.IsProcessExecuting());
  progress.EndTask();
  EXPECT_EQ(Listener::Heard(), "y end;x end;");
  EXPECT_TRUE(copy.IsProcessExecuting());

  struct Silent final : CProcessProgressManager::IProgressNotification {
  } silent;
  CProcessProgressManager other;
  other.Register(&silent);
  other.InitTask(KTEXT("t"), 1.0);
  other.SetCurTaskPercentComlete(0.5);
  other.Abort();
  other.EndTask();
  EXPECT_TRUE(other.IsProcessAborted());
}

}  // namespace
