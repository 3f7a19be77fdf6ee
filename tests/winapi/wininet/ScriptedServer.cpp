#include "tests/winapi/wininet/ScriptedServer.h"

#ifdef _WIN32
#include <winsock2.h>
// windows.h comes behind winsock2.h
#include <windows.h>
using Length = int;
#else
#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/select.h>
#include <sys/socket.h>
#include <unistd.h>
using SOCKET = int;
using Length = socklen_t;
static int closesocket(int socket) {
  return close(socket);
}
#endif
#ifndef MSG_NOSIGNAL
#define MSG_NOSIGNAL 0
#endif

#include <chrono>
#include <stdexcept>
#include <string_view>
#include <utility>

namespace {

// Whether there is something to read or accept within a moment.
bool IsReady(SOCKET socket) {
  fd_set set;
  FD_ZERO(&set);
  FD_SET(socket, &set);
  timeval moment{0, 20'000};
  return select(static_cast<int>(socket) + 1, &set, nullptr, nullptr, &moment) > 0;
}

void StartSockets() {
#ifdef _WIN32
  static const int started = [] {
    WSADATA data;
    return WSAStartup(MAKEWORD(2, 2), &data);
  }();
  (void)started;
#endif
}

}  // namespace

ScriptedServer::ScriptedServer(Script script) : m_script(std::move(script)) {
  StartSockets();
  const SOCKET listener = socket(AF_INET, SOCK_STREAM, 0);
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  Length length = sizeof address;
  auto* const any = reinterpret_cast<sockaddr*>(&address);
  if (bind(listener, any, length) != 0 || listen(listener, 50) != 0 ||
      getsockname(listener, any, &length) != 0) {
    throw std::runtime_error("no port for the server");
  }
  m_port = ntohs(address.sin_port);
  m_listener = static_cast<std::intptr_t>(listener);
  m_accepting = std::thread([this] { Accept(); });
}

ScriptedServer::Script ScriptedServer::Answering(std::string answer) {
  return [answer = std::move(answer)](Peer& peer) {
    if (!peer.ReadHead().empty()) peer.Send(answer);
  };
}

ScriptedServer::~ScriptedServer() {
  m_ending = true;
  m_accepting.join();
  for (Run& run : m_runs) run.thread.join();
  closesocket(static_cast<SOCKET>(m_listener));
}

void ScriptedServer::Accept() {
  while (!m_ending) {
    if (!IsReady(static_cast<SOCKET>(m_listener))) continue;
    const SOCKET socket = accept(static_cast<SOCKET>(m_listener), nullptr, nullptr);
    ++m_connections;
    m_runs.remove_if([](Run& run) {
      if (!run.isOver) return false;
      run.thread.join();
      return true;
    });
    Run& run = m_runs.emplace_back();
    run.thread = std::thread([this, socket, &run] {
      Peer peer(*this, static_cast<std::intptr_t>(socket));
      m_script(peer);
      closesocket(socket);
      run.isOver = true;
    });
  }
}

std::vector<std::string> ScriptedServer::Heads() const {
  const std::lock_guard lock(m_mutex);
  return m_heads;
}

std::vector<std::string> ScriptedServer::Bodies() const {
  const std::lock_guard lock(m_mutex);
  return m_bodies;
}

bool ScriptedServer::Peer::Receive() {
  const auto socket = static_cast<SOCKET>(m_socket);
  while (!m_server.m_ending) {
    if (!IsReady(socket)) continue;
    char bytes[65536];
    const auto count = recv(socket, bytes, sizeof bytes, 0);
    if (count <= 0) return false;
    m_received.append(bytes, static_cast<std::size_t>(count));
    return true;
  }
  return false;
}

std::string ScriptedServer::Peer::ReadHead() {
  std::size_t end;
  while ((end = m_received.find("\r\n\r\n")) == std::string::npos) {
    if (!Receive()) return {};
  }
  std::string head = Read(end + 4);
  static constexpr std::string_view kLength = "\r\nContent-Length: ";
  const std::size_t length = head.find(kLength);
  m_bodySize = length == std::string::npos ? 0 : std::stoul(head.substr(length + kLength.size()));
  const std::lock_guard lock(m_server.m_mutex);
  m_server.m_heads.push_back(head);
  return head;
}

std::string ScriptedServer::Peer::Read(std::size_t count) {
  while (m_received.size() < count && Receive()) {
  }
  std::string bytes = m_received.substr(0, count);
  m_received.erase(0, bytes.size());
  return bytes;
}

std::string ScriptedServer::Peer::ReadBody() {
  std::string body = Read(m_bodySize);
  const std::lock_guard lock(m_server.m_mutex);
  m_server.m_bodies.push_back(body);
  return body;
}

void ScriptedServer::Peer::SkipBody() {
  std::size_t count = m_bodySize;
  while (count > m_received.size()) {
    count -= m_received.size();
    m_received.clear();
    if (!Receive()) return;
  }
  m_received.erase(0, count);
}

bool ScriptedServer::Peer::Send(const std::string& bytes) {
  std::size_t sent = 0;
  while (sent < bytes.size()) {
    const auto count = send(static_cast<SOCKET>(m_socket), bytes.data() + sent,
                            static_cast<int>(bytes.size() - sent), MSG_NOSIGNAL);
    if (count <= 0) return false;
    sent += static_cast<std::size_t>(count);
  }
  return true;
}

void ScriptedServer::Peer::WaitForEnd() {
  while (Receive()) m_received.clear();
}

void ScriptedServer::Peer::Wait(int milliseconds) {
  for (; milliseconds > 0 && !m_server.m_ending; milliseconds -= 20) {
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
  }
}

void ScriptedServer::Peer::Break() {
  const linger now{1, 0};
  setsockopt(static_cast<SOCKET>(m_socket), SOL_SOCKET, SO_LINGER,
             reinterpret_cast<const char*>(&now), sizeof now);
}
