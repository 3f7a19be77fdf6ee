#include "crt/UnicodeStream.h"

#include <sys/types.h>

#include "kernel32/PathName.h"

namespace {

constexpr std::string_view kUtf16Mark = "\xFF\xFE";
constexpr std::string_view kUtf8Mark = "\xEF\xBB\xBF";

ssize_t Write(void* cookie, const char* buffer, std::size_t size) {
  std::FILE* const inner = Inner(cookie);
  const std::size_t written = std::fwrite(buffer, 1, size, inner);
  return std::fflush(inner) == 0 ? static_cast<ssize_t>(written) : 0;
}

// What the file begins with, as far as a mark is long.
std::string ReadHead(const std::string& posixPath) {
  std::string head(kUtf8Mark.size(), '\0');
  std::FILE* const file = std::fopen(posixPath.c_str(), "rb");
  if (file == nullptr) return "";
  head.resize(std::fread(head.data(), 1, head.size(), file));
  std::fclose(file);
  return head;
}

}  // namespace

std::FILE* AsUnicode(std::FILE* inner, const std::string& posixPath, StreamKind encoding) {
  const std::string head = ReadHead(posixPath);
  if (head.starts_with(kUtf16Mark)) encoding = StreamKind::kUtf16;
  if (head.starts_with(kUtf8Mark)) encoding = StreamKind::kUtf8;

  std::FILE* const outer = OpenOnTop(inner, "w", encoding, {nullptr, Write, nullptr, CloseCookie});
  if (outer == nullptr) return nullptr;
  const std::string_view mark = encoding == StreamKind::kUtf8 ? kUtf8Mark : kUtf16Mark;
  if (head.empty()) std::fwrite(mark.data(), 1, mark.size(), outer);
  return outer;
}

bool PutUnicode(std::u16string_view text, std::FILE* file, StreamKind encoding) {
  std::u16string lines;
  for (const char16_t unit : text) {
    if (unit == '\n') lines += '\r';
    lines += unit;
  }
  std::string bytes;
  if (encoding == StreamKind::kUtf8) {
    bytes = ToUtf8(lines);
  } else {
    for (const char16_t unit : lines) {
      bytes += static_cast<char>(unit & 0xFF);
      bytes += static_cast<char>(unit >> 8);
    }
  }
  return std::fwrite(bytes.data(), 1, bytes.size(), file) == bytes.size();
}
