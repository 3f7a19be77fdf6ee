// Answers, good and bad, and their headers.
#include <chrono>
#include <thread>

#include "tests/winapi/ErrorOf.h"
#include "tests/winapi/UnderWine.h"
#include "tests/winapi/wininet/HttpExchange.h"
#include "tests/winapi/wininet/ScriptedServer.h"

namespace {

const std::string kOk = "HTTP/1.1 200 OK\r\n";

TEST(HttpAnswer, BodiesEndAsTheirHeadSaysOrInAnError) {
  const std::pair<std::string, std::string> cases[] = {
      {kOk + "Content-Length: 5\r\n\r\nhelloMORE", UnderWine() ? "200 helloMORE" : "200 hello"},
      {kOk + "\r\nuntil the end", "200 until the end"},
      {"HTTP/1.0 404 Not Found\r\n\r\ngone", "404 gone"},
      {kOk + "Transfer-Encoding: chunked\r\n\r\n3\r\nabc\r\n2;x=y\r\nde\r\n0\r\nT: 1\r\n\r\n",
       "200 abcde"},
      {"HTTP/1.1 204 No Content\r\n\r\n", "204 "},
      {"HTTP/1.1 100 Continue\r\n\r\n" + kOk + "Content-Length: 1\r\n\r\nx", "200 x"},
      {kOk + "Content-Length: 0\r\n\r\n", "200 "},
      {"HTTP/1.1 500 \r\nContent-Length: 1\r\n\r\nx", "500 x"},
      {"", "error 12030"},
      {"hello\r\n\r\n", "error 12152"},
      {"HTTP/9.9 200 OK\r\n\r\n", "error 12152"},
      {"HTTP/1.1 x OK\r\n\r\n", "error 12152"},
      {"HTTP/1.1 200 OK", "error 12030"},
      {kOk + "Content-Length: -5\r\n\r\nhello", "error 12152"},
      {kOk + "Content-Length: 6\r\n\r\nhello", "200 helloerror 12030"},
      {kOk + "Transfer-Encoding: chunked\r\n\r\n-1\r\nabc", "200 error 12031"},
      {kOk + "Transfer-Encoding: chunked\r\n\r\nFFFFFFFFFFFFFFFFF\r\nabc", "200 error 12031"},
      {kOk + "Transfer-Encoding: chunked\r\n\r\n5\r\nabc", "200 abcerror 12030"},
      {kOk + "Transfer-Encoding: chunked\r\n\r\n3\r\nabc", "200 abcerror 12030"},
  };
  for (const auto& [answer, expected] : cases) {
    // Wine takes most of what is no answer for something.
    if (UnderWine() && expected.find("error") != std::string::npos) continue;
    ScriptedServer server(ScriptedServer::Answering(answer));
    EXPECT_EQ(HttpExchange(server.Port()).SendAndAnswer(), expected) << answer;
  }
}

TEST(HttpAnswer, ACutAnywhereIsNoWholeAnswer) {
  if (UnderWine()) GTEST_SKIP() << "Wine takes an answer that is cut for the whole";
  const std::string answers[] = {
      kOk + "A: b\r\nContent-Length: 11\r\n\r\nhello world",
      kOk + "Transfer-Encoding: chunked\r\n\r\n5\r\nhello\r\n6\r\n world\r\n0\r\n\r\n"};
  for (const std::string& answer : answers) {
    // The last line feed tells nothing new.
    for (std::size_t size = 0; size + 1 < answer.size(); ++size) {
      ScriptedServer server(ScriptedServer::Answering(answer.substr(0, size)));
      const std::string got = HttpExchange(server.Port()).SendAndAnswer();
      EXPECT_NE(got.find("error 120"), std::string::npos) << size << got;
    }
  }
}

TEST(HttpAnswer, AHeadWithoutEndIsCutOff) {
  if (UnderWine()) GTEST_SKIP();
  const std::string lines[] = {"X: y\r\n", "xxxxxxxxxxxxxxxx"};
  for (const std::string& line : lines) {
    ScriptedServer server([&line](ScriptedServer::Peer& peer) {
      peer.ReadHead();
      std::string many;
      while (many.size() < 60'000) many += line;
      peer.Send(kOk);
      while (peer.Send(many)) {
      }
    });
    const std::string got = HttpExchange(server.Port()).SendAndAnswer();
    EXPECT_EQ(got.substr(0, 6), "error ") << got.substr(0, 100);
  }
}

TEST(HttpAnswer, ABodyWithoutEndIsReadAsItComes) {
  ScriptedServer server([](ScriptedServer::Peer& peer) {
    peer.ReadHead();
    peer.Send(kOk + "\r\n");
    while (peer.Send(std::string(50'000, 'x'))) {
    }
  });
  HttpExchange exchange(server.Port());
  ASSERT_TRUE(exchange.Send());
  std::string bytes(1000, 0);
  for (int i = 0; i < 1000; ++i) {
    DWORD count = 0;
    ASSERT_TRUE(InternetReadFile(exchange.request, bytes.data(), 1000, &count));
    ASSERT_GT(count, 0u);
  }
  DWORD available = 0;
  EXPECT_TRUE(InternetQueryDataAvailable(exchange.request, &available, 0, 0));
  EXPECT_GT(available, 0u);
}

TEST(HttpAnswer, SilenceAnywhereEndsInTheTimeOut) {
  const std::string answer = kOk + "Content-Length: 5\r\n\r\nhello";
  for (const std::size_t size :
       {std::size_t{0}, std::size_t{10}, kOk.size() + 3, answer.size() - 2}) {
    ScriptedServer server([&](ScriptedServer::Peer& peer) {
      peer.ReadHead();
      peer.Send(answer.substr(0, size));
      peer.WaitForEnd();
    });
    HttpExchange exchange(server.Port());
    exchange.SetTimeOut(300);
    const std::string got = exchange.SendAndAnswer();
    // Wine gives the socket's error.
    EXPECT_NE(got.find(UnderWine() ? "error 1" : "error 12002"), std::string::npos)
        << size << " " << got;
  }
}

// A thread that waits in each call of a request, and another that gives up.
TEST(HttpAnswer, ClosingTheSessionEndsAllWaiting) {
  if (UnderWine()) GTEST_SKIP() << "Wine goes on waiting";
  const std::string beginnings[] = {"", kOk + "Content-Length: 5\r\n\r\nhe"};
  for (const std::string& beginning : beginnings) {
    ScriptedServer server([&](ScriptedServer::Peer& peer) {
      peer.ReadHead();
      peer.Send(beginning);
      peer.WaitForEnd();
    });
    HttpExchange exchange(server.Port());
    std::thread other([&] {
      while (server.Heads().empty()) std::this_thread::yield();
      std::this_thread::sleep_for(std::chrono::milliseconds(100));
      EXPECT_TRUE(InternetCloseHandle(exchange.session));
    });
    const std::string got = exchange.SendAndAnswer();
    other.join();
    // Or between two calls.
    const bool isTold = got.ends_with("error 12017") || got.ends_with("error 6");
    EXPECT_TRUE(isTold) << got;
  }
}

TEST(HttpAnswer, WhatMovesIsNotCut) {
  const std::string answer = kOk + "Content-Length: 5\r\n\r\nhello";
  ScriptedServer server([&](ScriptedServer::Peer& peer) {
    peer.ReadHead();
    for (const char c : answer) {
      peer.Wait(80);
      peer.Send(std::string(1, c));
    }
  });
  HttpExchange exchange(server.Port());
  // All of it takes half as long again.
  exchange.SetTimeOut(2200);
  EXPECT_EQ(exchange.SendAndAnswer(), "200 hello");
}

TEST(HttpAnswer, HeadersAreFoundByNameAndIndex) {
  ScriptedServer server(
      ScriptedServer::Answering(kOk +
                                "Content-Type: text/plain\r\nX-One:  a \r\nx-one: b\r\nX-Empty:\r\n"
                                "Content-Length: 2\r\n\r\nok"));
  HttpExchange exchange(server.Port());
  ASSERT_TRUE(exchange.Send());
  const std::tuple<DWORD, const char*, DWORD, const char*> cases[] = {
      {HTTP_QUERY_CUSTOM, "X-ONE", 0, "a"},
      {HTTP_QUERY_CUSTOM, "x-one", 1, "b"},
      {HTTP_QUERY_CUSTOM, "x-one", 2, "12150"},
      {HTTP_QUERY_CUSTOM, "x-on", 0, "12150"},
      {HTTP_QUERY_CUSTOM, "Content-Type", 0, "text/plain"},
      {HTTP_QUERY_CONTENT_TYPE, "", 0, "text/plain"},
      {HTTP_QUERY_STATUS_TEXT, "", 0, "OK"},
      {HTTP_QUERY_VERSION, "", 0, "HTTP/1.1"},
      {HTTP_QUERY_LOCATION, "", 0, "12150"},
  };
  for (const auto& [level, name, index, value] : cases) {
    EXPECT_EQ(exchange.Query(level, name, index), value) << name << index;
  }
  DWORD number = 0;
  DWORD size = sizeof number;
  DWORD index = 0;
  const DWORD level = HTTP_QUERY_CONTENT_LENGTH | HTTP_QUERY_FLAG_NUMBER;
  EXPECT_TRUE(HttpQueryInfoW(exchange.request, level, &number, &size, &index));
  EXPECT_EQ(number, 2u);
  EXPECT_EQ(size, 4u);
}

TEST(HttpAnswer, AHeadMayStandAlone) {
  const std::string head = kOk + "X-Long: a\r\n\t b\r\nContent-Length: 5\r\n\r\n";
  ScriptedServer server(ScriptedServer::Answering(head));
  HttpExchange exchange(server.Port(), "HEAD");
  EXPECT_EQ(exchange.SendAndAnswer(), "200 ");
  EXPECT_EQ(server.Heads().at(0).substr(0, 7), "HEAD / ");
  if (UnderWine()) return;  // it ends a header with its line
  EXPECT_EQ(exchange.Query(HTTP_QUERY_CUSTOM, "X-Long", 0), "a b");
  EXPECT_EQ(exchange.Query(HTTP_QUERY_RAW_HEADERS_CRLF, "", 0), head);
}

// It goes on with no header: that of the answer before, on the same connection, has gone.
TEST(HttpAnswer, AFirstHeaderThatBeginsWithABlankIsNone) {
  ScriptedServer server([](ScriptedServer::Peer& peer) {
    for (const char* const head : {"X-One: 1\r\n", " more\r\n"}) {
      if (!peer.ReadHead().empty()) peer.Send(kOk + head + "Content-Length: 2\r\n\r\nok");
    }
  });
  EXPECT_EQ(HttpExchange(server.Port()).SendAndAnswer(), "200 ok");
  EXPECT_EQ(HttpExchange(server.Port()).SendAndAnswer(), UnderWine() ? "200 ok" : "error 12152");
}

TEST(HttpAnswer, ABufferTooSmallIsToldItsSize) {
  ScriptedServer server(ScriptedServer::Answering(kOk + "N: value\r\nContent-Length: 0\r\n\r\n"));
  HttpExchange exchange(server.Port());
  ASSERT_TRUE(exchange.Send());
  WCHAR buffer[8] = {'N', 0, '#', '#', '#', '#', '#', '#'};
  DWORD size = 5 * sizeof(WCHAR);
  DWORD index = 0;
  EXPECT_EQ(ErrorOf(HttpQueryInfoW(exchange.request, HTTP_QUERY_CUSTOM, buffer, &size, &index)),
            ERROR_INSUFFICIENT_BUFFER);
  EXPECT_EQ(size, 6 * sizeof(WCHAR));
  EXPECT_EQ(index, 0u);
  buffer[0] = 'N';
  buffer[1] = 0;
  EXPECT_TRUE(HttpQueryInfoW(exchange.request, HTTP_QUERY_CUSTOM, buffer, &size, &index));
  EXPECT_EQ(size, 5 * sizeof(WCHAR));
  EXPECT_EQ(Wide(buffer), WTEXT("value"));
  EXPECT_EQ(buffer[6], '#');
  EXPECT_EQ(index, 1u);
}

}  // namespace
