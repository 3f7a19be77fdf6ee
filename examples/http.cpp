// The parts of a URL, parameters as they go into one, and a request that nobody answers.
#include <kelp0lang/HttpClient.h>

#include <cstdio>
#include <memory>
#include <vector>

using Client = Dovek::CHttpClientT<Dovek::CHttpToolW, Dovek::CHttpEncoderW>;

int main() {
  constexpr const WChar* kUrl = KTEXT("http://127.0.0.1:9/jobs?open=1#last");
  Dovek::CHttpUrlAnalyzerT<Dovek::CHttpToolW> parts;
  parts.Analyze(kUrl, 0);
  std::printf("host at %u, %u long; path at %u, %u long\n", parts.host.index, parts.host.length,
              parts.path.index, parts.path.length);

  const WChar* const name = KTEXT("Monte Bianco/Été");
  std::vector<char> encoded(Dovek::CHttpEncoderW::UrlEncodeLen(name, true, 0) + 1);
  Dovek::CHttpEncoderW::UrlEncodeA(encoded.data(), name, true, 0);
  std::printf("%s\n", encoded.data());

  // Every failure is an exception with a number of the family's table, and that of the system.
  Client client;
  client.SetProxy(INTERNET_OPEN_TYPE_DIRECT, nullptr, nullptr);
  client.AddParam(KTEXT("name"), name, 0);
  try {
    const std::unique_ptr<Client::Response> response(client.SendGet(kUrl, false));
    std::printf("status %lu\n", static_cast<unsigned long>(response->GetStatus()));
  } catch (const Dovek::httpclientexceptionW& error) {
    std::printf("no answer: error %u, system %u\n", error.ErrorId(), error.Win32Error());
  }
}
