#include <errhandlingapi.h>
#include <winsock2.h>

#include <climits>
#include <cstring>
#include <string>
#include <vector>

#include "ws2_32/SystemSocket.h"

namespace {

namespace system_socket = winapi::system_socket;

// What gethostbyname has found, in the form that it gives.
struct FoundHost {
  std::string name;
  std::vector<std::uint32_t> addresses;
  std::vector<char*> places;
  char* noAlias = nullptr;
  hostent entry{};
};

int Refuse(long error) {
  SetLastError(static_cast<DWORD>(error));
  return SOCKET_ERROR;
}

// The system's number of a socket; one that can't be is refused by the system itself.
int NumberOf(SOCKET socket) {
  return socket > INT_MAX ? -1 : static_cast<int>(socket);
}

}  // namespace

int WINAPI WSAGetLastError() {
  return static_cast<int>(GetLastError());
}

int WINAPI WSAStartup(WORD version, LPWSADATA data) {
  constexpr WORD kHighest = 0x0202;
  if (data == nullptr) return WSAEFAULT;
  if ((version & 0xFF) == 0) return WSAVERNOTSUPPORTED;
  *data = {};
  data->wVersion = version;
  data->wHighVersion = kHighest;
  return 0;
}

int WINAPI WSACleanup() {
  return 0;
}

SOCKET WINAPI socket(int family, int type, int protocol) {
  const int number = system_socket::Open(family, type, protocol);
  return number < 0 ? INVALID_SOCKET : static_cast<SOCKET>(number);
}

int WINAPI closesocket(SOCKET socket) {
  return system_socket::Close(NumberOf(socket));
}

unsigned short WINAPI htons(unsigned short number) {
  const unsigned char bytes[] = {static_cast<unsigned char>(number >> 8),
                                 static_cast<unsigned char>(number)};
  std::memcpy(&number, bytes, sizeof number);
  return number;
}

int WINAPI connect(SOCKET socket, const sockaddr* address, int size) {
  sockaddr_in whole;
  if (address == nullptr || size < static_cast<int>(sizeof whole)) return Refuse(WSAEFAULT);
  std::memcpy(&whole, address, sizeof whole);
  if (whole.sin_family != AF_INET) return Refuse(WSAEAFNOSUPPORT);
  return system_socket::Connect(NumberOf(socket), whole.sin_addr.s_addr, whole.sin_port);
}

hostent* WINAPI gethostbyname(const char* name) {
  thread_local FoundHost found;
  found = {};
  if (name != nullptr) found.addresses = system_socket::Resolve(name);
  if (found.addresses.empty()) {
    SetLastError(WSAHOST_NOT_FOUND);
    return nullptr;
  }
  found.name = name;
  for (std::uint32_t& address : found.addresses) {
    found.places.push_back(reinterpret_cast<char*>(&address));
  }
  found.places.push_back(nullptr);
  found.entry = {found.name.data(), &found.noAlias, AF_INET, sizeof(std::uint32_t),
                 found.places.data()};
  return &found.entry;
}

int WINAPI send(SOCKET socket, const char* bytes, int size, int flags) {
  if (size < 0 || flags != 0) return Refuse(WSAEINVAL);
  return static_cast<int>(
      system_socket::Send(NumberOf(socket), bytes, static_cast<std::size_t>(size)));
}

int WINAPI recv(SOCKET socket, char* buffer, int size, int flags) {
  if (size < 0 || flags != 0) return Refuse(WSAEINVAL);
  return static_cast<int>(
      system_socket::Receive(NumberOf(socket), buffer, static_cast<std::size_t>(size)));
}
