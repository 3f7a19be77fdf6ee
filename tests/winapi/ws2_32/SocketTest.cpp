// Sockets, as far as a client needs them.
#include <winsock2.h>
// winsock2.h comes before windows.h.
#include <gtest/gtest.h>
#include <windows.h>

#include <cstring>

#include "tests/winapi/UnderWine.h"
#include "tests/winapi/wininet/ScriptedServer.h"

namespace {

class Socket : public testing::Test {
 protected:
  void SetUp() override {
    WSADATA data;
    ASSERT_EQ(WSAStartup(0x101, &data), 0);
    EXPECT_EQ(data.wVersion, 0x101);
    m_socket = socket(AF_INET, SOCK_STREAM, 0);
    ASSERT_NE(m_socket, INVALID_SOCKET);
  }
  void TearDown() override {
    EXPECT_EQ(closesocket(m_socket), 0);
    WSACleanup();
  }
  int Connect(std::uint16_t port) const {
    const hostent* const host = gethostbyname("127.0.0.1");
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(port);
    std::memcpy(&address.sin_addr, host->h_addr_list[0], sizeof address.sin_addr);
    return connect(m_socket, reinterpret_cast<const sockaddr*>(&address), sizeof address);
  }
  SOCKET m_socket;
};

TEST_F(Socket, BytesGoAndComeUntilThePeerCloses) {
  ScriptedServer server([](ScriptedServer::Peer& peer) { peer.Send(peer.Read(3) + "!"); });
  ASSERT_EQ(Connect(server.Port()), 0);
  EXPECT_EQ(send(m_socket, "abc", 3, 0), 3);
  std::string all;
  char byte;
  int count;
  while ((count = recv(m_socket, &byte, 1, 0)) > 0) all += byte;
  EXPECT_EQ(count, 0);
  EXPECT_EQ(all, "abc!");
}

TEST_F(Socket, APeerThatHasGoneIsAnError) {
  ScriptedServer server([](ScriptedServer::Peer& peer) { peer.Break(); });
  ASSERT_EQ(Connect(server.Port()), 0);
  char byte;
  EXPECT_EQ(recv(m_socket, &byte, 1, 0), SOCKET_ERROR);
  EXPECT_EQ(WSAGetLastError(), WSAECONNRESET);
  EXPECT_EQ(send(m_socket, "a", 1, 0), SOCKET_ERROR);
}

TEST_F(Socket, WhoIsntThereIsAnError) {
  std::uint16_t closed;
  {
    ScriptedServer server([](ScriptedServer::Peer&) {});
    closed = server.Port();
  }
  EXPECT_EQ(Connect(closed), SOCKET_ERROR);
  EXPECT_EQ(WSAGetLastError(), WSAECONNREFUSED);
  EXPECT_EQ(gethostbyname("no-such-host.invalid"), nullptr);
  EXPECT_EQ(WSAGetLastError(), WSAHOST_NOT_FOUND);
  const hostent* const host = gethostbyname("127.0.0.1");
  ASSERT_NE(host, nullptr);
  EXPECT_EQ(host->h_length, 4);
  EXPECT_EQ(host->h_addr_list[1], nullptr);
  EXPECT_EQ(send(INVALID_SOCKET, "a", 1, 0), SOCKET_ERROR);
  EXPECT_EQ(WSAGetLastError(), WSAENOTSOCK);
  EXPECT_EQ(closesocket(INVALID_SOCKET), SOCKET_ERROR);
}

}  // namespace
