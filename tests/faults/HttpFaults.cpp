// What requests take of memory where files are long and servers don't end: prints a line of figures
// for each and gives 1 if anything came out otherwise than it should. Runs for some seconds, on
// POSIX.
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <functional>
#include <memory>
#include <string>

#include "kelp0lang/HttpClient.h"
#include "tests/TempFolder.h"
#include "tests/winapi/wininet/ScriptedServer.h"

namespace {

using Client = Dovek::CHttpClientT<Dovek::CHttpToolW, Dovek::CHttpEncoderW>;
using Response = std::unique_ptr<Client::Response>;

const std::string kOk = "HTTP/1.1 200 OK\r\n";

// Each object asks for a fault of its own.
void Serve(ScriptedServer::Peer& peer) {
  const std::string head = peer.ReadHead();
  const auto asks = [&](const char* object) { return head.find(object) != std::string::npos; };
  if (asks("/upload")) {
    peer.SkipBody();
    peer.Send(kOk + "\r\n");
  } else if (asks("/body")) {
    peer.Send(kOk + "\r\n");
    while (peer.Send(std::string(100'000, 'b'))) {
    }
  } else if (asks("/headers")) {
    std::string lines = kOk;
    for (int i = 0; i < 100'000; ++i) lines += "X: y\r\n";
    peer.Send(lines + "\r\n");
  } else if (asks("/head")) {
    peer.Send(kOk);
    while (peer.Send(std::string(100'000, 'h'))) {
    }
  } else {
    peer.Send(kOk + "Content-Length: 2\r\n\r\nok");
  }
}

std::u16string UrlOf(const ScriptedServer& server, const std::u16string& object) {
  const std::string port = std::to_string(server.Port());
  return u"http://127.0.0.1:" + std::u16string(port.begin(), port.end()) + object;
}

// How many bytes the content has, but no more than the most.
std::uint64_t Read(Client::Response& response, std::uint64_t most) {
  std::uint64_t all = 0;
  BYTE piece[50'000];
  while (const DWORD bytes = response.ReadContent(piece, sizeof piece)) {
    if ((all += bytes) >= most) break;
  }
  return all;
}

// The most memory, in MB, of a process that does this; -1 where it gives false.
double PeakOf(const std::function<bool()>& work) {
  const pid_t child = fork();
  if (child == 0) _exit(work() ? 0 : 1);
  int status = 0;
  rusage usage = {};
  wait4(child, &status, 0, &usage);
  return status == 0 ? static_cast<double>(usage.ru_maxrss) / 1024 : -1;
}

}  // namespace

int main() {
  const ScriptedServer server(Serve);
  const TempFolder folder;
  folder.Write("file", "");
  constexpr std::uint64_t kMuch = 1'000'000'000;
  std::filesystem::resize_file(folder.Path() / "file", kMuch);
  const auto get = [&](const std::u16string& object, std::uint64_t most) {
    Client client;
    const Response response(client.SendGet(UrlOf(server, object).c_str(), FALSE));
    return Read(*response, most);
  };
  const auto fails = [&](const std::u16string& object) {
    try {
      get(object, kMuch);
      return false;
    } catch (const Dovek::httpclientexceptionW&) {
      return true;
    }
  };
  const auto upload = [&] {
    Client client;
    client.AddParam(u"file", folder.Wide(u"file").c_str(), Dovek::ParamFile);
    client.StartUpload(60'000, UrlOf(server, u"/upload").c_str(), FALSE);
    Response response;
    while (response == nullptr) response.reset(client.Proceed(1'000'000));
    return response->GetStatus() == 200;
  };
  const struct {
    const char* fault;
    double most;  // MB beside those of a small GET
    std::function<bool()> work;
  } rows[] = {
      {"upload of 1 GB", 4, upload},
      {"1 GB of a body without end", 4, [&] { return get(u"/body", kMuch) >= kMuch; }},
      {"a head without end", 8, [&] { return fails(u"/head"); }},
      // Newer libcurls, and those of distributions that mend old ones, take 300 KB of them.
      {"100,000 headers", 16, [&] { return fails(u"/headers") || get(u"/headers", kMuch) == 0; }},
  };
  const double small = PeakOf([&] { return get(u"/small", kMuch) == 2; });
  std::printf("%-32s      %6.1f MB\n", "a small GET", small);
  bool failed = small < 0;
  for (const auto& [fault, most, work] : rows) {
    const double peak = PeakOf(work);
    const bool good = peak >= 0 && peak - small <= most;
    std::printf("%-32s %s %6.1f MB more\n", fault, good ? "ok  " : "LOST", peak - small);
    std::fflush(stdout);
    failed |= !good;
  }
  return failed ? 1 : 0;
}
