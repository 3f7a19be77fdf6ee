#include "crt/UnicodeStream.h"

#include <sys/types.h>

#include <atomic>
#include <map>
#include <mutex>

#include "kernel32/PathName.h"

namespace {

constexpr std::string_view kUtf16Mark = "\xFF\xFE";
constexpr std::string_view kUtf8Mark = "\xEF\xBB\xBF";

// The streams that are open.
struct Streams {
  std::mutex mutex;
  std::map<std::FILE*, Encoding> encodings;
  std::atomic<int> count{0};  // programs without such streams needn't look them up
};

// It outlives all threads and static objects, in which streams may be closed.
Streams& Open() {
  static Streams& streams = *new Streams;
  return streams;
}

struct Cookie {
  std::FILE* inner;
  std::FILE* outer;
};

ssize_t Write(void* cookie, const char* buffer, std::size_t size) {
  std::FILE* const inner = static_cast<Cookie*>(cookie)->inner;
  const std::size_t written = std::fwrite(buffer, 1, size, inner);
  return std::fflush(inner) == 0 ? static_cast<ssize_t>(written) : 0;
}

int Close(void* pointer) {
  const Cookie cookie = *static_cast<Cookie*>(pointer);
  delete static_cast<Cookie*>(pointer);
  {
    const std::lock_guard lock(Open().mutex);
    Open().encodings.erase(cookie.outer);
    --Open().count;
  }
  return std::fclose(cookie.inner);
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

std::FILE* AsUnicode(std::FILE* inner, const std::string& posixPath, Encoding encoding) {
  const std::string head = ReadHead(posixPath);
  if (head.starts_with(kUtf16Mark)) encoding = Encoding::kUtf16;
  if (head.starts_with(kUtf8Mark)) encoding = Encoding::kUtf8;

  auto* const cookie = new Cookie{inner, nullptr};
  std::FILE* const outer = fopencookie(cookie, "w", {nullptr, Write, nullptr, Close});
  if (outer == nullptr) {
    delete cookie;
    std::fclose(inner);
    return nullptr;
  }
  cookie->outer = outer;
  std::setvbuf(outer, nullptr, _IONBF, 0);
  {
    const std::lock_guard lock(Open().mutex);
    Open().encodings[outer] = encoding;
    ++Open().count;
  }
  const std::string_view mark = encoding == Encoding::kUtf8 ? kUtf8Mark : kUtf16Mark;
  if (head.empty()) std::fwrite(mark.data(), 1, mark.size(), outer);
  return outer;
}

Encoding EncodingOf(std::FILE* file) {
  Streams& streams = Open();
  if (streams.count == 0) return Encoding::kLocale;
  const std::lock_guard lock(streams.mutex);
  const auto found = streams.encodings.find(file);
  return found == streams.encodings.end() ? Encoding::kLocale : found->second;
}

bool PutUnicode(std::u16string_view text, std::FILE* file, Encoding encoding) {
  std::u16string lines;
  for (const char16_t unit : text) {
    if (unit == '\n') lines += '\r';
    lines += unit;
  }
  std::string bytes;
  if (encoding == Encoding::kUtf8) {
    bytes = ToUtf8(lines);
  } else {
    for (const char16_t unit : lines) {
      bytes += static_cast<char>(unit & 0xFF);
      bytes += static_cast<char>(unit >> 8);
    }
  }
  return std::fwrite(bytes.data(), 1, bytes.size(), file) == bytes.size();
}
