// Marks what the library exports; everything else is hidden. KELP0LANG_STATIC says that the library
// is within the program, and comes with the target or the package that a program takes.
#pragma once

#include "kelptext/Compiler.h"

#ifdef _WIN32
#if defined(KELP0LANG_STATIC)
#define KELP0LANG_API
#elif defined(KELP0LANG_BUILD)
#define KELP0LANG_API KELP_EXPORT
#else
#define KELP0LANG_API KELP_IMPORT
#endif
#else
#define KELP0LANG_API KELP_VISIBLE
#endif
