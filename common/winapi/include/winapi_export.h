// Marks what the layer exports; everything else is hidden.
#pragma once

#include "kelptext/Compiler.h"

#define WINAPI_EXPORT KELP_VISIBLE
