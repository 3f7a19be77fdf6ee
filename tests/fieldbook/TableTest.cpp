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
  table.AddCell("P");
  table.AddCell("\xC3\xA0\t");
  table.AddCell("x");
  EXPECT_NE(table.Aligned(false).find("\nP            \xC3\xA0   x\n"), std::string::npos);
}

TEST(Table, CsvReadsBackAsItWas) {
  const std::string csv =
      "Point,N,E,H,D\n\"#1\",1,2,3,\"a, \"\"b\"\"; c\"\n\"P 1,2\",1,2,3,18\" pipe\nQ,1,2,,\n";
  const auto file = fieldbook::ReadPoints(csv);
  ASSERT_EQ(file.points.size(), 3u);
  std::string lines;
  for (const auto& point : file.points) {
    lines += fieldbook::CsvLine({point.name, point.description}) + '\n';
  }
  EXPECT_EQ(lines, "\"#1\",\"a, \"\"b\"\"; c\"\n\"P 1,2\",\"18\"\" pipe\"\nQ,\n");
}

}  // namespace
