// The subset of the Windows API that the libraries call, by the names and headers of the SDK.
#pragma once

#include "errhandlingapi.h"
#include "fileapi.h"
#include "handleapi.h"
#include "libloaderapi.h"
#include "memoryapi.h"
#include "processthreadsapi.h"
#include "securitybaseapi.h"
#include "stringapiset.h"
#include "synchapi.h"
#include "sysinfoapi.h"
#include "timezoneapi.h"
#include "winbase.h"
#include "windef.h"
#include "winerror.h"
#include "winreg.h"
#include "winuser.h"
