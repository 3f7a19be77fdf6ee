#include "fieldbook/console/Table.h"

#include "fieldbook/points/PointFile.h"
#include "tests/TestText.h"

using fieldbook::Align;
using fieldbook::Table;
using kelp::WString;

namespace {

TEST(Table, ColumnsAlignByWhatTheTerminalShows) {
  Table table(
      {{KTEXT("Name"), Align::Left}, {KTEXT("Value"), Align::Right}, {KTEXT("Text"), Align::Left}});
  table.AddRow({KTEXT("Ca' N\u00F2va"), KTEXT("1.5"), KTEXT("x")});
  table.AddRow({KTEXT("No\u0300va"), KTEXT("12.25"), KTEXT("")});
  table.AddRow({KTEXT("\u6C34\u8DEF"), KTEXT(""), KTEXT("\u001B[31m\tred")});
  EXPECT_EQ(table.Aligned(false),
            "Name      Value  Text\n"
            "Ca' N\u00F2va    1.5  x\n"
            "No\u0300va      12.25\n"
            "\u6C34\u8DEF             \uFFFD[31m red\n");
  EXPECT_EQ(table.Aligned(true).find("\x1B[1mName      Value  Text\x1B[0m\nCa"), 0u);
}

TEST(Table, CsvReadsBackAsItWas) {
  const std::string csv =
      "Point,N,E,H,D\n\"#1\",1,2,3,\"a, \"\"b\"\"; c\"\n\"P 1,2\",1,2,3,18\" pipe\nQ,1,2,,\n";
  const auto file = fieldbook::ReadPoints(csv, fieldbook::kLengthUnits[0]);
  ASSERT_EQ(file.points.size(), 3u);
  Table table({{KTEXT("Point"), Align::Left}, {KTEXT("D"), Align::Left}});
  for (const auto& point : file.points) table.AddRow({point.name, point.description});
  EXPECT_EQ(table.Csv(), "Point,D\n\"#1\",\"a, \"\"b\"\"; c\"\n\"P 1,2\",\"18\"\" pipe\"\nQ,\n");
}

}  // namespace
