// URL encoding and the parts of URLs beside libcurl.
#include <curl/curl.h>

#include <memory>
#include <random>
#include <stdexcept>
#include <string>
#include <vector>

#include "bench/BenchTable.h"
#include "kelp0lang/HttpEncoder.h"
#include "kelp0lang/HttpUrlAnalyzer.h"

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

}  // namespace

void AddHttpWorks() {
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
