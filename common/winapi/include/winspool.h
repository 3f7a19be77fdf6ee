// Printers: the queues of the CUPS server that this user's settings name.
//
// libcups is bound at the first call; a machine without it has no printers. A server that doesn't
// answer is RPC_S_SERVER_UNAVAILABLE.
#pragma once

#include "wingdi.h"
#include "winnt.h"

extern "C" {

// What a user may do with a printer; other rights are ERROR_ACCESS_DENIED. The data type and the
// device mode of the defaults aren't looked at.
#define PRINTER_ACCESS_USE 0x00000008
typedef struct _PRINTER_DEFAULTSW {
  LPWSTR pDatatype;
  LPDEVMODEW pDevMode;
  DWORD DesiredAccess;
} PRINTER_DEFAULTSW, *LPPRINTER_DEFAULTSW;

// Texts are empty or null where CUPS has nothing for them. The device mode is what this user has
// set for the queue, else what the queue has; null where the server doesn't tell its papers.
#define PRINTER_ATTRIBUTE_QUEUED 0x00000001
#define PRINTER_STATUS_PAUSED 0x00000001
typedef struct _PRINTER_INFO_2W {
  LPWSTR pServerName;
  LPWSTR pPrinterName;
  LPWSTR pShareName;
  LPWSTR pPortName;
  LPWSTR pDriverName;
  LPWSTR pComment;
  LPWSTR pLocation;
  LPDEVMODEW pDevMode;
  LPWSTR pSepFile;
  LPWSTR pPrintProcessor;
  LPWSTR pDatatype;
  LPWSTR pParameters;
  PSECURITY_DESCRIPTOR pSecurityDescriptor;
  DWORD Attributes;
  DWORD Priority;
  DWORD DefaultPriority;
  DWORD StartTime;
  DWORD UntilTime;
  DWORD Status;
  DWORD cJobs;
  DWORD AveragePPM;
} PRINTER_INFO_2W, *PPRINTER_INFO_2W;

// The name of the user's default printer. The size is in units and becomes what is needed; where
// that is more, ERROR_INSUFFICIENT_BUFFER. ERROR_FILE_NOT_FOUND where there is none.
WINAPI_EXPORT BOOL WINAPI GetDefaultPrinterW(LPWSTR name, LPDWORD size);
// ERROR_INVALID_PRINTER_NAME where there is no such queue.
WINAPI_EXPORT BOOL WINAPI OpenPrinterW(LPWSTR name, LPHANDLE printer, LPPRINTER_DEFAULTSW defaults);
WINAPI_EXPORT BOOL WINAPI ClosePrinter(HANDLE printer);
// Level 2, a PRINTER_INFO_2W and what it points to in one block; others are ERROR_INVALID_LEVEL.
// What is needed is told where the room is too small (ERROR_INSUFFICIENT_BUFFER).
WINAPI_EXPORT BOOL WINAPI GetPrinterW(HANDLE printer, DWORD level, BYTE* info, DWORD size,
                                      LPDWORD needed);
// Level 2 with command 0: the device mode of the record becomes this user's own setting, the
// options "media" and "orientation-requested" of the queue in the user's lpoptions file. The rest
// of the record is the administrator's of the server and isn't looked at.
WINAPI_EXPORT BOOL WINAPI SetPrinterW(HANDLE printer, DWORD level, BYTE* info, DWORD command);
// With mode 0 the bytes that a device mode takes. DM_IN_BUFFER changes the settings by the fields
// of the one that comes in, DM_OUT_BUFFER gives the whole that comes out. IDOK, or -1: a paper that
// the queue hasn't is ERROR_INVALID_PARAMETER. There is no dialog: DM_IN_PROMPT is
// ERROR_NOT_SUPPORTED.
WINAPI_EXPORT LONG WINAPI DocumentPropertiesW(HWND window, HANDLE printer, LPWSTR name,
                                              LPDEVMODEW output, LPDEVMODEW input, DWORD mode);
}
