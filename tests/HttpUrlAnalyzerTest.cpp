// The parts of a URL.
#include "kelp0lang/HttpUrlAnalyzer.h"
#include "tests/HttpTest.h"

namespace {

using Analyzer = Dovek::CHttpUrlAnalyzerT<Dovek::CHttpToolW>;
static_assert(sizeof(Analyzer) == 12 * sizeof(std::uint32_t));

// "index:text" of each part in order.
std::string PartsOf(const WideText& url) {
  Analyzer parts;
  parts.fragment.length = 99;
  parts.Analyze(url.c_str(), 0);
  std::string text;
  for (const auto& part :
       {parts.scheme, parts.host, parts.port, parts.path, parts.query, parts.fragment}) {
    text += std::to_string(part.index) + ":" + Narrow(url.substr(part.index, part.length).c_str()) +
            " ";
  }
  return text;
}

TEST(HttpUrlAnalyzer, CutsAUrlIntoItsParts) {
  const std::pair<WideText, const char*> cases[] = {
      {KTEXT("http://h:8080/p/q?x=1#f"), "0:http 7:h 9:8080 13:/p/q 17:?x=1 21:#f "},
      {KTEXT("h"), "0: 0:h 1: 1: 1: 1: "},
      {KTEXT(""), "0: 0: 0: 0: 0: 0: "},
      {KTEXT("http://h?x=1"), "0:http 7:h 8: 8: 8:?x=1 12: "},
      {KTEXT("http://h/#f"), "0:http 7:h 8: 8:/ 9: 9:#f "},
      {KTEXT("http://h#f?x#g"), "0:http 7:h 8: 8: 8: 8:#f?x#g "},
      {KTEXT("http://h:#f"), "0:http 7:h 9: 9: 9: 9:#f "},
      {KTEXT("://h:1:2/p"), "0: 3:h 5:1:2 8:/p 10: 10: "},
      {KTEXT("http://"), "0:http 7: 7: 7: 7: 7: "},
      {KTEXT("http:///p"), "0:http 7: 7: 7:/p 9: 9: "},
      {KTEXT("/p?a:b"), "0: 0: 0: 0:/p 2:?a:b 6: "},
      {KTEXT("http:/h"), "0: 0:http 5: 5:/h 7: 7: "},
      {KTEXT("h/?u=a://b"), "0:h/?u=a 9:b 10: 10: 10: 10: "},
  };
  for (const auto& [url, parts] : cases) EXPECT_EQ(PartsOf(url), parts) << Narrow(url.c_str());
  Analyzer none;
  none.host.length = 3;
  none.Analyze(nullptr, 1252);
  EXPECT_EQ(none.host.length, 0u);
  EXPECT_EQ(FailureOf([&] { none.Analyze(KTEXT("h"), 65001); }),
            "0 0: CHttpUrlAnalyzerT::Analyze: CP_UTF8 and CP_UTF7 can not be used for the CodePage "
            "parameter.");
}

}  // namespace
