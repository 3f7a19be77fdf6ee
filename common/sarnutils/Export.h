// Marks what the library exports; everything else is hidden.
#pragma once

#ifdef _WIN32
#ifdef SARNUTILS_BUILD
#define SARNUTILS_API __declspec(dllexport)
#else
#define SARNUTILS_API __declspec(dllimport)
#endif
#else
#define SARNUTILS_API __attribute__((visibility("default")))
#endif
