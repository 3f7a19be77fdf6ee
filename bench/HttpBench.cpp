// URL encoding, the parts of URLs, and requests beside libcurl.
#include <curl/curl.h>

#include <filesystem>
#include <fstream>
#include <memory>
#include <random>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "bench/BenchTable.h"
#include "kelp0lang/HttpClient.h"
#include "kelp0lang/HttpEncoder.h"
#include "kelp0lang/HttpUrlAnalyzer.h"
#include "tests/winapi/wininet/ScriptedServer.h"

namespace bench {
namespace {

using Dovek::CHttpEncoderW;
using Dovek::CHttpToolW;
using Analyzer = Dovek::CHttpUrlAnalyzerT<CHttpToolW>;

// An item is a text of 1 MB in UTF-8; accents are about one in twenty bytes.
std::u16string ItalianText() {
  const std::u16string words[] = {u"perché", u"stazione", u"città",   u"del",    u"vertice",
                                  u"è",      u"quota",    u"però",    u"punto",  u"altimetrico",
                                  u"già",    u"strada",   u"confine", u"misura", u"più"};
  std::mt19937 random(46);
  std::u16string text;
  while (text.size() < 960'000) text.append(words[random() % std::size(words)]).append(u" ");
  return text;
}

std::string ToUtf8(const std::u16string& text) {
  std::string bytes(CHttpEncoderW::Utf8EncodeLen(text.c_str()) + 1, 0);
  CHttpEncoderW::Utf8Encode(bytes.data(), text.c_str());
  bytes.pop_back();
  return bytes;
}

std::unique_ptr<char[]> UrlEncode(const std::u16string& text) {
  std::unique_ptr<char[]> encoded(
      new char[CHttpEncoderW::UrlEncodeLen(text.c_str(), true, 0) + std::size_t{1}]);
  CHttpEncoderW::UrlEncodeA(encoded.get(), text.c_str(), true, 0);
  return encoded;
}

struct FreeByCurl {
  void operator()(char* text) const { curl_free(text); }
};
std::unique_ptr<char, FreeByCurl> Escape(const std::string& text) {
  return std::unique_ptr<char, FreeByCurl>(
      curl_easy_escape(nullptr, text.c_str(), static_cast<int>(text.size())));
}

std::vector<std::u16string> Urls() {
  std::mt19937 random(47);
  std::vector<std::u16string> urls;
  for (int i = 0; i < 10'000; ++i) {
    const auto number = [&] {
      const std::string digits = std::to_string(random() % 10'000);
      return std::u16string(digits.begin(), digits.end());
    };
    std::u16string url = random() % 2 == 0 ? u"http://" : u"https://";
    url += u"survey" + number() + u".example.com";
    if (random() % 3 == 0) url += u":8" + number().substr(0, 3);
    url += u"/jobs/" + number() + u"/points.csv";
    if (random() % 2 == 0) url += u"?from=" + number() + u"&to=" + number();
    if (random() % 4 == 0) url += u"#row" + number();
    urls.push_back(url);
  }
  return urls;
}

std::uint32_t Analyze(const std::u16string& url) {
  Analyzer parts;
  parts.Analyze(url.c_str(), 0);
  return parts.path.index + parts.query.length + parts.fragment.length;
}

using Client = Dovek::CHttpClientT<CHttpToolW, CHttpEncoderW>;

// Takes what it gets and says little.
void Answer(ScriptedServer::Peer& peer) {
  while (!peer.ReadHead().empty()) {
    peer.SkipBody();
    peer.Send("HTTP/1.1 200 OK\r\nContent-Length: 20\r\n\r\n12345.678 87654.321\n");
  }
}

std::string UrlOf(const ScriptedServer& server) {
  return "http://127.0.0.1:" + std::to_string(server.Port()) + "/points";
}

// What an answer has, which is the same on both sides.
void Check(std::size_t bytes) {
  if (bytes != 20) throw std::runtime_error("the answer isn't whole");
}

std::size_t ReadAll(std::unique_ptr<Client::Response> response) {
  BYTE piece[1000];
  std::size_t all = 0;
  while (const DWORD bytes = response->ReadContent(piece, sizeof piece)) all += bytes;
  return all;
}

std::size_t CountBytes(char*, std::size_t size, std::size_t count, void* all) {
  *static_cast<std::size_t*>(all) += size * count;
  return size * count;
}

std::size_t Perform(CURL* easy) {
  std::size_t all = 0;
  curl_easy_setopt(easy, CURLOPT_WRITEFUNCTION, &CountBytes);
  curl_easy_setopt(easy, CURLOPT_WRITEDATA, &all);
  if (curl_easy_perform(easy) != CURLE_OK) throw std::runtime_error("libcurl failed");
  return all;
}

void AddGetWork(const std::shared_ptr<ScriptedServer>& server) {
  const std::string url = UrlOf(*server);
  const std::u16string wide(url.begin(), url.end());
  const auto ours = [server, wide](benchmark::State& state) {
    Client client;
    for (auto _ : state) {
      Check(ReadAll(std::unique_ptr<Client::Response>(client.SendGet(wide.c_str(), FALSE))));
    }
    state.SetItemsProcessed(state.iterations());
  };
  const auto theirs = [server, url](benchmark::State& state) {
    const std::unique_ptr<CURL, void (*)(CURL*)> easy(curl_easy_init(), curl_easy_cleanup);
    curl_easy_setopt(easy.get(), CURLOPT_URL, url.c_str());
    // The same head as ours, so that the same bytes go out.
    curl_slist* headers = nullptr;
    for (const char* const line :
         {"Connection: Keep-Alive", "Pragma: no-cache", "Cache-Control: no-cache", "Accept:"}) {
      headers = curl_slist_append(headers, line);
    }
    curl_easy_setopt(easy.get(), CURLOPT_HTTPHEADER, headers);
    curl_easy_setopt(easy.get(), CURLOPT_USERAGENT, "Dovek HTTP Client Class");
    for (auto _ : state) Check(Perform(easy.get()));
    curl_slist_free_all(headers);
    state.SetItemsProcessed(state.iterations());
  };
  Compare("small GET, connection kept", ours, {{"curl easy", 1.1, theirs}}, Clock::kWall);
}

void AddUploadWork(const std::shared_ptr<ScriptedServer>& server,
                   const std::filesystem::path& folder) {
  const std::string url = UrlOf(*server);
  const std::u16string wide(url.begin(), url.end());
  const std::string file = folder / "upload";
  std::ofstream(file, std::ios::binary);
  std::filesystem::resize_file(file, 200'000'000);
  const auto ours = [server, wide, file](benchmark::State& state) {
    for (auto _ : state) {
      Client client;
      const std::u16string path(file.begin(), file.end());
      client.AddParam(u"file", path.c_str(), Dovek::ParamFile);
      client.StartUpload(60'000, wide.c_str(), FALSE);
      std::unique_ptr<Client::Response> response;
      while (response == nullptr) response.reset(client.Proceed(1'000'000));
      Check(ReadAll(std::move(response)));
    }
    state.SetItemsProcessed(state.iterations());
  };
  const auto theirs = [server, url, file](benchmark::State& state) {
    for (auto _ : state) {
      const std::unique_ptr<CURL, void (*)(CURL*)> easy(curl_easy_init(), curl_easy_cleanup);
      const std::unique_ptr<curl_mime, void (*)(curl_mime*)> mime(curl_mime_init(easy.get()),
                                                                  curl_mime_free);
      curl_mimepart* const part = curl_mime_addpart(mime.get());
      curl_mime_name(part, "file");
      curl_mime_filedata(part, file.c_str());
      curl_slist* const headers = curl_slist_append(nullptr, "Expect:");
      curl_easy_setopt(easy.get(), CURLOPT_HTTPHEADER, headers);
      curl_easy_setopt(easy.get(), CURLOPT_URL, url.c_str());
      curl_easy_setopt(easy.get(), CURLOPT_MIMEPOST, mime.get());
      Check(Perform(easy.get()));
      curl_slist_free_all(headers);
    }
    state.SetItemsProcessed(state.iterations());
  };
  Compare("upload a file of 200 MB", ours, {{"curl_mime", 1.1, theirs}}, Clock::kWall);
}

}  // namespace

void AddHttpWorks(const std::filesystem::path& folder) {
  const auto server = std::make_shared<ScriptedServer>(Answer);
  AddGetWork(server);
  AddUploadWork(server, folder);
  const std::vector<std::u16string> text = {ItalianText()};
  const std::vector<std::string> bytes = {ToUtf8(text.front())};
  // The two differ in blanks alone: the text has no marks.
  const std::string theirs = Escape(bytes.front()).get();
  std::string same;
  for (std::size_t i = 0; i < theirs.size(); ++i) {
    const bool isBlank = theirs.compare(i, 3, "%20") == 0;
    same += isBlank ? '+' : theirs[i];
    if (isBlank) i += 2;
  }
  if (same != UrlEncode(text.front()).get()) throw std::runtime_error("the two sides differ");
  Compare("URL-encode 1 MB of Italian", Over(text, UrlEncode),
          {{"curl_easy_escape", 1.0, Over(bytes, Escape)}});

  const std::vector<std::u16string> urls = Urls();
  std::vector<std::string> narrow;
  for (const std::u16string& url : urls) narrow.push_back(ToUtf8(url));
  const std::shared_ptr<CURLU> handle(curl_url(), curl_url_cleanup);
  Compare("analyze a URL", Over(urls, Analyze),
          {{"curl_url_set", 0.3, Over(narrow, [handle](const std::string& url) {
              return curl_url_set(handle.get(), CURLUPART_URL, url.c_str(), 0);
            })}});
}

}  // namespace bench
