// Services: programs that run without a user's window, and are installed, started, asked about and
// stopped by others.
//
//   const SC_HANDLE manager = OpenSCManagerW(nullptr, nullptr, SC_MANAGER_CONNECT);
//   const SC_HANDLE service = OpenServiceW(manager, name, SERVICE_START | SERVICE_QUERY_STATUS);
//   if (!StartServiceW(service, 0, nullptr)) ...
//   CloseServiceHandle(service);
//   CloseServiceHandle(manager);
//
// Here a service is two files in a folder: what it was installed with, "NAME.service", and how it
// is, "NAME.state". The folder is "/var/lib/winapi/services" for root and "winapi/services" of the
// data folder for a user, who finds root's services behind the own ones; winapi_host.h sets
// another. There is no process of a manager: each running service has one that started it and looks
// after it, the program "winapi-service" beside the layer's module, which ends with the service. A
// service whose supervisor is killed is told to stop, and ended after 30 seconds if it doesn't.
//
// A service belongs to who installed it, and the owner and root may do anything with it. For other
// users the access list decides, which at first lets everybody ask. What it can't give is what only
// the owner's rights can do: a user whom it lets start a service of somebody else runs it with the
// own rights, and deleting it and changing its list fail (ERROR_ACCESS_DENIED). A service that root
// starts runs as its owner. Its environment is that of who starts it, its folder the root folder.
#pragma once

#include "minwinbase.h"
#include "winnt.h"

typedef struct SC_HANDLE__* SC_HANDLE;
typedef struct SERVICE_STATUS_HANDLE__* SERVICE_STATUS_HANDLE;

#define SC_MANAGER_CONNECT 0x0001
#define SC_MANAGER_CREATE_SERVICE 0x0002
#define SC_MANAGER_ENUMERATE_SERVICE 0x0004
#define SC_MANAGER_ALL_ACCESS 0xF003F

#define SERVICE_QUERY_CONFIG 0x0001
#define SERVICE_CHANGE_CONFIG 0x0002
#define SERVICE_QUERY_STATUS 0x0004
#define SERVICE_ENUMERATE_DEPENDENTS 0x0008
#define SERVICE_START 0x0010
#define SERVICE_STOP 0x0020
#define SERVICE_PAUSE_CONTINUE 0x0040
#define SERVICE_INTERROGATE 0x0080
#define SERVICE_USER_DEFINED_CONTROL 0x0100
#define SERVICE_ALL_ACCESS 0xF01FF

#define SERVICE_NO_CHANGE 0xFFFFFFFF

#define SERVICE_STOPPED 0x00000001
#define SERVICE_START_PENDING 0x00000002
#define SERVICE_STOP_PENDING 0x00000003
#define SERVICE_RUNNING 0x00000004
#define SERVICE_CONTINUE_PENDING 0x00000005
#define SERVICE_PAUSE_PENDING 0x00000006
#define SERVICE_PAUSED 0x00000007

#define SERVICE_CONTROL_STOP 0x00000001
#define SERVICE_CONTROL_PAUSE 0x00000002
#define SERVICE_CONTROL_CONTINUE 0x00000003
#define SERVICE_CONTROL_INTERROGATE 0x00000004
#define SERVICE_CONTROL_SHUTDOWN 0x00000005
#define SERVICE_CONTROL_PARAMCHANGE 0x00000006

#define SERVICE_ACCEPT_STOP 0x00000001
#define SERVICE_ACCEPT_PAUSE_CONTINUE 0x00000002
#define SERVICE_ACCEPT_SHUTDOWN 0x00000004
#define SERVICE_ACCEPT_PARAMCHANGE 0x00000008

#define SERVICE_ACTIVE 0x00000001
#define SERVICE_INACTIVE 0x00000002
#define SERVICE_STATE_ALL 0x00000003

typedef struct _SERVICE_STATUS {
  DWORD dwServiceType;
  DWORD dwCurrentState;
  DWORD dwControlsAccepted;
  DWORD dwWin32ExitCode;
  DWORD dwServiceSpecificExitCode;  // with ERROR_SERVICE_SPECIFIC_ERROR
  DWORD dwCheckPoint;
  DWORD dwWaitHint;  // milliseconds
} SERVICE_STATUS, *LPSERVICE_STATUS;

typedef struct _SERVICE_STATUS_PROCESS {
  DWORD dwServiceType;
  DWORD dwCurrentState;
  DWORD dwControlsAccepted;
  DWORD dwWin32ExitCode;
  DWORD dwServiceSpecificExitCode;
  DWORD dwCheckPoint;
  DWORD dwWaitHint;
  DWORD dwProcessId;
  DWORD dwServiceFlags;
} SERVICE_STATUS_PROCESS, *LPSERVICE_STATUS_PROCESS;

