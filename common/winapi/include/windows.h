// The subset of the Windows API that the libraries call, by the names and headers of the SDK.
#pragma once

#include "windef.h"
