// Sockets of TCP over IPv4, on those of the system.
//
// The names are those of the system's own calls, with other types: a source includes this header or
// <sys/socket.h>, not both. Failures give SOCKET_ERROR, INVALID_SOCKET or null, and their reason by
// WSAGetLastError. A peer that has gone is an error and raises no signal.
#pragma once

#include "windef.h"

typedef UINT_PTR SOCKET;
#define INVALID_SOCKET ((SOCKET)~0)
#define SOCKET_ERROR (-1)

#define WSAEINTR 10004L
#define WSAEACCES 10013L
#define WSAEFAULT 10014L
#define WSAEINVAL 10022L
#define WSAEMFILE 10024L
#define WSAENOTSOCK 10038L
#define WSAEPROTONOSUPPORT 10043L
#define WSAEAFNOSUPPORT 10047L
#define WSAEADDRNOTAVAIL 10049L
#define WSAENETUNREACH 10051L
#define WSAECONNABORTED 10053L
#define WSAECONNRESET 10054L
#define WSAENOBUFS 10055L
#define WSAEISCONN 10056L
#define WSAENOTCONN 10057L
#define WSAESHUTDOWN 10058L
#define WSAETIMEDOUT 10060L
#define WSAECONNREFUSED 10061L
#define WSAEHOSTUNREACH 10065L
#define WSAVERNOTSUPPORTED 10092L
#define WSAHOST_NOT_FOUND 11001L
WINAPI_EXPORT int WINAPI WSAGetLastError();

// The version is that of the interface, 1.1 and above; there is nothing to start.
typedef struct WSAData {
  WORD wVersion;
  WORD wHighVersion;
  unsigned short iMaxSockets;
  unsigned short iMaxUdpDg;
  char* lpVendorInfo;
  char szDescription[257];
  char szSystemStatus[129];
} WSADATA, *LPWSADATA;
WINAPI_EXPORT int WINAPI WSAStartup(WORD version, LPWSADATA data);
WINAPI_EXPORT int WINAPI WSACleanup();

#define AF_INET 2
#define SOCK_STREAM 1
#define IPPROTO_TCP 6
WINAPI_EXPORT SOCKET WINAPI socket(int family, int type, int protocol);
WINAPI_EXPORT int WINAPI closesocket(SOCKET socket);

struct sockaddr {
  unsigned short sa_family;
  char sa_data[14];
};
struct in_addr {
  ULONG s_addr;  // in the order of the network, as the port is
};
struct sockaddr_in {
  short sin_family;
  unsigned short sin_port;
  struct in_addr sin_addr;
  char sin_zero[8];
};
WINAPI_EXPORT unsigned short WINAPI htons(unsigned short number);
WINAPI_EXPORT int WINAPI connect(SOCKET socket, const struct sockaddr* address, int size);

// The addresses of a host by its name or by digits, in a place of the thread's own that the next
// call uses again.
struct hostent {
  char* h_name;
  char** h_aliases;
  short h_addrtype;
  short h_length;
  char** h_addr_list;
};
WINAPI_EXPORT struct hostent* WINAPI gethostbyname(const char* name);

// The bytes that went or came, which may be fewer; recv gives 0 when the peer has closed. The flags
// are 0 (WSAEINVAL).
WINAPI_EXPORT int WINAPI send(SOCKET socket, const char* bytes, int size, int flags);
WINAPI_EXPORT int WINAPI recv(SOCKET socket, char* buffer, int size, int flags);
