// Streams of text in Unicode, whatever the locale; internal to the layer.
#pragma once

#include <cstdio>
#include <string>
#include <string_view>

enum class Encoding { kLocale, kUtf16, kUtf8 };

// Makes a stream that writes wide text in an encoding, or in that of the file's byte-order mark, on
// top of one that has just been opened to write the file. Takes that one over, also where it fails.
std::FILE* AsUnicode(std::FILE* inner, const std::string& posixPath, Encoding encoding);

// kLocale for all streams but those of AsUnicode.
Encoding EncodingOf(std::FILE* file);

// In one piece; line feeds become those of a text stream.
bool PutUnicode(std::u16string_view text, std::FILE* file, Encoding encoding);
