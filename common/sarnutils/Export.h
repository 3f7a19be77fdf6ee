// Marks what the library exports; everything else is hidden. SARNUTILS_STATIC says that the library
// is within the program, and comes with the target or the package that a program takes.
#pragma once

#include "kelptext/Compiler.h"

#ifdef _WIN32
#if defined(SARNUTILS_STATIC)
#define SARNUTILS_API
#elif defined(SARNUTILS_BUILD)
#define SARNUTILS_API KELP_EXPORT
#else
#define SARNUTILS_API KELP_IMPORT
#endif
#else
#define SARNUTILS_API KELP_VISIBLE
#endif
