// Parts of URLs, and the URL of a GET with a parameter, whose length is told before it is made.
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <string>
#include <vector>

#include "kelp0lang/HttpClient.h"

namespace {

using Client = Dovek::CHttpClientT<Dovek::CHttpToolW, Dovek::CHttpEncoderW>;
using Analyzer = Dovek::CHttpUrlAnalyzerT<Dovek::CHttpToolW>;

void Require(bool holds) {
  if (!holds) std::abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  std::u16string url;
  for (std::size_t i = 0; i + 1 < size; i += 2) {
    url += static_cast<char16_t>(data[i] | (data[i + 1] % 4) << 8);
  }
  url.resize(url.find(u'\0') < url.size() ? url.find(u'\0') : url.size());
  Analyzer parts;
  parts.Analyze(url.c_str(), 0);
  // They stand in their order, and the last three are all of the rest.
  std::uint32_t end = 0;
  for (const auto& part :
       {parts.scheme, parts.host, parts.port, parts.path, parts.query, parts.fragment}) {
    Require(part.index >= end && part.index + std::uint64_t{part.length} <= url.size());
    end = part.index + part.length;
  }
  Require(end == url.size());
  Require(parts.path.index + parts.path.length == parts.query.index);
  Require(parts.query.index + parts.query.length == parts.fragment.index);

  Client client;
  client.UseUtf8(size % 2);
  client.AddParam(u"n", url.c_str(), 0);
  const std::unique_ptr<WChar[]> made(new WChar[client.GetUrlLen(url.c_str()) + 1]);
  client.MakeGetUrl(made.get(), url.c_str());
  Require(Dovek::detail::LengthOf(made.get()) == client.GetUrlLen(url.c_str()));
  return 0;
}
