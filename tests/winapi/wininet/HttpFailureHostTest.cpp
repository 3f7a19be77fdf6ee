// What failures leave behind in the process: nothing.
#include <filesystem>
#include <iterator>

#include "tests/winapi/wininet/HttpExchange.h"
#include "tests/winapi/wininet/ScriptedServer.h"

namespace {

std::ptrdiff_t OpenDescriptors() {
  return std::distance(std::filesystem::directory_iterator("/proc/self/fd"), {});
}

TEST(HttpFailure, LeavesNothingOpen) {
  const std::string ok = "HTTP/1.1 200 OK\r\n";
  const std::string answers[] = {"", "nonsense\r\n\r\n", ok + "Content-Length: 5\r\n\r\nabc",
                                 ok + "Transfer-Encoding: chunked\r\n\r\nzz\r\n",
                                 "HTTP/1.1 302 Found\r\nLocation: gopher://x/\r\n\r\n"};
  std::atomic<int> turn{0};
  ScriptedServer server([&](ScriptedServer::Peer& peer) {
    peer.ReadHead();
    const int i = turn++;
    if (i % 7 == 6) return peer.Break();
    peer.Send(answers[static_cast<std::size_t>(i) % std::size(answers)]);
  });
  const auto fail = [&server] {
    const std::string got = HttpExchange(server.Port()).SendAndAnswer();
    EXPECT_NE(got.find("error "), std::string::npos) << got;
  };
  // What is kept for the next request is there from the first on.
  for (int i = 0; i < 20; ++i) fail();
  const std::ptrdiff_t before = OpenDescriptors();
  for (int i = 0; i < 1000; ++i) fail();
  // The server's side may still be closing its last.
  EXPECT_LE(OpenDescriptors(), before + 2);
}

TEST(HttpFailure, AConnectionThatHasGoneRaisesNoSignal) {
  // The signal would end the program.
  for (int i = 0; i < 20; ++i) {
    ScriptedServer server([](ScriptedServer::Peer& peer) {
      peer.ReadHead();
      peer.Break();
    });
    HttpExchange exchange(server.Port(), "POST");
    ASSERT_TRUE(exchange.Begin(100'000'000));
    const std::string piece(1'000'000, 'p');
    int pieces = 0;
    while (pieces < 100 && exchange.Write(piece)) ++pieces;
    EXPECT_LT(pieces, 100);
  }
}

}  // namespace
