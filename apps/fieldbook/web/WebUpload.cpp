#include "fieldbook/web/WebUpload.h"

#include <algorithm>

#include "fieldbook/web/WebRequest.h"

namespace fieldbook {
namespace {

constexpr DWORD kStep = 57'344;  // bytes between two calls of the watch
constexpr std::size_t kMostText = 1 << 16;

bool IsText(WebResponse& response) {
  const WChar* const type = response.GetHeader(KTEXT("Content-Type"), 0);
  if (type == nullptr) return false;
  const WString lower = WString(type).ToLowerCase();
  return lower.StartsWith(KTEXT("text/")) || lower.StartsWith(KTEXT("application/json"));
}

WebAnswer ReadAnswer(WebResponse& response) {
  WebAnswer answer;
  answer.status = response.GetStatus();
  if (!IsText(response)) return answer;
  BYTE piece[4096];
  while (const DWORD count = response.ReadContent(piece, sizeof piece)) {
    answer.text.append(reinterpret_cast<const char*>(piece), count);
    answer.isCut = answer.text.size() > kMostText;
    if (answer.isCut) break;
  }
  answer.text.resize(std::min(answer.text.size(), kMostText));
  return answer;
}

}  // namespace

WebAnswer UploadToWeb(WebSession& session, const Argument& file, const Argument& address,
                      const std::vector<WebField>& fields, const SentWatch& watch) {
  return AskWeb(session, address, &file, [&] {
    WebClient client;
    client.UseUtf8(TRUE);
    client.AddParam(KTEXT("file"), file.text.c_str(), Dovek::ParamFile);
    for (const auto& [name, value] : fields) client.AddParam(name.c_str(), value.c_str(), 0);
    client.StartUpload(EncodedAddress(address.text).c_str(), WebOptions(session));
    const std::uint64_t all = client.PostStat().ActualTotalByte();
    std::unique_ptr<WebResponse> response;
    while (response == nullptr) {
      watch(client.PostStat().ActualPostedByte(), all);
      response.reset(client.Proceed(kStep));
    }
    return ReadAnswer(*response);
  });
}

}  // namespace fieldbook
