#include "kelp0lang/LegacyText.h"

#include <tchar.h>

#include <climits>
#include <cstdio>
#include <vector>

#include "kelp0lang/LegacyNumber.h"
#include "kelp0lang/MeasUnit.h"
#include "tests/TempFolder.h"
#include "tests/TestText.h"

using kelp::WString;

namespace {

using Fields = std::vector<WString>;

TEST(LegacyText, CaseIsThatOfAscii) {
  WString text(KTEXT("aZ\u00E0\u00C0@[`{1"));
  const WString shared(text);
  StringToUpper(text);
  EXPECT_EQ(text, KTEXT("AZ\u00E0\u00C0@[`{1"));
  StringToLower(text);
  EXPECT_EQ(text, KTEXT("az\u00E0\u00C0@[`{1"));
  EXPECT_EQ(shared, KTEXT("aZ\u00E0\u00C0@[`{1")) << "other handles keep their text";

  text = KTEXT("\t a b \n");
  StringTrimLeft(text);
  EXPECT_EQ(text, KTEXT("a b \n"));
  StringTrimRight(text);
  EXPECT_EQ(text, KTEXT("a b"));
  text = KTEXT(" \r\n ");
  StringTrimBoth(text);
  EXPECT_EQ(GetLengthInChars(text), 0u);
  EXPECT_EQ(GetTString('x'), KTEXT("x"));
}

TEST(LegacyText, AccentsAreDroppedByTheTableAlone) {
  WString all;
  for (int unit = 1; unit < 0x180; ++unit) all += static_cast<WChar>(unit);
  WString expected(all);
  const auto expect = [&](std::initializer_list<int> units, WChar base) {
    for (int unit : units) expected.SetChar(unit - 1, base);
  };
  expect({196, 197}, KTEXT('A'));
  expect({201}, KTEXT('E'));
  expect({214}, KTEXT('O'));
  expect({220}, KTEXT('U'));
  expect({224, 225, 226, 228, 229}, KTEXT('a'));
  expect({232, 233, 234, 235}, KTEXT('e'));
  expect({236, 237, 238, 239}, KTEXT('i'));
  expect({242, 243, 244, 246}, KTEXT('o'));
  expect({249, 250, 251, 252}, KTEXT('u'));
  expect({255}, KTEXT('y'));
  EXPECT_EQ(FiltraStringa(all), expected);
  EXPECT_EQ(all.GetChar(195), 196) << "the argument stays";
}

TEST(LegacyText, FindsTheLastNumber) {
  struct Case {
    const WChar* text;
    double value;
    int start, end;
    const WChar* digits;
  };
  const Case kCases[] = {
      {KTEXT("ab12cd34"), 34, 6, 8, KTEXT("34")},  {KTEXT("12cd"), 12, 0, 2, KTEXT("12")},
      {KTEXT("7"), 7, 0, 1, KTEXT("7")},           {KTEXT("a1.50b"), 50, 3, 5, KTEXT("50")},
      {KTEXT("A-007z"), 7, 2, 5, KTEXT("007")},    {KTEXT("abc"), kelp::kNotSet, 3, 3, KTEXT("")},
      {KTEXT(""), kelp::kNotSet, 0, 0, KTEXT("")},
  };
  for (const Case& c : kCases) {
    SCOPED_TRACE(WString(c.text).ToUtf8().c_str());
    int start = -1;
    int end = -1;
    WString digits(KTEXT("old"));
    EXPECT_EQ(EstrazioneNumero(c.text, start, end, &digits), c.value);
    EXPECT_EQ(start, c.start);
    EXPECT_EQ(end, c.end);
    EXPECT_EQ(digits, c.digits);
    EXPECT_EQ(EstrazioneNumero(c.text, start, end, nullptr), c.value);
  }
}

TEST(LegacyText, CountsNamesUp) {
  struct Case {
    const WChar* text;
    bool scaled;
    int step;
    const WChar* next;
  };
  const Case kCases[] = {
      {KTEXT("P10"), false, 1, KTEXT("P11")},    {KTEXT("P10"), true, 1, KTEXT("P20")},
      {KTEXT("P"), false, 1, KTEXT("P1")},       {KTEXT("P"), true, 3, KTEXT("P3")},
      {KTEXT("A007"), false, 1, KTEXT("A8")},    {KTEXT("A007"), true, 1, KTEXT("A107")},
      {KTEXT("9a9b"), false, 1, KTEXT("9a10b")}, {KTEXT("P1"), false, -3, KTEXT("P-2")},
      {KTEXT("99"), false, 1, KTEXT("100")},     {KTEXT(""), false, 5, KTEXT("5")},
  };
  for (const Case& c : kCases) {
    EXPECT_EQ(IncrementaNuProg(c.text, c.scaled, c.step), c.next)
        << WString(c.text).ToUtf8().c_str();
  }
}

Fields FixRow(std::vector<int> widths, const WChar* row, bool quotes = false) {
  Fields out;
  ConvFixRow(static_cast<int>(widths.size()), widths.data(), row, quotes, out);
  return out;
}

TEST(LegacyText, SplitsRowsOfFixedWidths) {
  EXPECT_EQ(FixRow({3, 3}, KTEXT("ab")), (Fields{KTEXT("ab"), KTEXT("")}));
  EXPECT_EQ(FixRow({2, 4, 3}, KTEXT("ab c  d\u00E8f")),
            (Fields{KTEXT("ab"), KTEXT("c"), KTEXT("def")}));
  EXPECT_EQ(FixRow({2, 0, -1, 9}, KTEXT("abcde")),
            (Fields{KTEXT("ab"), KTEXT(""), KTEXT("cde"), KTEXT("bcde")}));
  EXPECT_EQ(FixRow({INT_MAX, INT_MAX, 1}, KTEXT("ab")),
            (Fields{KTEXT("ab"), KTEXT(""), KTEXT("")}));
  EXPECT_EQ(FixRow({6, 4}, KTEXT("\" ab \"\"x  ")), (Fields{KTEXT("\" ab \""), KTEXT("\"x")}));
  EXPECT_EQ(FixRow({6, 4}, KTEXT("\" ab \"\"x  "), true), (Fields{KTEXT("ab"), KTEXT("\"x")}));
  EXPECT_EQ(FixRow({}, KTEXT("ab")), Fields{});
}

Fields DelRow(const WChar* delimiters, const WChar* row, bool quotes = false) {
  Fields out;
  ConvDelRow(delimiters, row, quotes, out);
  return out;
}

TEST(LegacyText, SplitsRowsAtDelimiters) {
  EXPECT_EQ(DelRow(KTEXT(";,"), KTEXT("a;b,c")), (Fields{KTEXT("a"), KTEXT("b"), KTEXT("c")}));
  EXPECT_EQ(DelRow(KTEXT(";,"), KTEXT("a,b;c,d")),
            (Fields{KTEXT("a"), KTEXT("b"), KTEXT("c"), KTEXT("d")}));
  EXPECT_EQ(DelRow(KTEXT(","), KTEXT(" ,a,, b ,")),
            (Fields{KTEXT(""), KTEXT("a"), KTEXT(""), KTEXT("b"), KTEXT("")}));
  EXPECT_EQ(DelRow(KTEXT(" "), KTEXT("  a   b c ")), (Fields{KTEXT("a"), KTEXT("b"), KTEXT("c")}))
      << "a run of blanks delimits once";
  EXPECT_EQ(DelRow(KTEXT("; "), KTEXT("a ;b")), (Fields{KTEXT("a"), KTEXT(""), KTEXT("b")}));
  EXPECT_EQ(DelRow(KTEXT(""), KTEXT(" \u00E0 b ")), Fields{KTEXT("a b")});
  EXPECT_EQ(DelRow(KTEXT(","), KTEXT("")), Fields{KTEXT("")});
  EXPECT_EQ(DelRow(KTEXT(","), KTEXT("\"a,b\",x\" c \"y,\""), true),
            (Fields{KTEXT("\"a"), KTEXT("b\""), KTEXT("c"), KTEXT("\"")}))
      << "a delimiter within quotation marks counts";
}

TEST(LegacyText, FieldsLoseQuotesAndBlanks) {
  std::vector<WString> fields = {KTEXT(" \"a b\" "), KTEXT("x\"y"), KTEXT(" z ")};
  std::vector<WString> kept = fields;
  EliminaApiciESpazi(&fields, true);
  EXPECT_EQ(fields, (std::vector<WString>{KTEXT("a b"), KTEXT("x\"y"), KTEXT("z")}));
  EliminaApiciESpazi(&kept, false);
  EXPECT_EQ(kept[0], KTEXT("\"a b\""));
}

TEST(LegacyText, ReadsLinesWithoutTheirLineFeed) {
  const TempFolder folder;
  folder.Write("rows.txt", "first\r\n\nlong row");
  std::FILE* const file = _wfopen(folder.Wide(KTEXT("rows.txt")).c_str(), KTEXT("rt"));
  ASSERT_NE(file, nullptr);
  WChar buffer[6] = {};
  std::vector<WString> lines;
  std::size_t result = 0;
  while ((result = _fgettline(buffer, 6, file)) != 0) {
    EXPECT_EQ(result, reinterpret_cast<std::size_t>(buffer));
    lines.push_back(buffer);
  }
  std::fclose(file);
  EXPECT_EQ(lines, (Fields{KTEXT("first"), KTEXT(""), KTEXT(""), KTEXT("long "), KTEXT("row")}))
      << "a full buffer leaves the line feed for the next call";
}

}  // namespace
