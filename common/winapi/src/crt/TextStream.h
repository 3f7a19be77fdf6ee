// Streams of text with the line ends of Windows; internal to the layer.
#pragma once

#include <cstdio>

// A stream of text on top of one of bytes, which it takes over, also where it fails.
std::FILE* AsText(std::FILE* inner, const char* mode);

// The next byte of text from the stream beneath: a carriage return before a line feed goes, and
// Ctrl-Z is the end.
inline int GetTextByte(std::FILE* inner) {
  constexpr int kCtrlZ = 0x1A;
  const int byte = getc_unlocked(inner);
  if (byte > '\r' && byte != kCtrlZ) return byte;
  if (byte == kCtrlZ) {
    std::ungetc(byte, inner);
    return EOF;
  }
  if (byte != '\r') return byte;
  const int following = getc_unlocked(inner);
  if (following == '\n') return following;
  if (following != EOF) std::ungetc(following, inner);
  return byte;
}
