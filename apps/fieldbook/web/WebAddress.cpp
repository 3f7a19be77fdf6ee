#include "fieldbook/web/WebAddress.h"

#include <algorithm>

namespace fieldbook {

bool IsWebAddress(const WString& text) {
  const WString lower = text.ToLowerCase();
  return lower.StartsWith(KTEXT("http://")) || lower.StartsWith(KTEXT("https://"));
}

WString EncodedAddress(const WString& address) {
  static constexpr char kDigits[] = "0123456789ABCDEF";
  std::string bytes;
  AppendUtf8(bytes, address);
  std::string encoded;
  for (const char c : std::string_view(bytes).substr(0, bytes.find('#'))) {
    const auto byte = static_cast<unsigned char>(c);
    if (byte > ' ' && byte < 0x7F) {
      encoded += c;
    } else {
      encoded.append({'%', kDigits[byte >> 4], kDigits[byte & 0xF]});
    }
  }
  return Decode(encoded, true);
}

}  // namespace fieldbook
