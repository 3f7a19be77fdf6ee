// Texts and bytes in the lines of the layer's own files; internal to the layer.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace winapi {

// Backslash, quote, carriage return and line feed escaped by a backslash.
std::string Escape(std::string_view text);
// Takes escaped text up to an end mark off the rest of a line, mark included.
std::optional<std::string> TakeEscaped(std::string_view& rest, char mark);

std::string ToHex(std::string_view bytes);
std::optional<std::string> FromHex(std::string_view digits);

}  // namespace winapi
