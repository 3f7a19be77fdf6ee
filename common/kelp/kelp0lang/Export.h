// Marks what the library exports; everything else is hidden.
#pragma once

#ifdef _WIN32
#ifdef KELP0LANG_BUILD
#define KELP0LANG_API __declspec(dllexport)
#else
#define KELP0LANG_API __declspec(dllimport)
#endif
#else
#define KELP0LANG_API __attribute__((visibility("default")))
#endif
