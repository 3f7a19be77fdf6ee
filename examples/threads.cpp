// Three strips of a grid, reckoned by workers of the pool, while the caller shows how far it is.
#include <kelp0lang/kelp0lang.h>

#include <array>
#include <cstdio>

namespace {

class Strip : public kelp::CThreadFactory::ITask {
 public:
  long sum = 0;
  int rows = 0;

 private:
  unsigned long Run() override {
    for (int row = 0; row < rows; ++row) sum += row;
    return 0;
  }
};

class Bar : public kelp::CProcessProgressManager::IProgressNotification {
  void OnNewTaskStarted(kelp::CProcessProgressManager*, const WChar* name) override {
    std::printf("%s\n", kelp::WString(name).ToUtf8().c_str());
  }
  void OnProcessProgress(kelp::CProcessProgressManager*, double overall, double) override {
    std::printf("  %.0f %%\n", overall * 100);
  }
};

}  // namespace

int main() {
  kelp::CProcessProgressManager progress;
  Bar bar;
  progress.Register(&bar);
  progress.InitTask(KTEXT("Volume"), 1.0);
  progress.InitTask(KTEXT("Reckoning the grid"), 0.5);  // half of the volume

  std::array<Strip, 3> strips;
  std::array<kelp::CThreadFactory::CHandle*, 3> handles{};
  auto* const factory = kelp::CThreadFactory::GetInstance();
  for (std::size_t i = 0; i < strips.size(); ++i) {
    strips[i].rows = 1000 * (static_cast<int>(i) + 1);
    if (!factory->CreateThreadForTask(&strips[i], false, &handles[i])) return 1;
  }
  long sum = 0;
  for (std::size_t i = 0; i < strips.size(); ++i) {
    factory->WaitFor(handles[i], INFINITE);
    factory->CloseHandle(handles[i]);
    sum += strips[i].sum;
    progress.SetCurTaskPercentComlete(static_cast<double>(i + 1) / 3);
  }
  progress.EndTask();
  progress.EndTask();
  std::printf("sum %ld, finished: %s\n", sum, progress.IsProcessFinished() ? "yes" : "no");
}
