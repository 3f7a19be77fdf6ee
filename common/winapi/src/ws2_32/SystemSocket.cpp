#include "ws2_32/SystemSocket.h"

#include <errhandlingapi.h>
#include <netdb.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <utility>

namespace winapi::system_socket {
namespace {

constexpr std::pair<int, DWORD> kErrors[] = {
    {EINTR, 10004},           {EACCES, 10013},       {EFAULT, 10014},        {EINVAL, 10022},
    {EMFILE, 10024},          {ENFILE, 10024},       {ENOTSOCK, 10038},      {EBADF, 10038},
    {EPROTONOSUPPORT, 10043}, {EAFNOSUPPORT, 10047}, {EADDRNOTAVAIL, 10049}, {ENETUNREACH, 10051},
    {ECONNABORTED, 10053},    {ECONNRESET, 10054},   {EPIPE, 10053},         {ENOBUFS, 10055},
    {ENOMEM, 10055},          {EISCONN, 10056},      {ENOTCONN, 10057},      {ESHUTDOWN, 10058},
    {ETIMEDOUT, 10060},       {ECONNREFUSED, 10061}, {EHOSTUNREACH, 10065},
};

template <class Result>
Result Checked(Result result) {
  if (result >= 0) return result;
  const int error = errno;
  SetLastError(10022);
  for (const auto& [system, windows] : kErrors) {
    if (system == error) SetLastError(windows);
  }
  return result;
}

// A call again and again until no signal has come in between.
template <class Call>
auto Repeated(Call call) {
  auto result = call();
  while (result < 0 && errno == EINTR) result = call();
  return Checked(result);
}

// A connection that a signal has interrupted goes on by itself.
int AwaitConnection(int socket) {
  pollfd waited{socket, POLLOUT, 0};
  while (poll(&waited, 1, -1) < 0) {
    if (errno != EINTR) return -1;
  }
  int error = 0;
  socklen_t size = sizeof error;
  if (getsockopt(socket, SOL_SOCKET, SO_ERROR, &error, &size) != 0) return -1;
  errno = error;
  return error == 0 ? 0 : -1;
}

}  // namespace

int Open(int family, int type, int protocol) {
  return Checked(socket(family, type | SOCK_CLOEXEC, protocol));
}

int Close(int socket) {
  return Checked(close(socket));
}

int Connect(int socket, std::uint32_t address, std::uint16_t port) {
  sockaddr_in whole{};
  whole.sin_family = AF_INET;
  whole.sin_port = port;
  whole.sin_addr.s_addr = address;
  int result = connect(socket, reinterpret_cast<const sockaddr*>(&whole), sizeof whole);
  if (result != 0 && errno == EINTR) result = AwaitConnection(socket);
  return Checked(result);
}

long Send(int socket, const char* bytes, std::size_t size) {
  return Repeated([=] { return send(socket, bytes, size, MSG_NOSIGNAL); });
}

long Receive(int socket, char* buffer, std::size_t size) {
  return Repeated([=] { return recv(socket, buffer, size, 0); });
}

std::vector<std::uint32_t> Resolve(const char* name) {
  addrinfo hints{};
  hints.ai_family = AF_INET;
  hints.ai_socktype = SOCK_STREAM;
  addrinfo* found = nullptr;
  if (getaddrinfo(name, nullptr, &hints, &found) != 0) return {};
  std::vector<std::uint32_t> addresses;
  for (const addrinfo* each = found; each != nullptr; each = each->ai_next) {
    addresses.push_back(reinterpret_cast<const sockaddr_in*>(each->ai_addr)->sin_addr.s_addr);
  }
  freeaddrinfo(found);
  return addresses;
}

}  // namespace winapi::system_socket
