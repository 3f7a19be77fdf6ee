// What the streams that _wfopen gives know beyond those of the C library; internal to the layer.
#pragma once

#include <cstdio>
#include <string>

// What wide calls make of a stream.
enum class StreamKind {
  kBytes,  // not of _wfopen: multibyte text of the locale, nothing translated
  kText,   // the same with the line ends of Windows
  kUnits,  // binary: 16-bit units as they are
  kUtf16,
  kUtf8
};

struct OpenStream {
  StreamKind kind = StreamKind::kBytes;
  // The stream of bytes beneath one that translates. It is used by one thread at a time, the one
  // that has the lock of the stream above.
  std::FILE* inner = nullptr;
};

OpenStream Describe(std::FILE* file);

// Opens a binary stream, with an fopen mode of nothing but r, w or a with +, x and e.
std::FILE* OpenBinary(const std::string& posixPath, const std::string& mode);

// A stream of a kind on top of one of bytes, which it takes over, also where it fails. It has no
// buffer of its own, so that its position is that of the bytes.
std::FILE* OpenOnTop(std::FILE* inner, const char* mode, StreamKind kind,
                     const cookie_io_functions_t& calls);

// What every call of such a stream is handed.
struct StreamCookie {
  std::FILE* inner;
  std::FILE* outer;
};
inline std::FILE* Inner(void* cookie) {
  return static_cast<StreamCookie*>(cookie)->inner;
}
// The last of the calls.
int CloseCookie(void* cookie);