typedef struct _ENUM_SERVICE_STATUSW {
  LPWSTR lpServiceName;
  LPWSTR lpDisplayName;
  SERVICE_STATUS ServiceStatus;
} ENUM_SERVICE_STATUSW, *LPENUM_SERVICE_STATUSW;

typedef struct _QUERY_SERVICE_CONFIGW {
  DWORD dwServiceType;
  DWORD dwStartType;
  DWORD dwErrorControl;
  LPWSTR lpBinaryPathName;
  LPWSTR lpLoadOrderGroup;
  DWORD dwTagId;
  LPWSTR lpDependencies;
  LPWSTR lpServiceStartName;
  LPWSTR lpDisplayName;
} QUERY_SERVICE_CONFIGW, *LPQUERY_SERVICE_CONFIGW;

typedef enum _SC_STATUS_TYPE : int { SC_STATUS_PROCESS_INFO = 0 } SC_STATUS_TYPE;

// The manager of this machine: another is RPC_S_SERVER_UNAVAILABLE, another database than
// "ServicesActive" ERROR_DATABASE_DOES_NOT_EXIST.
WINAPI_EXPORT SC_HANDLE WINAPI OpenSCManagerW(LPCWSTR machine, LPCWSTR database, DWORD access);
WINAPI_EXPORT BOOL WINAPI CloseServiceHandle(SC_HANDLE handle);

// Names are compared without regard to case. ERROR_SERVICE_DOES_NOT_EXIST; ERROR_INVALID_NAME for
// what can't be one: empty, more than 256 units or 240 bytes of UTF-8, with a slash or backslash.
// ERROR_ACCESS_DENIED for rights that the caller doesn't have. ERROR_BADDB for a service whose file
// isn't whole.
WINAPI_EXPORT SC_HANDLE WINAPI OpenServiceW(SC_HANDLE manager, LPCWSTR name, DWORD access);

// Installs a service; the path is that of a program, in quotes if there are blanks in it, and
// behind it its arguments. A null display name is the name. Dependencies are names of services,
// each with its terminator and another one behind the last; they needn't be there yet.
// ERROR_SERVICE_EXISTS, ERROR_DUPLICATE_SERVICE_NAME for a display name that is taken,
// ERROR_SERVICE_MARKED_FOR_DELETE for a service that is going. A service is of the type
// SERVICE_WIN32_OWN_PROCESS and starts on demand or is disabled, and runs under nobody else's
// account: other types and starts, groups and tags are ERROR_NOT_SUPPORTED, an account is
// ERROR_INVALID_SERVICE_ACCOUNT.
WINAPI_EXPORT SC_HANDLE WINAPI CreateServiceW(SC_HANDLE manager, LPCWSTR name, LPCWSTR displayName,
                                              DWORD access, DWORD type, DWORD startType,
                                              DWORD errorControl, LPCWSTR path, LPCWSTR group,
                                              LPDWORD tag, LPCWSTR dependencies, LPCWSTR account,
                                              LPCWSTR password);
// The service goes when it doesn't run and its last handle is closed; until then it is marked, and
// can't be started or deleted again (ERROR_SERVICE_MARKED_FOR_DELETE).
WINAPI_EXPORT BOOL WINAPI DeleteService(SC_HANDLE service);

// What it was installed with; needed receives the size of all, and ERROR_INSUFFICIENT_BUFFER tells
// of too small a one. The account is "LocalSystem".
WINAPI_EXPORT BOOL WINAPI QueryServiceConfigW(SC_HANDLE service, LPQUERY_SERVICE_CONFIGW config,
                                              DWORD size, LPDWORD needed);

// A service that never ran has the exit code ERROR_SERVICE_NEVER_STARTED, one that ended without
// having said so ERROR_PROCESS_ABORTED. One that has lost its supervisor and runs still is
// SERVICE_STOP_PENDING.
WINAPI_EXPORT BOOL WINAPI QueryServiceStatus(SC_HANDLE service, LPSERVICE_STATUS status);
// A SERVICE_STATUS_PROCESS; other levels are ERROR_INVALID_LEVEL.
WINAPI_EXPORT BOOL WINAPI QueryServiceStatusEx(SC_HANDLE service, SC_STATUS_TYPE level,
                                               BYTE* buffer, DWORD size, LPDWORD needed);

// The rights as a descriptor in one block. Of the parts there is only DACL_SECURITY_INFORMATION,
// others are ERROR_NOT_SUPPORTED.
WINAPI_EXPORT BOOL WINAPI QueryServiceObjectSecurity(SC_HANDLE service,
                                                     SECURITY_INFORMATION information,
                                                     PSECURITY_DESCRIPTOR descriptor, DWORD size,
                                                     LPDWORD needed);
