// The client against a server that the tests script.
#include <memory>

#include "kelp0lang/HttpClient.h"
#include "tests/HttpTest.h"
#include "tests/TempFolder.h"
#include "tests/winapi/UnderWine.h"
#include "tests/winapi/wininet/ScriptedServer.h"

namespace {

using Client = Dovek::CHttpClientT<Dovek::CHttpToolW, Dovek::CHttpEncoderW>;
using Response = Client::Response;

const std::string kOk = "HTTP/1.1 200 OK\r\nContent-Length: 2\r\n\r\nok";

WideText Url(const ScriptedServer& server, const WideText& rest) {
  const std::string port = std::to_string(server.Port());
  return KTEXT("http://127.0.0.1:") + WideText(port.begin(), port.end()) + rest;
}

std::string ContentOf(Response* response) {
  const std::unique_ptr<Response> own(response);
  std::string content;
  BYTE piece[100];
  while (const DWORD bytes = own->ReadContent(piece, sizeof piece))
    content.append(piece, piece + bytes);
  return content;
}

// Hands back the body that it gets, by its length.
void Echo(ScriptedServer::Peer& peer) {
  while (!peer.ReadHead().empty()) {
    const std::string body = peer.ReadBody();
    peer.Send("HTTP/1.1 200 OK\r\nContent-Length: " + std::to_string(body.size()) + "\r\n\r\n" +
              body);
  }
}

std::string Finish(Client& client, DWORD desired, int* calls = nullptr) {
  for (int i = 1;; ++i) {
    if (calls != nullptr) *calls = i;
    if (Response* const response = client.Proceed(desired)) return ContentOf(response);
  }
}

TEST(HttpClient, AGetPutsItsParametersIntoTheUrl) {
  ScriptedServer server([](ScriptedServer::Peer& peer) {
    while (!peer.ReadHead().empty()) peer.Send(kOk);
  });
  const std::pair<WideText, std::string> cases[] = {
      {KTEXT(""), "/?a=1&b=x+y%26&c=%3D"},
      {KTEXT("/p?x=1#f"), "/p?x=1&a=1&b=x+y%26&c=%3D"},
      {KTEXT("?q"), "/?q&a=1&b=x+y%26&c=%3D"},
  };
  Client client;
  client.AddParam(KTEXT("b"), KTEXT("x y&"), 0);
  client.AddParam(KTEXT("a"), KTEXT("1"), 0);
  client.AddParam(KTEXT("c"), KTEXT("%3D"), Dovek::ParamEncodedValue);
  client.AddHeader(KTEXT("X-Own"), KTEXT("mine"));
  for (const auto& [rest, object] : cases) {
    const WideText url = Url(server, rest);
    std::vector<WChar> made(client.GetUrlLen(url.c_str()) + 2, '#');
    client.MakeGetUrl(made.data(), url.c_str());
    EXPECT_EQ(made[made.size() - 2], 0);
    EXPECT_EQ(made.back(), '#');
    EXPECT_EQ(ContentOf(client.SendGet(url.c_str(), FALSE)), "ok");
    const std::string head = server.Heads().back();
    EXPECT_EQ(head.substr(0, object.size() + 5),
              "GET " + object + (UnderWine() ? head.substr(object.size() + 4, 1) : " "));
    for (const char* const line : {"Cache-Control: no-cache", "X-Own: mine", "Accept: */*",
                                   "User-Agent: Dovek HTTP Client Class"}) {
      EXPECT_NE(head.find(std::string("\r\n") + line + "\r\n"), std::string::npos) << line << head;
    }
  }
  client.ClearParam();
  client.ClearHeader();
  client.SetAgent(KTEXT("other"));
  EXPECT_EQ(ContentOf(client.SendGet(Url(server, KTEXT("/")).c_str(), TRUE)), "ok");
  EXPECT_EQ(server.Heads().back().find("Cache-Control"), std::string::npos);
  EXPECT_NE(server.Heads().back().find("User-Agent: other"), std::string::npos);
  EXPECT_EQ(server.Connections(), 1);
}

TEST(HttpClient, AFormIsPostedStepByStep) {
  ScriptedServer server(Echo);
  const WideText url = Url(server, KTEXT("/form"));
  struct Case {
    std::vector<std::pair<const WChar*, const WChar*>> params;
    DWORD desired;
    std::string body;
    int calls;
  };
  const Case cases[] = {
      {{}, 10, "", 1},
      {{{KTEXT("a"), KTEXT("b c")}}, 10, "a=b+c", 3},
      {{{KTEXT("a"), KTEXT("b c")}}, 1, "a=b+c", 5},
      {{{KTEXT("b"), KTEXT("2")}, {KTEXT("a"), KTEXT("1")}}, 10, "a=1&b=2", 5},
      {{{KTEXT("name"), nullptr}}, 10, "name=", 2},
  };
  for (const auto& [params, desired, body, calls] : cases) {
    Client client;
    for (const auto& [name, value] : params) client.AddParam(name, value, 0);
    client.StartPost(60'000, url.c_str(), FALSE);
    EXPECT_EQ(client.PostStat().ActualTotalByte(), body.size());
    int made = 0;
    EXPECT_EQ(Finish(client, desired, &made), body);
    EXPECT_EQ(made, calls) << body;
    EXPECT_NE(server.Heads().back().find("Content-Type: application/x-www-form-urlencoded\r\n"),
              std::string::npos);
  }
}

std::string Replaced(std::string text, const std::string& from, const std::string& to) {
  for (std::size_t at = 0; (at = text.find(from, at)) != std::string::npos; at += to.size()) {
    text.replace(at, from.size(), to);
  }
  return text;
}

// The boundary that a head tells.
std::string BoundaryOf(const std::string& head) {
  const std::size_t at = head.find("boundary=") + 9;
  return head.substr(at, head.find("\r\n", at) - at);
}

TEST(HttpClient, AnUploadHasThePartsOfItsParameters) {
  const TempFolder folder;
  const std::string content(130'000, 'f');
  folder.Write("big", content);
  folder.Write("empty", "");
  ScriptedServer server(Echo);
  Client client;
  client.UseUtf8(TRUE);
  const WideText big = folder.Wide(KTEXT("big"));
  const WideText empty = folder.Wide(KTEXT("empty"));
  client.AddParam(KTEXT("c"), KTEXT("\xE0 &"), 0);
  client.AddParam(KTEXT("a"), big.c_str(), Dovek::ParamFile);
  client.AddParam(KTEXT("b"), empty.c_str(), Dovek::ParamFile);
  client.AddParam(KTEXT("d"), nullptr, 0);
  client.StartUpload(60'000, Url(server, KTEXT("/up")).c_str(), FALSE);
  EXPECT_EQ(client.PostStat().FileCount(), 2u);
  EXPECT_EQ(client.Proceed(100'000), nullptr);
  EXPECT_TRUE(client.PostStat().CurrParamIsFile());
  EXPECT_EQ(client.Proceed(100'000), nullptr);
  EXPECT_EQ(client.PostStat().CurrParamPostedByte(), 100'000u);
  const std::string body = Finish(client, 100'000);
  const std::string boundary = BoundaryOf(server.Heads().back());
  EXPECT_EQ(boundary.substr(0, 10), "----KEVOD-");
  EXPECT_EQ(boundary.size(), 43u);
  const std::string part = "--B\r\nContent-Disposition: form-data; name=\"";
  const std::string type = "\"\r\nContent-Type: application/octet-stream\r\n\r\n";
  EXPECT_EQ(Replaced(body, boundary, "B"),
            part + "a\"; filename=\"" + Narrow(big.c_str()) + type + content + "\r\n" + part +
                "b\"; filename=\"" + Narrow(empty.c_str()) + type + "\r\n" + part +
                "c\"\r\n\r\n\xC3\xA0 &\r\n" + part + "d\"\r\n\r\n\r\n--B--\r\n");

  client.ClearParam();
  client.StartUpload(60'000, Url(server, KTEXT("/up")).c_str(), FALSE);
  const std::string none = Finish(client, 1);
  EXPECT_EQ(none, "\r\n--" + BoundaryOf(server.Heads().back()) + "--\r\n");
}

TEST(HttpClient, AFileThatChangesIsSentAsItWasOrNotAtAll) {
  const TempFolder folder;
  const auto path = folder.Path() / "file";
  const WideText wide = folder.Wide(KTEXT("file"));
  ScriptedServer server(Echo);
  for (const int size : {50, 200}) {
    folder.Write("file", std::string(100, 'x'));
    Client client;
    client.AddParam(KTEXT("f"), wide.c_str(), Dovek::ParamFile);
    client.StartUpload(0, Url(server, KTEXT("/")).c_str(), FALSE);
    if (size > 100) {
      EXPECT_EQ(client.Proceed(10), nullptr);
    }
    std::filesystem::resize_file(path, static_cast<std::uintmax_t>(size));
    if (size < 100) {
      EXPECT_EQ(FailureOf([&] { Finish(client, 10); }),
                "105 0: Couldn't read expected bytes from a file.");
      EXPECT_FALSE(client.PostStat().IsActive());
      EXPECT_EQ(FailureOf([&] { client.Proceed(10); }),
                "104 0: The post context is not started yet.");
    } else {
      EXPECT_NE(Finish(client, 10).find("\r\n\r\n" + std::string(100, 'x') + "\r\n--"),
                std::string::npos);
    }
  }
  // One file, or all of the body, of 4 GiB; nothing is sent of it.
  const std::size_t heads = server.Heads().size();
  const std::pair<std::uint64_t, std::string> sizes[] = {
      {0xFFFF'FFFE, "112 0: An arithmetic overflow error has been occurred."},
      {0xFFFF'FFFF, "605 0: ::GetFileSize failed (\"" + Narrow(wide.c_str()) + "\")."},
      {0x1'0000'0000, "605 0: ::GetFileSize failed (\"" + Narrow(wide.c_str()) + "\")."},
  };
  for (const auto& [size, failure] : sizes) {
    std::filesystem::resize_file(path, size);
    Client client;
    client.AddParam(KTEXT("f"), wide.c_str(), Dovek::ParamFile);
    EXPECT_EQ(FailureOf([&] { client.StartUpload(0, Url(server, KTEXT("/")).c_str(), FALSE); }),
              failure);
  }
  EXPECT_EQ(server.Heads().size(), heads);
  Client client;
  client.AddParam(KTEXT("f"), folder.Wide(KTEXT("none")).c_str(), Dovek::ParamFile);
  EXPECT_EQ(FailureOf([&] {
              client.StartUpload(0, Url(server, KTEXT("/")).c_str(), FALSE);
            }).substr(0, 36),
            "603 2: OpenFile (::CreateFile) faile");
}

TEST(HttpClient, AResponseOutlivesItsClientAndKeepsItsHeaders) {
  ScriptedServer server(ScriptedServer::Answering(
      "HTTP/1.1 404 Not Found\r\nX: 1\r\nx: 2\r\nX-Long: " + std::string(3000, 'l') +
      "\r\nContent-Length: 4\r\n\r\ngone"));
  std::unique_ptr<Response> response;
  {
    Client client;
    response.reset(client.SendGet(Url(server, KTEXT("/")).c_str(), FALSE));
  }
  DWORD length = 0;
  EXPECT_TRUE(response->GetContentLength(length));
  EXPECT_EQ(length, 4u);
  EXPECT_EQ(response->GetStatus(), 404u);
  const WChar* const first = response->GetHeader(KTEXT("x"), 0);
  EXPECT_EQ(Narrow(response->GetHeader(KTEXT("X"), 1)), "2");
  EXPECT_EQ(response->GetHeader(KTEXT("X"), 2), nullptr);
  EXPECT_EQ(response->GetHeader(KTEXT("Y"), 0), nullptr);
  EXPECT_EQ(Narrow(response->GetHeader(KTEXT("x-long"), 0)), std::string(3000, 'l'));
  EXPECT_EQ(Narrow(first), "1");
  EXPECT_EQ(FailureOf([&] { response->ReadContent(nullptr, 1); }),
            "0 0: CHttpResponseT::ReadContent: pbyBuff can not be NULL.");
  EXPECT_EQ(FailureOf([&] {
              BYTE byte;
              response->ReadContent(&byte, 0);
            }),
            "0 0: CHttpResponseT::ReadContent: cbBuff can not be zero.");
  EXPECT_EQ(ContentOf(response.release()), "gone");
}

TEST(HttpClient, BadUrlsAndTextsAreRefused) {
  const std::pair<WideText, const char*> urls[] = {
      {KTEXT("http://h:123456/"), "107 0: The port number is not valid."},
      {KTEXT("http://h:65536/"), "107 0: The port number is not valid."},
      {KTEXT("http://h:8x/"), "107 0: The port number is not valid."},
      {KTEXT("http://:80/"), "103 0: The requested URL is not a valid URL."},
      {KTEXT(""), "103 0: The requested URL is not a valid URL."},
  };
  Client client;
  for (const auto& [url, failure] : urls) {
    EXPECT_EQ(FailureOf([&, text = url.c_str()] { delete client.SendGet(text, FALSE); }), failure);
  }
  const std::string line = " can not contain CR or LF.";
  EXPECT_EQ(FailureOf([&] { client.AddHeader(KTEXT("X"), KTEXT("a\r\nY: b")); }),
            "0 0: CHttpClientT::AddHeader: szValue" + line);
  EXPECT_EQ(FailureOf([&] { client.AddHeader(KTEXT("X\n"), nullptr); }),
            "0 0: CHttpClientT::AddHeader: szName" + line);
  EXPECT_EQ(FailureOf([&] { delete client.SendGet(KTEXT("http://127.0.0.1/\r\nX: y"), FALSE); }),
            "0 0: CHttpToolA::OpenRequest: szObjectName" + line);
  client.AddParam(KTEXT("a\rb"), KTEXT("1"), 0);
  EXPECT_EQ(FailureOf([&] { client.StartUpload(0, KTEXT("http://127.0.0.1/"), FALSE); }),
            "0 0: CHttpClientT::StartUpload: szName" + line);
  EXPECT_EQ(FailureOf([&] { client.Proceed(1); }), "104 0: The post context is not started yet.");
}

TEST(HttpClient, APostUnderWayTakesNothingElse) {
  ScriptedServer server(Echo);
  Client client;
  client.AddParam(KTEXT("a"), KTEXT("1"), 0);
  client.StartPost(0, Url(server, KTEXT("/")).c_str(), FALSE);
  const std::string refused =
      ": It is not allowed to call this method if the POST context is active.";
  EXPECT_EQ(FailureOf([&] { client.AddParam(KTEXT("b"), nullptr, 0); }),
            "0 0: CHttpClientT::AddParam" + refused);
  EXPECT_EQ(FailureOf([&] { client.ClearParam(); }), "0 0: CHttpClientT::ClearParam" + refused);
  EXPECT_EQ(FailureOf([&] { client.Proceed(0); }),
            "0 0: CHttpClientT::_ProceedPostContext: nDesired can not be zero.");
  EXPECT_FALSE(client.PostStat().IsActive());
  // Another one takes its place.
  client.StartPost(0, Url(server, KTEXT("/")).c_str(), FALSE);
  client.StartPost(0, Url(server, KTEXT("/")).c_str(), FALSE);
  EXPECT_EQ(Finish(client, 1), "a=1");
}

// The server is the proxy here.
TEST(HttpClient, AProxyHearsTheAccount) {
  ScriptedServer proxy([](ScriptedServer::Peer& peer) {
    for (std::string head; !(head = peer.ReadHead()).empty();) {
      const bool knows = head.find("\r\nProxy-Authorization: Basic dTpw\r\n") != std::string::npos;
      peer.Send(knows ? kOk
                      : "HTTP/1.1 407 Who\r\nProxy-Authenticate: Basic realm=\"r\"\r\n"
                        "Content-Length: 0\r\n\r\n");
    }
  });
  Client client;
  const WideText address = Url(proxy, KTEXT("")).substr(7);
  client.SetProxy(INTERNET_OPEN_TYPE_PROXY, address.c_str(), KTEXT(""));
  client.SetProxyAccount(KTEXT("u"), KTEXT("p"));
  EXPECT_EQ(ContentOf(client.SendGet(KTEXT("http://far.example/x"), FALSE)), "ok");
  // With the port or without it.
  EXPECT_EQ(proxy.Heads().back().substr(0, 22), "GET http://far.example");
}

TEST(HttpClient, LentHandlesStayOpen) {
  ScriptedServer server(Echo);
  Client client;
  const WideText url = Url(server, KTEXT("/"));
  HINTERNET internet = client.OpenInternet();
  HINTERNET connection = client.OpenConnection(internet, url.c_str(), nullptr, nullptr);
  Dovek::THttpRequestOptions options;
  options.hInternet = internet;
  options.hConnection = connection;
  client.AddParam(KTEXT("a"), KTEXT("1"), 0);
  for (int i = 0; i < 2; ++i) {
    client.StartPost(url.c_str(), options);
    EXPECT_EQ(Finish(client, 10), "a=1");
    EXPECT_EQ(ContentOf(client.SendGet(url.c_str(), options)), "");
  }
  EXPECT_TRUE(InternetCloseHandle(connection));
  EXPECT_TRUE(InternetCloseHandle(internet));
}

}  // namespace
