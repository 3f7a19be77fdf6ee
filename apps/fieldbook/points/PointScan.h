// Points files: rows of fields, most often point, two coordinates, elevation and description.
//
//   12,1513044.910,5040123.250,212.334,"Mill, door sill"
//
// One character separates the fields of all rows: tab, semicolon, comma or, failing these, runs of
// blanks. It is the one with which most rows can be read. A field may stand in quotes; then
// separators in it don't count and "" is a quote. A quote further behind in a field is a character
// like any other, since inches are written so. Behind the last field everything belongs to the
// description, separators too. Where the comma doesn't separate it may be the decimal mark; where
// it does, a row whose numbers seem to have decimal commas is refused.
//
// Empty lines and lines with # in front are skipped. A line of heads may stand at the top; what it
// decides, and what without it, stands in PointLayout.h. Encodings and line ends are those of
// TextSource.h.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "fieldbook/points/PointLayout.h"
#include "fieldbook/points/RowSplitter.h"
#include "fieldbook/points/TextSource.h"

namespace fieldbook {

// A row as it was read; its texts are UTF-8 and valid until the next one.
struct PointRow {
  std::string_view name;
  double easting;  // in the unit of the file, as are the other two
  double northing;
  double elevation;  // kelp::kNotSet where the row has none
  std::string_view description;
};

enum class LineKind { Point, Fault, Other };  // the others are comments, empty lines and heads

class PointScan {
 public:
  // Finds the layout. Throws LayoutFailure if heads contradict each other or the wishes, or if they
  // can't be told.
  PointScan(TextSource& source, const LayoutWishes& wishes);

  const PointLayout& Layout() const { return m_layout; }

  // The next line of the file; nothing behind the last one.
  std::optional<LineKind> Next();
  int LineNumber() const { return m_source.LineNumber(); }
  const PointRow& Row() const { return m_row; }
  const Message& Fault() const { return m_fault; }
  // The fields of the columns that aren't read, and those behind the last column.
  std::vector<std::string_view> Others() const;
  // The line as it stands, of the kinds Fault and Other. Heads come comma-separated.
  std::string_view Line() const { return m_line; }

  // The next row that has one of these names, without a look at the others. It is read as by Next,
  // and so gives Point or Fault.
  std::optional<LineKind> NextNamed(const std::vector<std::string>& names);

 private:
  bool MayHold(const std::vector<std::string>& names) const;
  LineKind Read();
  std::string_view FieldOf(Column column) const;
  Message ReadCoordinate(Column column);
  Message ReadFields();

  TextSource& m_source;
  int m_headsLine = 0;   // 0: there is none
  std::string m_heads;   // comma-separated
  PointLayout m_layout;  // found together with the two before it
  RowSplitter m_splitter;
  const std::vector<std::string_view>* m_fields = nullptr;
  PointRow m_row{};
  Message m_fault;
  std::string_view m_line;
};

}  // namespace fieldbook
