// The basic types of the Windows API, with their widths.
#pragma once

#include <stddef.h>
#include <stdint.h>

#include "winapi_export.h"

#define WINAPI
#define CALLBACK

typedef int BOOL;
typedef unsigned char BYTE;
typedef BYTE BOOLEAN;
typedef uint16_t WORD;
typedef uint32_t DWORD;
typedef int32_t LONG;
typedef uint32_t ULONG;
typedef int64_t LONGLONG;
typedef uint64_t ULONGLONG;
typedef unsigned int UINT;
typedef uintptr_t ULONG_PTR;
typedef ULONG_PTR SIZE_T;
typedef void* PVOID;
typedef void* LPVOID;
typedef const void* LPCVOID;

typedef char16_t WCHAR;
typedef WCHAR* LPWSTR;
typedef const WCHAR* LPCWSTR;
typedef const char* LPCSTR;
typedef char* LPSTR;

typedef void* HANDLE;
typedef HANDLE* LPHANDLE;
typedef struct HINSTANCE__* HINSTANCE;
typedef HINSTANCE HMODULE;
typedef struct HRSRC__* HRSRC;
typedef HANDLE HGLOBAL;

typedef intptr_t LONG_PTR;
typedef uintptr_t UINT_PTR;
typedef UINT_PTR WPARAM;
typedef LONG_PTR LPARAM;
typedef LONG_PTR LRESULT;
typedef WORD ATOM;
typedef DWORD* LPDWORD;
typedef LONG* LPLONG;
typedef struct HWND__* HWND;
typedef struct HMENU__* HMENU;
typedef struct HICON__* HICON;
typedef HICON HCURSOR;
typedef struct HBRUSH__* HBRUSH;
typedef struct HBITMAP__* HBITMAP;
typedef struct HMONITOR__* HMONITOR;
typedef struct HDC__* HDC;
typedef LONG_PTR(WINAPI* FARPROC)();

typedef struct tagPOINT {
  LONG x;
  LONG y;
} POINT, *LPPOINT;

// Right and bottom are outside it.
typedef struct tagRECT {
  LONG left;
  LONG top;
  LONG right;
  LONG bottom;
} RECT, *LPRECT;
typedef const RECT* LPCRECT;

#define TRUE 1
#define FALSE 0
#define MAX_PATH 260
#define INVALID_HANDLE_VALUE ((HANDLE)(intptr_t)-1)
