// Requests in one call, against a server that the tests script.
#include "kelp0lang/HttpRequest.h"

#include "tests/TestText.h"
#include "tests/winapi/wininet/ScriptedServer.h"

namespace {

using kelp::String;
using kelp::WString;

WString Url(const ScriptedServer& server, const WChar* rest) {
  return WString(KTEXT("http://127.0.0.1:")) + WString::ValueOf(int{server.Port()}).c_str() + rest;
}

TEST(HttpRequest, TextIsGivenAndOtherContentCounted) {
  const std::string content(25'000, 't');
  const std::string length = "Content-Length: 25000\r\n\r\n" + content;
  const std::pair<std::string, bool> cases[] = {
      {"Content-Type: TEXT/plain; charset=x\r\n", true},
      {"Content-Type: image/png\r\n", false},
      {"Content-Type: texts/plain\r\n", false},
      {"", false},
  };
  for (const auto& [type, isText] : cases) {
    ScriptedServer server(ScriptedServer::Answering("HTTP/1.1 200 OK\r\n" + type + length));
    String text("before");
    unsigned int size = 7;
    EXPECT_TRUE(ExecuteHttpRequest(false, Url(server, KTEXT("/")), {}, text, size));
    EXPECT_EQ(size, content.size());
    EXPECT_EQ(text, String(isText ? content.c_str() : "before")) << type;
  }
}

TEST(HttpRequest, ParametersGoInTheOrderOfTheirNames) {
  ScriptedServer server([](ScriptedServer::Peer& peer) {
    peer.ReadHead();
    const std::string body = peer.Read(9);
    peer.Send("HTTP/1.1 200 OK\r\nContent-Type: text/x\r\n\r\n" + body);
  });
  THttpParams params(KTEXT("b"), KTEXT("2 3"));
  params.params.emplace_back(KTEXT("a"), KTEXT("1"));
  String text;
  unsigned int size = 0;
  EXPECT_TRUE(ExecuteHttpRequest(true, Url(server, KTEXT("/")), params, text, size));
  EXPECT_EQ(text, String("a=1&b=2+3"));
  EXPECT_FALSE(ExecuteHttpRequest(false, KTEXT("http://h:99999/"), params, text, size));
}

// What a raw exchange sends, and the answer.
struct Raw {
  int result;
  std::string sent;
  WString headers;
  WString content;
};

Raw Exchange(bool post, const WChar* rest, const WChar* body, const std::string& answer) {
  Raw raw;
  std::string read;
  {
    ScriptedServer server([&](ScriptedServer::Peer& peer) {
      raw.sent = peer.ReadHead();
      if (post) raw.sent += peer.Read(std::char_traits<WChar>::length(body));
      peer.Send(answer);
    });
    raw.headers = raw.content = KTEXT("before");
    raw.result = SendRequest(post, Url(server, rest).c_str(), body, raw.headers, raw.content);
  }
  return raw;
}

TEST(SendRequest, SendsItsLinesAndGivesTheAnswerAsItStands) {
  const std::string fixed =
      "Accept: image/gif, image/x-xbitmap, image/jpeg, image/pjpeg, application/vnd.ms-excel, "
      "application/msword, application/vnd.ms-powerpoint, */*\r\nAccept-Language: en-us\r\n"
      "Accept-Encoding: gzip, deflate\r\nUser-Agent: Mozilla/4.0\r\n";
  const std::string host = "Host: 127.0.0.1\r\n";
  const std::string form = "Content-Type: application/x-www-form-urlencoded\r\n";
  const std::string answer = "HTTP/1.0 404 No\r\nA: b\r\n\r\ncontent";
  struct Case {
    bool post;
    const WChar* rest;
    const WChar* body;
    std::string sent;
  };
  const Case cases[] = {
      {false, KTEXT("/path?a=B"), KTEXT(""), "GET /path?a=B HTTP/1.0\r\n" + fixed + host + "\r\n"},
      {false, KTEXT(""), KTEXT("ab"),
       "GET / HTTP/1.0\r\n" + fixed + "Content-Length: 2\r\n" + host + "\r\n"},
      {true, KTEXT("/"), KTEXT("a b"),
       "POST / HTTP/1.0\r\n" + fixed + "Content-Length: 3\r\n" + host + form + "\r\na b"},
      {true, KTEXT("/x\r\nEvil: 1"), KTEXT(""),
       "POST /x HTTP/1.0\r\n" + fixed + host + form + "\r\n"},
  };
  for (const auto& [post, rest, body, sent] : cases) {
    const Raw raw = Exchange(post, rest, body, answer);
    EXPECT_EQ(raw.result, 0);
    EXPECT_EQ(raw.sent, sent);
    EXPECT_EQ(raw.headers, WString(KTEXT("HTTP/1.0 404 No\r\nA: b\r\n\r\n")));
    EXPECT_EQ(raw.content, WString(KTEXT("content")));
  }
}

TEST(SendRequest, AnAnswerEndsWhereTheConnectionDoes) {
  const std::tuple<std::string, const WChar*, const WChar*> cases[] = {
      {"", KTEXT(""), KTEXT("")},
      {"HTTP/1.0 200", KTEXT("HTTP/1.0 200"), KTEXT("")},
      {"a\n\r\r\nb", KTEXT("a\n\r\r\n"), KTEXT("b")},
      {"a\r\n \r\n\r\n\xEF\xBB\xBF\xC3\xA0", KTEXT("a\r\n \r\n\r\n"), KTEXT("\xE0")},
      {"\n\xEF\xBB\xBF", KTEXT("\n"), KTEXT("")},
  };
  for (const auto& [answer, headers, content] : cases) {
    const Raw raw = Exchange(false, KTEXT("/"), KTEXT(""), answer);
    EXPECT_EQ(raw.result, 0);
    EXPECT_EQ(raw.headers, WString(headers));
    EXPECT_EQ(raw.content, WString(content));
  }
}

TEST(SendRequest, FailuresHaveTheirCodes) {
  std::uint16_t closed;
  {
    ScriptedServer server([](ScriptedServer::Peer&) {});
    closed = server.Port();
  }
  const WString port = WString::ValueOf(int{closed});
  const std::pair<WString, int> cases[] = {
      {KTEXT("https://127.0.0.1/"), -1},
      {KTEXT("host:8080/x"), -1},
      {KTEXT("http://"), -3},
      {KTEXT("http://no-such-host.invalid/"), -3},
      {WString(KTEXT("http://127.0.0.1:")) + port.c_str() + KTEXT("/"), -4},
      {KTEXT("http://127.0.0.1:99999/"), -4},
  };
  for (const auto& [url, code] : cases) {
    WString headers(KTEXT("before"));
    WString content(KTEXT("before"));
    EXPECT_EQ(SendRequest(false, url.c_str(), KTEXT(""), headers, content), code);
    EXPECT_EQ(headers + content.c_str(), WString());
  }
}

}  // namespace
