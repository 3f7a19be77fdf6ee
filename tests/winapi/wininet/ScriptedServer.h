// A server on this machine that does, byte for byte, what a test says: also what no server should.
//
//   ScriptedServer server([](ScriptedServer::Peer& peer) {
//     while (!peer.ReadHead().empty()) peer.Send("HTTP/1.1 200 OK\r\nContent-Length: 0\r\n\r\n");
//   });
//
// The script runs for each connection on a thread of its own; the connection is closed behind it.
#pragma once

#include <atomic>
#include <cstdint>
#include <functional>
#include <list>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

class ScriptedServer {
 public:
  class Peer {
   public:
    // Up to and with the empty line; empty where the other side has closed. It is kept for Heads.
    std::string ReadHead();
    // Fewer where the other side has closed.
    std::string Read(std::size_t count);
    // As many as the last head tells; they are kept for Bodies.
    std::string ReadBody();
    // The same, without keeping them.
    void SkipBody();
    // False where the other side has gone.
    bool Send(const std::string& bytes);
    // Until the other side closes, or the server ends.
    void WaitForEnd();
    // Without a look at the other side; no longer than the server lives.
    void Wait(int milliseconds);
    // So that the other side is told that the connection was broken.
    void Break();

   private:
    friend class ScriptedServer;
    Peer(ScriptedServer& server, std::intptr_t socket) : m_server(server), m_socket(socket) {}
    bool Receive();
    ScriptedServer& m_server;
    std::intptr_t m_socket;
    std::string m_received;
    std::size_t m_bodySize = 0;
  };
  using Script = std::function<void(Peer&)>;

  explicit ScriptedServer(Script script);
  // Sends each answer as it stands to one connection after the other, and closes it.
  static Script Answering(std::string answer);
  ~ScriptedServer();

  std::uint16_t Port() const { return m_port; }
  int Connections() const { return m_connections; }
  std::vector<std::string> Heads() const;
  std::vector<std::string> Bodies() const;

 private:
  void Accept();

  Script m_script;
  std::intptr_t m_listener;
  std::uint16_t m_port = 0;
  std::atomic<bool> m_ending{false};
  std::atomic<int> m_connections{0};
  mutable std::mutex m_mutex;
  std::vector<std::string> m_heads;
  std::vector<std::string> m_bodies;
  struct Run {
    std::atomic<bool> isOver{false};
    std::thread thread;
  };
  std::list<Run> m_runs;
  std::thread m_accepting;
};
