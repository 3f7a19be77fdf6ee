// Bytes as a pipe may give them: what is read of them takes no more room than they do, and what was
// read whole can be sent on.
#include "kelp0lang/StubMessage.h"

#include <cstdlib>
#include <cstring>
#include <vector>

using kelp::detail::ReadStubMessages;
using kelp::detail::StubMessageText;

namespace {

TStubMessage Sent(const TStubMessage& message) {
  const kelp::WString text = StubMessageText(message);
  auto messages = ReadStubMessages(text.c_str(), text.sizeInBytes());
  if (messages.size() != 1) std::abort();
  return messages[0];
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  // A block of its own, so that nothing is read outside it.
  const std::vector<std::uint8_t> bytes(data, data + size);
  std::size_t values = 0;
  for (const TStubMessage& message : ReadStubMessages(bytes.data(), bytes.size())) {
    values += 1 + message.values.size();
    // What has been through the pipe stays as it is. An endless number becomes 0 on its way.
    const TStubMessage once = Sent(message);
    if (once.command != message.command || once.values.size() != message.values.size())
      std::abort();
    if (StubMessageText(Sent(once)) != StubMessageText(once)) std::abort();
  }
  if (values > size / 4) std::abort();
  return 0;
}
