// Points files that a server has, and files that are sent to one.
#include <gtest/gtest.h>

#include <regex>

#include "fieldbook/values/ByteText.h"
#include "fieldbook/web/WebFailure.h"
#include "tests/fieldbook/RunProgram.h"
#include "tests/winapi/UnderWine.h"
#include "tests/winapi/wininet/ScriptedServer.h"

namespace {

const std::string kPoints = std::string(FIELDBOOK_DATA) + "/points.csv";

std::string Answer(const std::string& status, const std::string& headers, const std::string& body) {
  return "HTTP/1.1 " + status + "\r\n" + headers +
         "Content-Length: " + std::to_string(body.size()) + "\r\n\r\n" + body;
}

std::string UrlOf(const ScriptedServer& server, const std::string& path = "/p.csv") {
  return "http://127.0.0.1:" + std::to_string(server.Port()) + path;
}

// Takes what it is sent, and answers.
ScriptedServer::Script Taking(const std::string& answer) {
  return [answer](ScriptedServer::Peer& peer) {
    if (peer.ReadHead().empty()) return;
    peer.ReadBody();
    peer.Send(answer);
  };
}

TEST(Web, WhatAServerHasIsReadAsAFileIs) {
  const std::string bytes = ReadFile(kPoints);
  const ScriptedServer server(ScriptedServer::Answering(Answer("200 OK", "", bytes)));
  for (const std::string& url : {UrlOf(server), "HTTP" + UrlOf(server).substr(4)}) {
    for (const std::vector<std::string>& behind :
         {std::vector<std::string>{}, {"--csv"}, {"--to", "ft", "--sort", "name"}}) {
      std::vector<std::string> arguments = {"show", kPoints};
      arguments.insert(arguments.end(), behind.begin(), behind.end());
      const ProgramResult expected = RunFieldbook(arguments);
      arguments[1] = url;
      const ProgramResult result = RunFieldbook(arguments);
      EXPECT_EQ(result.out, expected.out);
      EXPECT_EQ(result.err, expected.err);
      EXPECT_EQ(result.status, 0);
    }
  }
  EXPECT_EQ(RunFieldbook({"inverse", UrlOf(server), "T1", "BM2"}).out,
            RunFieldbook({"inverse", kPoints, "T1", "BM2"}).out);
  RunFieldbook({"show", UrlOf(server, "/citt\u00E0 1.csv?a=%20#part")});
  EXPECT_EQ(server.Heads().back().substr(0, 33), "GET /citt%C3%A0%201.csv?a=%20 HTT");
}

TEST(Web, EachFailureToReadHasItsWords) {
  const std::string ok = "HTTP/1.1 200 OK\r\n";
  const std::pair<std::string, std::string> cases[] = {
      {Answer("404 Not Found", "", "no"), "the server answers 404: there is no such file"},
      {Answer("418 Teapot", "", "no"), "the server answers 418"},
      {ok + "Content-Length: 1500\r\n\r\nP1,1,2,3\n",
       UnderWine() ? "the connection was broken behind 9 bytes of 1.5 kB"
                   : "the connection was broken"},
      {Answer("200 OK", "Content-Type: text/html\r\n", "<html>"),
       "this isn't a points file: line 1: .*"},
      {Answer("200 OK", "", ""), "this isn't a points file: it holds no point"},
  };
  for (const auto& [answer, words] : cases) {
    const ScriptedServer server(ScriptedServer::Answering(answer));
    for (const std::vector<std::string>& behind : {std::vector<std::string>{}, {"--csv"}}) {
      std::vector<std::string> arguments = {"show", UrlOf(server), kPoints};
      arguments.insert(arguments.end(), behind.begin(), behind.end());
      const ProgramResult result = RunFieldbook(arguments);
      // With --csv what was taken for which column is told too.
      EXPECT_TRUE(std::regex_search(
          result.err, std::regex("(^|\n)fieldbook: " + UrlOf(server) + ": " + words + "\n")))
          << result.err;
      EXPECT_NE(result.out.find("T1"), std::string::npos) << "the other file is shown";
      EXPECT_EQ(result.status, 1);
    }
  }
}

TEST(Web, WhatHasNoServerIsOneClearLine) {
  std::string closed;
  {
    const ScriptedServer server(ScriptedServer::Answering(""));
    closed = UrlOf(server);
  }
  const DataFolder folder;
  const std::string large = folder.Write("large", "");
  std::filesystem::resize_file(folder.PathOf("large"), 0x1'0000'0000);
  const std::string hint = "\nTry: fieldbook (edit|send) --help\n";
  const std::pair<std::vector<std::string>, std::string> cases[] = {
      {{"show", closed}, closed + ": there is no connection to the server\n"},
      {{"send", kPoints, closed}, closed + ": there is no connection to the server\n"},
      {{"show", "http://no-such-host.invalid/"}, ".*: there is no server of that name\n"},
      {{"show", "http://h:123456/"}, ".*: the port in the address isn't one\n"},
      {{"show", "https://"}, ".*: this isn't an address of the web\n"},
      {{"send", large, closed}, ".*large: 4 GiB and more can't be sent at once\n"},
      {{"send", "none.csv", closed}, "none.csv: there is no such file\n"},
      {{"edit", closed}, "edit takes a FILE that it can write; one on the web it can't" + hint},
      {{"send", kPoints}, "send takes FILE and URL, 1 given" + hint},
      {{"send", kPoints, "ftp://h/"}, "\"ftp://h/\" isn't an address with .*" + hint},
      {{"send", "-", closed}, "send takes a FILE, not standard input" + hint},
      {{"send", kPoints, closed, "--field", "x=1", "--field", "x"},
       "--field: \"x\" isn't NAME=VALUE" + hint},
      {{"send", kPoints, closed, "--field", "=1"}, "--field: \"=1\" isn't NAME=VALUE" + hint},
      {{"send", kPoints, closed, "--field=a\"b=1"}, "--field: .* isn't NAME=VALUE" + hint},
  };
  for (const auto& [arguments, error] : cases) {
    const ProgramResult result = RunFieldbook(arguments);
    EXPECT_TRUE(std::regex_match(result.err, std::regex("fieldbook: " + error))) << result.err;
    EXPECT_EQ(result.out, "");
    EXPECT_EQ(result.status, 1);
  }
}

TEST(Web, AFileIsSentWithItsFieldsAndTheAnswerPrinted) {
  const DataFolder folder;
  const std::string content = std::string(200'000, 'x') + "\r\n--end";
  const std::string path = folder.Write("job.csv", content);
  const ScriptedServer server(
      Taking(Answer("201 Created", "Content-Type: text/plain\r\n", "taken\r\n\x1B[2Jtwo")));
  const ProgramResult result =
      RunFieldbook({"send", path, UrlOf(server), "--field", "job=north", "--field=Job=c=d\u00E0",
                    "--field", "z=", "--progress"});
  EXPECT_EQ(result.status, 0);
  EXPECT_TRUE(std::regex_match(
      result.out, std::regex(".*job\\.csv: 200\\.\\d kB sent, [0-9.]+ [kMG]?(B|bytes)/s\n"
                             "the server answers 201\ntaken\n\uFFFD\\[2Jtwo\n")))
      << result.out;
  EXPECT_TRUE(std::regex_match(
      result.err, std::regex("\\[\\.{20}\\]   0% sending\n(.*\n)*\\[#{20}\\] 100% sending.*\n")))
      << result.err;

  const std::string head = server.Heads().at(0);
  std::smatch boundary;
  ASSERT_TRUE(std::regex_search(
      head, boundary, std::regex("Content-Type: multipart/form-data; boundary=([^\r]+)\r")));
  const std::string part = "--" + boundary[1].str() + "\r\nContent-Disposition: form-data; name=";
  EXPECT_EQ(server.Bodies().at(0), part + "\"file\"; filename=\"" + path +
                                       "\"\r\nContent-Type: application/octet-stream\r\n\r\n" +
                                       content + "\r\n" + part + "\"job\"\r\n\r\nnorth\r\n" + part +
                                       "\"Job\"\r\n\r\nc=d\u00E0\r\n" + part +
                                       "\"z\"\r\n\r\n\r\n--" + boundary[1].str() + "--\r\n");
}

TEST(Web, AServerThatDoesNotTakeAFileIsHeard) {
  const std::string json = "Content-Type: application/json\r\n";
  const std::string image = "Content-Type: image/png\r\n";
  const std::string longText(70'000, 'a');
  struct {
    std::string answer, out, err;
  } const cases[] = {
      {Answer("500 Oops", json, "{}"), "{}\n", "the server answers 500: it has failed itself"},
      {Answer("413 Large", image, "{}"), "",
       "the server answers 413: the file is too large for it"},
      {Answer("401 Who", "Content-Type: text/html\r\n", longText),
       std::string(65'536, 'a') + "\n... and more\n",
       "the server answers 401: it asks for an account"},
  };
  for (const auto& [answer, out, err] : cases) {
    const ScriptedServer server(Taking(answer));
    const ProgramResult result = RunFieldbook({"send", kPoints, UrlOf(server)});
    EXPECT_EQ(result.status, 1);
    const std::size_t end = result.out.find('\n') + 1;
    EXPECT_NE(result.out.substr(0, end).find("points.csv: 1."), std::string::npos) << result.out;
    EXPECT_EQ(result.out.substr(end), out);
    EXPECT_EQ(result.err, "fieldbook: " + UrlOf(server) + ": " + err + "\n");
  }
}

TEST(Web, CtrlCEndsItWhileAServerSaysNothing) {
  if (UnderWine()) GTEST_SKIP() << "Wine goes on waiting for the server";
  const ScriptedServer server([](ScriptedServer::Peer& peer) { peer.WaitForEnd(); });
  const std::vector<std::string> lines[] = {
      {"show", UrlOf(server), "--progress"},
      {"show", UrlOf(server), "--progress", "--csv"},
      {"send", kPoints, UrlOf(server), "--progress"},
  };
  for (const std::vector<std::string>& line : lines) {
    const ProgramResult result = InterruptFieldbook(line, "");
    EXPECT_EQ(result.status, 1);
    EXPECT_TRUE(result.err.ends_with("\nfieldbook: stopped by Ctrl-C\n")) << result.err;
  }
}

TEST(Web, ErrorsOfThePlatformHaveWords) {
  const std::tuple<std::uint32_t, std::uint32_t, const char*> cases[] = {
      {406, 12002, "the server hasn't answered in time"},
      {401, 12031, "the connection was broken"},
      {406, 12037, "the server's certificate has expired, or isn't valid yet"},
      {407, 12038, "the server's certificate is for another server"},
      {406, 12045, "the server's certificate is by an authority that isn't trusted here"},
      {112, 0, "4 GiB and more can't be sent at once"},
      {605, 0, "4 GiB and more can't be sent at once"},
      {605, 5, "the file can't be read"},
      {105, 0, "the file has become shorter meanwhile"},
      {402, 126, "the request has failed, errors 402 and 126"},
  };
  for (const auto& [id, error, words] : cases) {
    EXPECT_STREQ(fieldbook::WebErrorText(id, error).ToUtf8().c_str(), words);
  }
}

TEST(Web, BytesAreToldAsPeopleReadThem) {
  const std::pair<std::uint64_t, const char*> cases[] = {
      {0, "0 bytes"},          {999, "999 bytes"},  {1000, "1.0 kB"},
      {999'949, "999.9 kB"},   {999'950, "1.0 MB"}, {4'294'967'296, "4.3 GB"},
      {~0ULL, "18446744.1 TB"}};
  for (const auto& [bytes, text] : cases) {
    EXPECT_STREQ(fieldbook::ByteText(bytes).ToUtf8().c_str(), text);
  }
  EXPECT_STREQ(fieldbook::RateText(3'000'000, 2).ToUtf8().c_str(), "1.5 MB/s");
  EXPECT_STREQ(fieldbook::RateText(1, 0).ToUtf8().c_str(), "");
}

}  // namespace
