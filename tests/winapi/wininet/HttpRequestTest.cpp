// Requests as a server sees them, and handles.
#include <future>

#include "tests/winapi/ErrorOf.h"
#include "tests/winapi/UnderWine.h"
#include "tests/winapi/wininet/HttpExchange.h"
#include "tests/winapi/wininet/ScriptedServer.h"

namespace {

const std::string kEmpty = "HTTP/1.1 200 OK\r\nContent-Length: 0\r\n\r\n";

// Answers every request of a connection, in order; the last answer stays.
ScriptedServer::Script InTurn(std::vector<std::string> answers) {
  return [answers](ScriptedServer::Peer& peer) {
    for (std::size_t i = 0; !peer.ReadHead().empty(); ++i) {
      if (!peer.Send(answers[std::min(i, answers.size() - 1)])) return;
    }
  };
}

bool HasLine(const std::string& head, const std::string& line) {
  return head.find("\r\n" + line + "\r\n") != std::string::npos;
}

BOOL AddHeaders(const HttpExchange& exchange, const char* lines, DWORD flags) {
  return HttpAddRequestHeadersA(exchange.request, lines, static_cast<DWORD>(-1), flags);
}

TEST(HttpRequest, TheHeadSaysWhatWasAskedFor) {
  ScriptedServer server(InTurn({kEmpty}));
  HttpExchange exchange(server.Port(), "GET", "/a b?x=\xC3\xA0&y=1");
  EXPECT_TRUE(AddHeaders(exchange, "X-One: 1\r\nX-Two: a: b\r\n", HTTP_ADDREQ_FLAG_ADD));
  EXPECT_TRUE(AddHeaders(exchange, "X-One: 2", HTTP_ADDREQ_FLAG_ADD | HTTP_ADDREQ_FLAG_REPLACE));
  EXPECT_EQ(ErrorOf(AddHeaders(exchange, "no header", HTTP_ADDREQ_FLAG_ADD)),
            ERROR_HTTP_INVALID_HEADER);
  EXPECT_EQ(exchange.SendAndAnswer(), "200 ");
  const std::string head = server.Heads().at(0);
  EXPECT_EQ(head.substr(0, head.find("\r\n")), UnderWine() ? "GET /a%20b?x=\xC3\xA0&y=1 HTTP/1.1"
                                                           : "GET /a%20b?x=%C3%A0&y=1 HTTP/1.1");
  for (const std::string& line :
       {std::string("User-Agent: test"), "Host: 127.0.0.1:" + std::to_string(server.Port()),
        std::string("X-One: 2"), std::string("X-Two: a: b"), std::string("Connection: Keep-Alive"),
        std::string("Pragma: no-cache")}) {
    EXPECT_TRUE(HasLine(head, line)) << line << " isn't in " << head;
  }
  EXPECT_FALSE(HasLine(head, "X-One: 1"));
  EXPECT_EQ(head.find("Expect"), std::string::npos);
  EXPECT_EQ(head.find("Content-Type"), std::string::npos);
}

TEST(HttpRequest, AConnectionIsKeptForTheNextRequest) {
  ScriptedServer server(InTurn({"HTTP/1.1 200 OK\r\nContent-Length: 2\r\n\r\nok"}));
  for (int i = 0; i < 5; ++i) EXPECT_EQ(HttpExchange(server.Port()).SendAndAnswer(), "200 ok");
  EXPECT_EQ(server.Connections(), 1);
  const DWORD flags = HttpExchange::kFlags & ~DWORD{INTERNET_FLAG_KEEP_CONNECTION};
  EXPECT_EQ(HttpExchange(server.Port(), "GET", "/", flags).SendAndAnswer(), "200 ok");
  EXPECT_EQ(HttpExchange(server.Port()).SendAndAnswer(), "200 ok");
  // Wine leaves the end of a connection to the server.
  EXPECT_EQ(server.Connections(), UnderWine() ? 1 : 2);
}

TEST(HttpRequest, ABodyGoesWithItsLength) {
  ScriptedServer server([](ScriptedServer::Peer& peer) {
    while (!peer.ReadHead().empty()) {
      peer.Send("HTTP/1.1 200 OK\r\nContent-Length: 3\r\n\r\n" + peer.ReadBody());
    }
  });
  for (const char* const verb : {"POST", "PUT", "GET"}) {
    HttpExchange exchange(server.Port(), verb);
    EXPECT_EQ(exchange.SendAndAnswer("abc"), "200 abc");
    const std::string head = server.Heads().back();
    EXPECT_EQ(head.substr(0, 4), (std::string(verb) + " ").substr(0, 4));
    EXPECT_TRUE(HasLine(head, "Content-Length: 3")) << head;
    EXPECT_EQ(head.find("Content-Type"), std::string::npos);
  }
}

TEST(HttpRequest, BytesLeaveWhenTheyAreWritten) {
  std::promise<std::string> arrived[3];
  ScriptedServer server([&](ScriptedServer::Peer& peer) {
    arrived[0].set_value(peer.ReadHead());
    arrived[1].set_value(peer.Read(3));
    arrived[2].set_value(peer.Read(100'000));
    peer.Send(kEmpty);
  });
  HttpExchange exchange(server.Port(), "POST");
  ASSERT_TRUE(exchange.Begin(100'003));
  EXPECT_TRUE(HasLine(arrived[0].get_future().get(), "Content-Length: 100003"));
  ASSERT_TRUE(exchange.Write("abc"));
  EXPECT_EQ(arrived[1].get_future().get(), "abc");
  const std::string rest(100'000, 'r');
  ASSERT_TRUE(exchange.Write(rest));
  EXPECT_EQ(arrived[2].get_future().get(), rest);
  ASSERT_TRUE(exchange.End());
  EXPECT_EQ(exchange.Answer(), "200 ");

  ScriptedServer other(InTurn({kEmpty}));
  HttpExchange empty(other.Port(), "POST");
  EXPECT_TRUE(empty.Begin(0) && empty.End());
  EXPECT_EQ(empty.Answer(), "200 ");
  EXPECT_TRUE(HasLine(other.Heads().at(0), "Content-Length: 0"));
}

TEST(HttpRequest, AServerMayAnswerBeforeItHasTheBody) {
  if (UnderWine()) GTEST_SKIP();
  ScriptedServer server([](ScriptedServer::Peer& peer) {
    peer.ReadHead();
    peer.Send("HTTP/1.1 413 Too Large\r\nContent-Length: 2\r\n\r\nno");
    peer.WaitForEnd();
  });
  HttpExchange exchange(server.Port(), "POST");
  ASSERT_TRUE(exchange.Begin(400'000'000));
  const std::string piece(4'000'000, 'p');
  for (int i = 0; i < 100; ++i) ASSERT_TRUE(exchange.Write(piece)) << GetLastError();
  EXPECT_TRUE(exchange.End());
  EXPECT_EQ(exchange.Answer(), "413 no");
}

TEST(HttpRequest, WritingFailsWhereTheServerGoesOrStands) {
  const std::pair<bool, std::string> cases[] = {{true, "12030 12031"}, {false, "12002"}};
  for (const auto& [goes, errors] : cases) {
    ScriptedServer server([goes = goes](ScriptedServer::Peer& peer) {
      peer.ReadHead();
      if (goes) return peer.Break();
      peer.Wait(60'000);
    });
    HttpExchange exchange(server.Port(), "POST");
    exchange.SetTimeOut(500);
    ASSERT_TRUE(exchange.Begin(400'000'000));
    const std::string piece(4'000'000, 'p');
    int pieces = 0;
    while (pieces < 100 && exchange.Write(piece)) ++pieces;
    const std::string error = std::to_string(GetLastError());
    if (UnderWine()) continue;
    EXPECT_LT(pieces, 100);
    EXPECT_NE(errors.find(error), std::string::npos) << error;
  }
}

TEST(HttpRequest, RedirectsAreFollowedButNotInACircle) {
  const std::string moved =
      "HTTP/1.1 302 Found\r\nLocation: /next\r\nContent-Length: 4\r\n\r\nmove";
  ScriptedServer server(InTurn({moved, "HTTP/1.1 200 OK\r\nContent-Length: 2\r\n\r\nok"}));
  HttpExchange post(server.Port(), "POST");
  EXPECT_EQ(post.SendAndAnswer(), "200 ok");
  EXPECT_EQ(server.Heads().at(1).substr(0, 10), "GET /next ");

  ScriptedServer circle(InTurn({moved}));
  EXPECT_EQ(
      HttpExchange(circle.Port(), "GET", "/", HttpExchange::kFlags | INTERNET_FLAG_NO_AUTO_REDIRECT)
          .SendAndAnswer(),
      "302 move");
  if (UnderWine()) return;  // which hands out the last redirect
  EXPECT_EQ(HttpExchange(circle.Port()).SendAndAnswer(), "error 12156");
}

TEST(HttpRequest, CookiesAreKeptInTheProcess) {
  ScriptedServer server(
      InTurn({"HTTP/1.1 200 OK\r\nSet-Cookie: id=7\r\nContent-Length: 0\r\n\r\n"}));
  for (int i = 0; i < 2; ++i) HttpExchange(server.Port()).SendAndAnswer();
  HttpExchange(server.Port(), "GET", "/", HttpExchange::kFlags | INTERNET_FLAG_NO_COOKIES)
      .SendAndAnswer();
  const std::vector<std::string> heads = server.Heads();
  EXPECT_TRUE(HasLine(heads.at(1), "Cookie: id=7")) << heads.at(1);
  EXPECT_EQ(heads.at(2).find("Cookie"), std::string::npos);
}

TEST(HttpRequest, AnAccountAnswersWhoAsksForIt) {
  const std::string asks =
      "HTTP/1.1 401 No\r\nWWW-Authenticate: Basic realm=\"r\"\r\nContent-Length: 0\r\n\r\n";
  ScriptedServer server(InTurn({asks, kEmpty}));
  HttpExchange exchange(server.Port());
  WCHAR user[] = {'u', 's', 'e', 'r'};
  WCHAR password[] = {'p', 'w'};
  EXPECT_TRUE(InternetSetOptionW(exchange.request, INTERNET_OPTION_USERNAME, user, 4));
  EXPECT_TRUE(InternetSetOptionW(exchange.request, INTERNET_OPTION_PASSWORD, password, 2));
  if (UnderWine()) return;  // which takes the terminator along
  EXPECT_EQ(exchange.SendAndAnswer(), "200 ");
  EXPECT_EQ(server.Heads().at(0).find("Authorization"), std::string::npos);
  EXPECT_TRUE(HasLine(server.Heads().at(1), "Authorization: Basic dXNlcjpwdw=="));
}

TEST(HttpRequest, AProxyIsAskedForWhatIsFar) {
  ScriptedServer proxy(InTurn({"HTTP/1.1 200 OK\r\nContent-Length: 3\r\n\r\nfar"}));
  const std::string port = std::to_string(proxy.Port());
  const Wide address = WTEXT("http=127.0.0.1:") + Wide(port.begin(), port.end());
  HttpExchange exchange(81, "GET", "/x", HttpExchange::kFlags, address.c_str());
  EXPECT_EQ(exchange.SendAndAnswer(), "200 far");
  EXPECT_EQ(proxy.Heads().at(0).substr(0, 32), "GET http://far.example:81/x HTTP");
}

TEST(HttpRequest, FailuresBeforeTheRequestHaveTheirErrors) {
  std::uint16_t closed;
  {
    ScriptedServer server(InTurn({kEmpty}));
    closed = server.Port();
  }
  EXPECT_EQ(HttpExchange(closed).SendAndAnswer(), "error 12029");
  const HINTERNET session = InternetOpenW(nullptr, INTERNET_OPEN_TYPE_DIRECT, nullptr, nullptr, 0);
  const HINTERNET connection = InternetConnectW(session, WTEXT("no-such-host.invalid"), 80, nullptr,
                                                nullptr, INTERNET_SERVICE_HTTP, 0, 0);
  const HINTERNET request =
      HttpOpenRequestA(connection, nullptr, nullptr, nullptr, nullptr, nullptr, 0, 0);
  EXPECT_EQ(ErrorOf(HttpSendRequestW(request, nullptr, 0, nullptr, 0)),
            ERROR_INTERNET_NAME_NOT_RESOLVED);
  EXPECT_EQ(ErrorOf(HttpSendRequestW(connection, nullptr, 0, nullptr, 0)),
            ERROR_INTERNET_INCORRECT_HANDLE_TYPE);
  // What is under a handle ends with it.
  EXPECT_TRUE(InternetCloseHandle(session));
  if (UnderWine()) return;  // which takes a closed handle for one of another type
  EXPECT_EQ(ErrorOf(HttpSendRequestW(request, nullptr, 0, nullptr, 0)), ERROR_INVALID_HANDLE);
  EXPECT_EQ(ErrorOf(InternetCloseHandle(connection)), ERROR_INVALID_HANDLE);
}

}  // namespace
