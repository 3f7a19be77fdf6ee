// A table of texts, as aligned columns or as comma-separated values.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "fieldbook/values/Text.h"

namespace fieldbook {

// A row of comma-separated values, in UTF-8 and without a line feed. A field stands in quotes where
// it has to for being read back as it is.
std::string CsvLine(const std::vector<WString>& fields);
// One field of it, without a comma in front; UTF-8 may be given as it is.
void AppendCsvField(std::string& line, std::string_view field, bool isFirst);
void AppendCsvField(std::string& line, const WString& field, bool isFirst);

enum class Align { Left, Right };

// Rows are kept as bytes, so that a million of them take little more than their text.
class Table {
 public:
  struct Column {
    WString head;
    Align align;
  };
  using Row = std::vector<WString>;
  using Sink = std::function<void(std::string_view bytes)>;

  explicit Table(std::vector<Column> columns);

  // As many texts as there are columns.
  void AddRow(const Row& row);
  // The next text of a row, in UTF-8. What can't be shown on a terminal is replaced.
  void AddCell(std::string_view utf8);

  // Lines that end in a line feed, heads first, in UTF-8. Columns stand as wide as their widest
  // text, two blanks apart. Bold heads need a terminal that knows the ANSI sequences.
  void WriteAligned(bool boldHeads, const Sink& sink) const;
  std::string Aligned(bool boldHeads) const;

 private:
  // What stands before the bytes of a text.
  struct CellHead {
    std::uint32_t size;
    std::uint32_t columns;  // that it takes on a terminal
  };

  void Store(std::string_view shown, int columns);
  void AppendCell(std::string& line, std::size_t at, std::string_view text, int columns) const;

  std::vector<Column> m_columns;
  std::vector<int> m_widths;
  std::vector<std::string> m_blocks;  // of the texts, one behind another; none spans two blocks
  std::size_t m_next = 0;             // the column of the next text
};

}  // namespace fieldbook
