#include "fieldbook/web/WebFetch.h"

#include "fieldbook/values/ByteText.h"
#include "fieldbook/web/WebRequest.h"

namespace fieldbook {
namespace {

// A server that never ends must not take all memory.
constexpr std::size_t kMostBytes = std::size_t{1} << 30;

std::string ReadContent(WebResponse& response, const Argument& address, const Watch& watch) {
  DWORD length = 0;
  const bool isKnown = response.GetContentLength(length) != FALSE;
  std::string content;
  BYTE piece[1 << 16];
  while (const DWORD count = response.ReadContent(piece, sizeof piece)) {
    content.append(reinterpret_cast<const char*>(piece), count);
    if (content.size() > kMostBytes) {
      throw Failure(
          {KTEXT("{1}: the file is longer than {2}"), {Shown(address.text), ByteText(kMostBytes)}});
    }
    watch(isKnown ? static_cast<double>(content.size()) / static_cast<double>(length) : 0);
  }
  // Not all platforms tell that an answer has been cut.
  if (!isKnown || content.size() == length) return content;
  throw Failure({KTEXT("{1}: the connection was broken behind {2} of {3}"),
                 {Shown(address.text), ByteText(content.size()), ByteText(length)}});
}

}  // namespace

std::string FetchFromWeb(WebSession& session, const Argument& address, const Watch& watch) {
  return AskWeb(session, address, nullptr, [&] {
    WebClient client;
    const std::unique_ptr<WebResponse> response(
        client.SendGet(EncodedAddress(address.text).c_str(), WebOptions(session)));
    const DWORD status = response->GetStatus();
    if (!IsWebSuccess(status)) {
      throw Failure({KTEXT("{1}: {2}"), {Shown(address.text), WebStatusText(status)}});
    }
    return ReadContent(*response, address, watch);
  });
}

}  // namespace fieldbook
