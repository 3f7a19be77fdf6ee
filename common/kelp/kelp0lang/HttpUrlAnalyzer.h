// Where the parts of a URL stand in it.
//
//   Dovek::CHttpUrlAnalyzerT<Dovek::CHttpToolW> url;
//   url.Analyze(KTEXT("http://h:8080/p?x=1#f"), 0);
//   url.path.index, url.path.length;  // "/p" stands at 13 and is 2 long
//
// Indexes and lengths are in characters. Nothing is checked: any text has parts, if empty ones.
#pragma once

#include "kelp0lang/HttpTool.h"

namespace Dovek {

struct THttpUrlPart {
  std::uint32_t index = 0;
  std::uint32_t length = 0;
};

template <class Tool>
struct CHttpUrlAnalyzerT {
  THttpUrlPart scheme;
  THttpUrlPart host;
  THttpUrlPart port;      // behind the colon
  THttpUrlPart path;      // with its first "/"
  THttpUrlPart query;     // with the "?"
  THttpUrlPart fragment;  // with the "#"

  // Null and empty text leave all at 0. The code page makes no difference, but UTF-8 and UTF-7 are
  // refused as everywhere in the family.
  void Analyze(const WChar* url, UINT codePage) {
    Tool::RefuseUtf(codePage, KTEXT("CHttpUrlAnalyzerT::Analyze"));
    *this = {};
    if (url == nullptr || *url == 0) return;
    Tool::Guard([&] {
      AnalyzeText(url);
      return 0;
    });
  }

 private:
  void AnalyzeText(const WChar* url) {
    const WChar* at = url;
    while (*at != 0 && (at[0] != ':' || at[1] != '/' || at[2] != '/')) ++at;
    if (*at != 0) {
      scheme = Part(url, url, at);
      at += 3;
    } else {
      at = url;
    }

    const WChar* start = at;
    while (!IsStop(*at) && *at != ':') ++at;
    host = Part(url, start, at);
    if (*at == ':') ++at;
    start = at;
    while (!IsStop(*at)) ++at;
    port = Part(url, start, at);

    start = at;
    while (*at != 0 && *at != '?' && *at != '#') ++at;
    path = Part(url, start, at);
    start = at;
    while (*at != 0 && *at != '#') ++at;
    query = Part(url, start, at);
    start = at;
    while (*at != 0) ++at;
    fragment = Part(url, start, at);
  }
  static bool IsStop(WChar unit) { return unit == '/' || unit == '?' || unit == '#' || unit == 0; }
  static THttpUrlPart Part(const WChar* url, const WChar* start, const WChar* end) {
    return {detail::CheckedCast<std::uint32_t>(static_cast<std::uint64_t>(start - url)),
            detail::CheckedCast<std::uint32_t>(static_cast<std::uint64_t>(end - start))};
  }
};

}  // namespace Dovek
