// A gettext catalogue as read from its bytes, before any text is decoded; internal to the library.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace xlate::detail {

// Both texts in the charset of the catalogue, without zero bytes. The key is empty in the header
// entry alone.
struct CatalogueEntry {
  std::string key;
  std::string text;
  std::size_t place;  // the line, or the number of the entry, from 1
};

// What is wrong with a catalogue, and where; thrown while one is read.
struct CatalogueError {
  std::size_t place;  // 0: the file as a whole
  std::string what;
};

// The entries in the order of the file.
std::vector<CatalogueEntry> ReadPoCatalogue(std::string_view bytes);
std::vector<CatalogueEntry> ReadMoCatalogue(std::string_view bytes);

// Whether the bytes begin as a .mo file of either byte order.
bool IsMoCatalogue(std::string_view bytes);

// Between a context and the source text of a key.
inline constexpr char kContextEnd = '\4';

}  // namespace xlate::detail
