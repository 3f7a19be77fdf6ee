// Files in memory.
//
//   const HANDLE mapping = CreateFileMappingW(file, nullptr, PAGE_READONLY, 0, 0, nullptr);
//   const void* data = MapViewOfFile(mapping, FILE_MAP_READ, 0, 0, 0);
//   UnmapViewOfFile(data);
//
// A mapping outlives the handle of its file, and a view that of its mapping. While either is there,
// no handle of this layer cuts the file (ERROR_USER_MAPPED_FILE). Where another program does, what
// is behind the new end can't be touched: that would end the process. ReadProcessMemory copies what
// is there, and tells where there is nothing.
#pragma once

#include "minwinbase.h"
#include "winnt.h"

// Of a file that the handle may read and, for READWRITE, write. A size of 0 is that of the file,
// which must not be empty (ERROR_FILE_INVALID). With READWRITE a larger one grows the file, and
// takes the room on the disk (ERROR_DISK_FULL); else it is ERROR_NOT_ENOUGH_MEMORY. Null on
// failure. Memory without a file, and names, aren't known here (ERROR_NOT_SUPPORTED).
WINAPI_EXPORT HANDLE WINAPI CreateFileMappingW(HANDLE file, LPSECURITY_ATTRIBUTES security,
                                               DWORD protection, DWORD sizeHigh, DWORD sizeLow,
                                               LPCWSTR name);

#define FILE_MAP_COPY 0x0001
#define FILE_MAP_WRITE 0x0002
#define FILE_MAP_READ 0x0004
// The part of a mapping at an offset, a multiple of 65536 bytes (ERROR_MAPPED_ALIGNMENT); a size of
// 0 goes to its end, and beyond it there is nothing (ERROR_ACCESS_DENIED). WRITE reads too and
// needs READWRITE; with COPY, what is written stays in the process. Null on failure.
WINAPI_EXPORT LPVOID WINAPI MapViewOfFile(HANDLE mapping, DWORD access, DWORD offsetHigh,
                                          DWORD offsetLow, SIZE_T size);
// By what MapViewOfFile gave (else ERROR_INVALID_ADDRESS).
WINAPI_EXPORT BOOL WINAPI UnmapViewOfFile(LPCVOID view);

// Gives the pages of a part of a view back to the system, which keeps them in the file and brings
// them in again when they are touched; so that a file of any size can be read through a view in
// little memory. Nothing is ever locked here, so that the answer is FALSE with ERROR_NOT_LOCKED, as
// Windows gives it for pages that aren't. Other memory, and views for COPY, stay as they are.
WINAPI_EXPORT BOOL WINAPI VirtualUnlock(LPVOID address, SIZE_T size);

// Copies memory of a process that OpenProcess gave, this one too. Where some of it isn't there, or
// the file behind it is shorter by now, the call fails with ERROR_PARTIAL_COPY; read, which may be
// null, receives what was copied before.
WINAPI_EXPORT BOOL WINAPI ReadProcessMemory(HANDLE process, LPCVOID address, LPVOID buffer,
                                            SIZE_T size, SIZE_T* read);
