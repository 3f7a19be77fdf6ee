// Streams of text in Unicode, whatever the locale; internal to the layer.
#pragma once

#include <cstdio>
#include <string>
#include <string_view>

#include "crt/OpenStreams.h"

// Makes a stream that writes wide text in an encoding, kUtf16 or kUtf8, or in that of the file's
// byte-order mark, on top of one that has just been opened to write the file. Takes that one over,
// also where it fails.
std::FILE* AsUnicode(std::FILE* inner, const std::string& posixPath, StreamKind encoding);

// In one piece; line feeds become those of a text stream.
bool PutUnicode(std::u16string_view text, std::FILE* file, StreamKind encoding);
