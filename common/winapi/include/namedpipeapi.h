// Named pipes between the processes of one user.
//
// A pipe's name is "\\.\pipe\NAME", with either separator and without regard to case; NAME has no
// more than 70 bytes in UTF-8. The process that first makes a name has it for as long as it has an
// instance or dies; meanwhile another process can't make instances of that name. A process of
// another user can't connect, in either direction.
//
// Pipes are read as bytes, and calls block: message read mode, PIPE_NOWAIT and overlapped handles
// are ERROR_NOT_SUPPORTED. One read gives what is there, also of several writes, and what was
// written before the other end was closed; behind it comes ERROR_BROKEN_PIPE. Writing to an end
// that has gone is ERROR_NO_DATA. The client opens its end by CreateFileW with OPEN_EXISTING:
// ERROR_FILE_NOT_FOUND where nobody has the name, ERROR_PIPE_BUSY where no instance listens,
// ERROR_ACCESS_DENIED for a direction that the pipe hasn't.
#pragma once

#include "minwinbase.h"
#include "winnt.h"

#define PIPE_ACCESS_INBOUND 0x00000001  // the server reads
#define PIPE_ACCESS_OUTBOUND 0x00000002
#define PIPE_ACCESS_DUPLEX 0x00000003
#define FILE_FLAG_FIRST_PIPE_INSTANCE 0x00080000

#define PIPE_WAIT 0x00000000
#define PIPE_NOWAIT 0x00000001
#define PIPE_READMODE_BYTE 0x00000000
#define PIPE_READMODE_MESSAGE 0x00000002
#define PIPE_TYPE_BYTE 0x00000000
#define PIPE_TYPE_MESSAGE 0x00000004
#define PIPE_REJECT_REMOTE_CLIENTS 0x00000008
#define PIPE_UNLIMITED_INSTANCES 255

// An instance, which a client can open at once. ERROR_PIPE_BUSY where there are as many as the
// first one allowed, ERROR_ACCESS_DENIED where another process has the name, or the direction
// isn't that of the first. The sizes and the security attributes aren't looked at; timeout is that
// of WaitNamedPipeW, in milliseconds, 0 for 50.
WINAPI_EXPORT HANDLE WINAPI CreateNamedPipeW(LPCWSTR name, DWORD openMode, DWORD pipeMode,
                                             DWORD maxInstances, DWORD outSize, DWORD inSize,
                                             DWORD timeout, LPSECURITY_ATTRIBUTES security);
// Waits for a client. False with ERROR_PIPE_CONNECTED where one is there already, and with
// ERROR_NO_DATA where that one has gone again.
WINAPI_EXPORT BOOL WINAPI ConnectNamedPipe(HANDLE pipe, LPOVERLAPPED overlapped);
// The instance listens again at the next ConnectNamedPipe. What the client hasn't read yet, it can
// still read.
WINAPI_EXPORT BOOL WINAPI DisconnectNamedPipe(HANDLE pipe);
// What could be read, without taking it. Each pointer may be null; left is always 0.
WINAPI_EXPORT BOOL WINAPI PeekNamedPipe(HANDLE pipe, LPVOID buffer, DWORD size, LPDWORD count,
                                        LPDWORD available, LPDWORD left);
// Waits until an instance listens, which another client may get first: ERROR_SEM_TIMEOUT, or
// ERROR_FILE_NOT_FOUND at once where nobody has the name.
#define NMPWAIT_WAIT_FOREVER 0xFFFFFFFF
#define NMPWAIT_USE_DEFAULT_WAIT 0x00000000
WINAPI_EXPORT BOOL WINAPI WaitNamedPipeW(LPCWSTR name, DWORD milliseconds);