WINAPI_EXPORT BOOL WINAPI SetServiceObjectSecurity(SC_HANDLE service,
                                                   SECURITY_INFORMATION information,
                                                   PSECURITY_DESCRIPTOR descriptor);

// Starts the services that this one depends on and waits until they run, and then starts its
// program. Returns when the program has called StartServiceCtrlDispatcherW; then its service is
// SERVICE_START_PENDING until it says otherwise. The arguments, of 64 KB at most, go to the
// service's main function behind its name.
//
// ERROR_SERVICE_ALREADY_RUNNING, also of two calls at one time; ERROR_SERVICE_DISABLED; the error
// of a program that can't be started; ERROR_SERVICE_REQUEST_TIMEOUT for one that ends before that
// call, or hasn't made it in 30 seconds and is ended. ERROR_SERVICE_DEPENDENCY_DELETED for a
// dependency that isn't there, ERROR_SERVICE_DEPENDENCY_FAIL for one that doesn't come to run,
// ERROR_CIRCULAR_DEPENDENCY.
WINAPI_EXPORT BOOL WINAPI StartServiceW(SC_HANDLE service, DWORD count, LPCWSTR* arguments);

// Sends a control and waits for at most 30 seconds until the service has taken it
// (ERROR_SERVICE_REQUEST_TIMEOUT); each needs its right. ERROR_SERVICE_NOT_ACTIVE, for a
// pending service ERROR_SERVICE_CANNOT_ACCEPT_CTRL, for a control that the service doesn't take
// ERROR_INVALID_SERVICE_CONTROL; with these three, and on success, the status is filled.
// ERROR_DEPENDENT_SERVICES_RUNNING for a stop while services that depend on this one aren't
// stopped.
WINAPI_EXPORT BOOL WINAPI ControlService(SC_HANDLE service, DWORD control, LPSERVICE_STATUS status);

// The services that depend on this one, themselves or through others, in the order in which they
// can be stopped. As many as the buffer has room for are given; ERROR_MORE_DATA, and the size that
// the others need, where those aren't all.
WINAPI_EXPORT BOOL WINAPI EnumDependentServicesW(SC_HANDLE service, DWORD states,
                                                 LPENUM_SERVICE_STATUSW services, DWORD size,
                                                 LPDWORD needed, LPDWORD count);

// What a service's program does: its main function calls StartServiceCtrlDispatcherW, which runs
// the service in a thread of its own and hands it its controls, and returns when the service has
// said that it is SERVICE_STOPPED. In a program that nobody started as a service it is
// ERROR_FAILED_SERVICE_CONTROLLER_CONNECT, a second time ERROR_SERVICE_ALREADY_RUNNING. The table
// has one entry; its name doesn't count, since a service has its program for itself.
typedef void(WINAPI* LPSERVICE_MAIN_FUNCTIONW)(DWORD count, LPWSTR* arguments);
typedef struct _SERVICE_TABLE_ENTRYW {
  LPWSTR lpServiceName;
  LPSERVICE_MAIN_FUNCTIONW lpServiceProc;
} SERVICE_TABLE_ENTRYW;
WINAPI_EXPORT BOOL WINAPI StartServiceCtrlDispatcherW(const SERVICE_TABLE_ENTRYW* table);

// Who is told of controls, on the thread that called StartServiceCtrlDispatcherW. Null, and
// ERROR_SERVICE_NOT_IN_EXE, in a program that isn't running as a service. The handle isn't closed.
typedef void(WINAPI* LPHANDLER_FUNCTION)(DWORD control);
typedef DWORD(WINAPI* LPHANDLER_FUNCTION_EX)(DWORD control, DWORD eventType, LPVOID eventData,
                                             LPVOID context);
WINAPI_EXPORT SERVICE_STATUS_HANDLE WINAPI RegisterServiceCtrlHandlerW(LPCWSTR name,
                                                                       LPHANDLER_FUNCTION handler);
// What the handler gives is what ControlService fails with, NO_ERROR where it doesn't.
WINAPI_EXPORT SERVICE_STATUS_HANDLE WINAPI
RegisterServiceCtrlHandlerExW(LPCWSTR name, LPHANDLER_FUNCTION_EX handler, LPVOID context);
// When it returns all see the new status. ERROR_INVALID_DATA for a state that there isn't. Behind
// SERVICE_STOPPED nothing more is told, and the program has 20 seconds for its end.
WINAPI_EXPORT BOOL WINAPI SetServiceStatus(SERVICE_STATUS_HANDLE handle, LPSERVICE_STATUS status);
