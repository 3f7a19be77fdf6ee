// The system's sockets under names of their own, since those of Windows are the same; internal to
// the layer. All give what the system's call gives, with an error of Windows in the last error.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace winapi::system_socket {

int Open(int family, int type, int protocol);
int Close(int socket);
// The address of IPv4 and the port are in the order of the network.
int Connect(int socket, std::uint32_t address, std::uint16_t port);
long Send(int socket, const char* bytes, std::size_t size);
long Receive(int socket, char* buffer, std::size_t size);
// The addresses of IPv4; none where the name isn't known.
std::vector<std::uint32_t> Resolve(const char* name);

}  // namespace winapi::system_socket
