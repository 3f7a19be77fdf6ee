// The library in a program that doesn't link it, by way of a plug-in that comes and goes.
#include "tests/plugin/Plugin.h"

#include <gtest/gtest.h>

#ifdef _WIN32
#include <windows.h>
#else
#include <dlfcn.h>
#endif

#include <chrono>
#include <thread>

namespace {

// The task of the plug-in, which is loaded for it.
unsigned long RunInPlugin() {
#ifdef _WIN32
  const HMODULE plugin = LoadLibraryA(PLUGIN_FILE);
  void* const function = reinterpret_cast<void*>(GetProcAddress(plugin, "RunTask"));
#else
  void* const plugin = dlopen(PLUGIN_FILE, RTLD_NOW);
  void* const function = dlsym(plugin, "RunTask");
#endif
  EXPECT_NE(function, nullptr);
  const unsigned long worker = reinterpret_cast<decltype(&RunTask)>(function)();
#ifdef _WIN32
  EXPECT_TRUE(FreeLibrary(plugin));
#else
  EXPECT_EQ(dlclose(plugin), 0);
#endif
  return worker;
}

TEST(Plugin, WorkersSleepOnWhereTheLibraryIsGivenBack) {
  const unsigned long worker = RunInPlugin();
  EXPECT_NE(worker, 0u);
  // Time for a worker to wake up where there is no code any more.
  std::this_thread::sleep_for(std::chrono::milliseconds(100));
  EXPECT_EQ(RunInPlugin(), worker) << "the pool is the same";
}

}  // namespace
