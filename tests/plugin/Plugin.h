#pragma once

#ifdef _WIN32
#define PLUGIN_API __declspec(dllexport)
#else
#define PLUGIN_API __attribute__((visibility("default")))
#endif

// Runs a task in the pool; gives the number of the worker.
extern "C" PLUGIN_API unsigned long RunTask();
