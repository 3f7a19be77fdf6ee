// The settings of printers, and device contexts.
#pragma once

#include "windef.h"

extern "C" {

// What a printer is set to; dmFields says which of the fields count.
#define CCHDEVICENAME 32
#define CCHFORMNAME 32
typedef struct _devicemodeW {
  WCHAR dmDeviceName[CCHDEVICENAME];
  WORD dmSpecVersion;
  WORD dmDriverVersion;
  WORD dmSize;
  WORD dmDriverExtra;  // bytes behind this record that belong to it
  DWORD dmFields;
  int16_t dmOrientation;
  int16_t dmPaperSize;
  int16_t dmPaperLength;  // tenths of a millimetre, for a paper without a number
  int16_t dmPaperWidth;
  int16_t dmScale;
  int16_t dmCopies;
  int16_t dmDefaultSource;
  int16_t dmPrintQuality;
  int16_t dmColor;
  int16_t dmDuplex;
  int16_t dmYResolution;
  int16_t dmTTOption;
  int16_t dmCollate;
  WCHAR dmFormName[CCHFORMNAME];
  WORD dmLogPixels;
  DWORD dmBitsPerPel;
  DWORD dmPelsWidth;
  DWORD dmPelsHeight;
  DWORD dmDisplayFlags;
  DWORD dmDisplayFrequency;
  DWORD dmICMMethod;
  DWORD dmICMIntent;
  DWORD dmMediaType;
  DWORD dmDitherType;
  DWORD dmReserved1;
  DWORD dmReserved2;
  DWORD dmPanningWidth;
  DWORD dmPanningHeight;
} DEVMODEW, *PDEVMODEW, *LPDEVMODEW;
#define DM_SPECVERSION 0x0401
#define DM_ORIENTATION 0x00000001L
#define DM_PAPERSIZE 0x00000002L
#define DM_PAPERLENGTH 0x00000004L
#define DM_PAPERWIDTH 0x00000008L
#define DM_FORMNAME 0x00010000L
#define DMORIENT_PORTRAIT 1
#define DMORIENT_LANDSCAPE 2
// The numbers of papers go from LETTER to LAST; those that are named here are the ones that the
// tests and the library name.
#define DMPAPER_LETTER 1
#define DMPAPER_A3 8
#define DMPAPER_A4 9
#define DMPAPER_LAST 118
#define DM_UPDATE 1
#define DM_COPY 2
#define DM_PROMPT 4
#define DM_MODIFY 8
#define DM_OUT_BUFFER DM_COPY
#define DM_IN_BUFFER DM_MODIFY
#define DM_IN_PROMPT DM_PROMPT

#define ERROR 0
#define NULLREGION 1
#define SIMPLEREGION 2
#define COMPLEXREGION 3
#define RGN_ERROR ERROR

// There is nothing here that would make a device context, so every handle of one is
// ERROR_INVALID_HANDLE.
//
// The rectangle around what can be drawn on, and where the context begins on the screen.
WINAPI_EXPORT int WINAPI GetClipBox(HDC context, LPRECT box);
WINAPI_EXPORT BOOL WINAPI GetDCOrgEx(HDC context, LPPOINT origin);
}
