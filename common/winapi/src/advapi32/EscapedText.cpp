#include "advapi32/EscapedText.h"

#include <charconv>
#include <system_error>

namespace winapi {

std::string Escape(std::string_view text) {
  std::string escaped;
  for (const char c : text) {
    if (c == '\\' || c == '"') escaped += '\\';
    if (c == '\n' || c == '\r') {
      escaped += c == '\n' ? "\\n" : "\\r";
    } else {
      escaped += c;
    }
  }
  return escaped;
}

// Takes escaped text up to an end mark off the rest of a line, mark included.
std::optional<std::string> TakeEscaped(std::string_view& rest, char mark) {
  std::string text;
  for (std::size_t i = 0; i < rest.size(); ++i) {
    if (rest[i] == mark) {
      rest.remove_prefix(i + 1);
      return text;
    }
    if (rest[i] != '\\') {
      text += rest[i];
    } else if (++i < rest.size()) {
      text += rest[i] == 'n' ? '\n' : rest[i] == 'r' ? '\r' : rest[i];
    }
  }
  return std::nullopt;
}

std::optional<std::string> FromHex(std::string_view digits) {
  std::string bytes;
  for (; digits.size() >= 2; digits.remove_prefix(2)) {
    unsigned byte = 0;
    const auto [end, error] = std::from_chars(digits.data(), digits.data() + 2, byte, 16);
    if (error != std::errc() || end != digits.data() + 2) return std::nullopt;
    bytes += static_cast<char>(byte);
  }
  if (!digits.empty()) return std::nullopt;
  return bytes;
}

std::string ToHex(std::string_view bytes) {
  constexpr const char* kDigits = "0123456789abcdef";
  std::string text;
  for (const char byte : bytes) {
    text += kDigits[static_cast<unsigned char>(byte) >> 4];
    text += kDigits[byte & 15];
  }
  return text;
}

}  // namespace winapi
