// The charsets in which catalogues are written, by the names of gettext's header and the code pages
// of the system; internal to the library.
#pragma once

#include <windows.h>

#include <optional>
#include <string_view>

namespace xlate::detail {

struct Charset {
  UINT codePage = CP_UTF8;
  unsigned char lastByte = 0xFF;

  // Whether the byte begins a character of two bytes, of which the second can look like a letter or
  // a backslash.
  bool IsLead(char byte) const;
};

// What stands behind "charset=" in the text of a header entry. UTF-8 for a header without one, and
// for "CHARSET", as a fresh template has it.
std::string_view CharsetName(std::string_view header);

// The charset of a name, without regard to case and to what isn't a letter or digit. None for a
// name that is unknown, and for a code page that the machine doesn't have.
std::optional<Charset> FindCharset(std::string_view name);

}  // namespace xlate::detail
