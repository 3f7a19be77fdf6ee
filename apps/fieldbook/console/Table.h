// A table of texts, as aligned columns or as comma-separated values.
#pragma once

#include <string>
#include <vector>

#include "fieldbook/values/Text.h"

namespace fieldbook {

// A row of comma-separated values, in UTF-8 and without a line feed. A field stands in quotes where
// it has to for being read back as it is.
std::string CsvLine(const std::vector<WString>& fields);

enum class Align { Left, Right };

class Table {
 public:
  struct Column {
    WString head;
    Align align;
  };
  using Row = std::vector<WString>;

  explicit Table(std::vector<Column> columns);

  // As many texts as there are columns.
  void AddRow(Row row);

  // Both as lines that end in a line feed, heads first, in UTF-8.
  //
  // Columns stand as wide as their widest text, two blanks apart; what can't be shown on a terminal
  // is replaced. Bold heads need a terminal that knows the ANSI sequences.
  std::string Aligned(bool boldHeads) const;
  std::string Csv() const;

 private:
  std::vector<Column> m_columns;
  std::vector<Row> m_rows;
};

}  // namespace fieldbook
