#include "fieldbook/points/PointFile.h"

#include <random>
#include <utility>

#include "tests/TestText.h"

using fieldbook::kLengthUnits;
using fieldbook::LayoutWishes;
using fieldbook::LengthUnit;
using fieldbook::Point;
using fieldbook::PointFile;
using fieldbook::ReadPoints;
using kelp::WString;

namespace {

const LengthUnit& kMetre = kLengthUnits[0];

// Northing first, unless a test says otherwise.
LayoutWishes InUnit(const LengthUnit& unit) {
  LayoutWishes wishes;
  wishes.isEastFirst = false;
  wishes.fileUnit = &unit;
  return wishes;
}

// All points as "name|northing|easting|elevation|description" and all faults as "line: text".
std::string Summary(const std::string& bytes, const LengthUnit& unit = kMetre) {
  const PointFile file = ReadPoints(bytes, InUnit(unit));
  const fieldbook::LengthStyle style = {&kMetre, 2, enumInchDecPrec::Quarters};
  std::string summary;
  for (const Point& p : file.points) {
    summary += p.name.ToUtf8().c_str();
    for (const double length : {p.northing, p.easting, p.elevation}) {
      summary.append("|").append(WriteLength(length, kMetre, style).ToUtf8().c_str());
    }
    summary.append("|").append(p.description.ToUtf8().c_str()).append("\n");
  }
  for (const auto& fault : file.faults.Told()) {
    summary += std::to_string(fault.line) + ": " + fault.message.Text().ToUtf8().c_str() + "\n";
  }
  return summary;
}

TEST(PointFile, RowsComeApartBySeparatorAndQuotes) {
  const std::pair<const char*, const char*> cases[] = {
      {"1,2,3,4,wall", "1|2.00|3.00|4.00|wall\n"},
      {"1\t2\t3\t\twall\r\n", "1|2.00|3.00||wall\n"},
      {"1;2,5;-3;+4,25;wall, old\n", "1|2.50|-3.00|4.25|wall, old\n"},
      {"  A1   2 \t 3  4 top of  wall \n", "A1|2.00|3.00|4.00|top of  wall\n"},
      {"A1 2,5 3,5 4,5 top\n", "A1|2.50|3.50|4.50|top\n"},
      {"A1 2 3 \"\" no height", "A1|2.00|3.00||no height\n"},
      {"1,2,3", "1|2.00|3.00||\n"},
      {"1, 2 , 3 ,4 , a,b,,c ,,\n", "1|2.00|3.00|4.00|a,b,,c\n"},
      {"\"A, 1\",\"2\",\"3\",4,\"the \"\"old\"\" mill, door\"",
       "A, 1|2.00|3.00|4.00|the \"old\" mill, door\n"},
      {"1,2,3,4,\"a, b\", c", "1|2.00|3.00|4.00|a, b, c\n"},
      {"1,2,3,4,a\r2,2,3,4,b\r\n3,2,3,4,c\n4,2,3",
       "1|2.00|3.00|4.00|a\n2|2.00|3.00|4.00|b\n3|2.00|3.00|4.00|c\n4|2.00|3.00||\n"},
      {"1,2,3,4,TOP WALL 18\" WI", "1|2.00|3.00|4.00|TOP WALL 18\" WI\n"},
      {"1,2,3,4,\"A\" LINE", "1|2.00|3.00|4.00|\"A\" LINE\n"},
      {"1\t2\t3\t4\ta;b,c", "1|2.00|3.00|4.00|a;b,c\n"},
      {"1,2,3,4,a;b\n2,2,3,4,c\td\n", "1|2.00|3.00|4.00|a;b\n2|2.00|3.00|4.00|c\td\n"},
      // The separator is that of the file: the second row has lost two commas.
      {"1,2,3,4,a\n2,20 30 40,b\n3,2,3,4,c",
       "1|2.00|3.00|4.00|a\n3|2.00|3.00|4.00|c\n"
       "2: northing \"20 30 40\": this doesn't belong to the value\n"},
  };
  for (const auto& [bytes, summary] : cases) EXPECT_EQ(Summary(bytes), summary) << bytes;
}

TEST(PointFile, WhatIsNoRowIsSkippedAndLinesKeepTheirNumbers) {
  EXPECT_EQ(Summary(""), "");
  EXPECT_EQ(Summary("\r\n \t\r\n# 1,2,3\r\n"), "");
  EXPECT_EQ(Summary("# heads follow\n\nPoint;North (m);East (m);Height;Code 1\nP;1;2;x;\nQ;1;2;3;"),
            "Q|1.00|2.00|3.00|\n4: elevation \"x\": not a number\n");
  EXPECT_EQ(Summary("P1,north,east\n"), "1: northing \"north\": not a number\n")
      << "a row with digits in its name is no line of heads";
  EXPECT_EQ(Summary("P,1,2\nPoint,North,East\n"),
            "P|1.00|2.00||\n2: northing \"North\": not a number\n")
      << "heads stand at the top only";
  EXPECT_EQ(Summary("P,1,2,3,x\r\n\x1A"), "P|1.00|2.00|3.00|x\n");
}

TEST(PointFile, OnlyWholeNumbersTextsAreNumbers) {
  const char* bad[] = {"nan", "inf", "0x10", "1e", "1.2.3", "12abc",
                       "--1", "1 2", ".",    "e5", "1e400"};
  for (const std::string text : bad) {
    const PointFile file = ReadPoints("A,1,2\nP," + text + ",1,1,x\n");
    ASSERT_EQ(file.faults.Count(), 1u) << text;
    EXPECT_EQ(file.faults.Told()[0].line, 2);
  }
  EXPECT_EQ(Summary("P,1e2,-.5,+5.,x"), "P|100.00|-0.50|5.00|x\n");
  EXPECT_EQ(
      Summary("P,1,2\nQ,,2\nR,1\nS,6e8,1\nT,\"1,2"),
      "P|1.00|2.00||\n2: northing is missing\n"
      "3: fewer than three fields; a row is point, northing, easting, elevation, description\n"
      "4: northing \"6e8\": out of range\n5: a quote isn't closed\n");
}

TEST(PointFile, BytesAreUtf8OrLatin1) {
  const std::string wanted = "P|1.00|2.00|3.00|Localit\xC3\xA0\n";
  EXPECT_EQ(Summary("P,1,2,3,Localit\xC3\xA0"), wanted);
  EXPECT_EQ(Summary("\xEF\xBB\xBFP,1,2,3,Localit\xC3\xA0"), wanted);
  EXPECT_EQ(Summary("P,1,2,3,Localit\xE0"), wanted);
  // One stray byte anywhere makes the whole file Latin-1.
  EXPECT_EQ(Summary("P,1,2,3,\xC3\xA0\nQ,1,2,3,\xE0"),
            "P|1.00|2.00|3.00|\xC3\x83\xC2\xA0\nQ|1.00|2.00|3.00|\xC3\xA0\n");
  for (const char* notUtf8 : {"\xC0\x80", "\xED\xA0\x80", "\xF4\x90\x80\x80", "\xE2\x82", "\x80"}) {
    EXPECT_FALSE(fieldbook::IsUtf8(notUtf8));
  }
  EXPECT_TRUE(fieldbook::IsUtf8("a\xC3\xA0\xE2\x82\xAC\xF0\x9F\x98\x80\xEF\xBF\xBD"));
}

TEST(PointFile, FeetAndInchesAreReadStrictly) {
  const LengthUnit& feetInch = kLengthUnits[3];
  const auto read = [](const char* text, const LengthUnit& unit) {
    return ReadLength(WString::ConvertFromUtf8(text), unit, fieldbook::DecimalMark::Point);
  };
  const std::pair<const char*, double> cases[] = {
      {"5'6\"3/8", 5.53125},
      {"-5'6\"3/8", -5.53125},
      {"5'-6 3/8\"", 5.53125},
      {"5' 6\" 3/8", 5.53125},
      {"5'", 5},
      {"5' 6", 5.5},
      {"18\"", 1.5},
      {"3/4\"", 0.0625},
      {"5'1/2\"", 5 + 0.5 / 12},
      {"5.25", 5.25},
      {"5'6.5\"", 5 + 6.5 / 12},
      {"5-6-1/2", 5 + 6.5 / 12},
  };
  for (const auto& [text, feet] : cases) {
    EXPECT_FALSE(read(text, feetInch).fault) << text;
    EXPECT_DOUBLE_EQ(read(text, feetInch).value, feet) << text;
  }
  for (const char* text : {"5'12\"", "5'6\"8/8", "5'6\"3/", "5'x", "'", "5'6\"\"", "5'-", "6\"5'",
                           "9999999999'", "5 1/2"}) {
    EXPECT_TRUE(read(text, feetInch).fault) << text;
  }
  EXPECT_EQ(Summary("P,1'6\"0/16,\"2'6\"\"\",3", feetInch), "P|1.50|2.50|3.00|\n");
  EXPECT_DOUBLE_EQ(read("5'", kMetre).value, 5 * 0.3048);
  EXPECT_TRUE(read("5,25", kMetre).fault);
}

std::string Utf16(std::u16string_view text, bool isLittle) {
  std::string bytes;
  for (const char16_t unit : text) {
    const char low = static_cast<char>(unit), high = static_cast<char>(unit >> 8);
    bytes += isLittle ? low : high;
    bytes += isLittle ? high : low;
  }
  return bytes;
}

TEST(PointFile, Utf16IsReadByItsMark) {
  // Longer than a block of the reading, so that pairs are cut at its end somewhere.
  std::u16string text = u"\uFEFF";
  std::string wanted;
  for (int i = 0; i < 20000; ++i) {
    text += u"A,1,2,3,\U0001F600\u00E0" + std::u16string(static_cast<std::size_t>(i % 3), u'x') +
            u"\r\n";
    wanted += "A|1.00|2.00|3.00|\xF0\x9F\x98\x80\xC3\xA0" +
              std::string(static_cast<std::size_t>(i % 3), 'x') + "\n";
  }
  EXPECT_EQ(Summary(Utf16(text, true)), wanted);
  EXPECT_EQ(Summary(Utf16(text, false)), wanted);
  EXPECT_EQ(Summary(Utf16(u"\uFEFFA,1,2,3,\xD800x", true)), "A|1.00|2.00|3.00|\xEF\xBF\xBDx\n");
  EXPECT_EQ(Summary(Utf16(u"\uFEFFA,1,2,3,\xD800", true)), "A|1.00|2.00|3.00|\xEF\xBF\xBD\n");
}

// What a file is read as: the order of its coordinates, the unit and who decided; or why it isn't.
std::string LayoutOf(const std::string& bytes, const LayoutWishes& wishes = {}) {
  try {
    return LayoutText(ReadPoints(bytes, wishes).layout).ToUtf8().c_str();
  } catch (const fieldbook::LayoutFailure& failure) {
    return failure.GetMsg().ToUtf8().c_str();
  }
}

TEST(PointFile, HeadsDecideColumnsAndUnit) {
  const auto readAs = [](const char* columns, const char* unit) {
    return std::string("Read as ") + columns + " (as its heads say), in " + unit + ".";
  };
  const char* const kMetres = "m (as the settings say)";
  const char* const kEastFirst = "point, easting, northing, elevation, description";
  const char* const kNorthFirst = "point, northing, easting, elevation, description";
  const std::pair<const char*, std::string> cases[] = {
      {"Point,Easting,Northing,Elevation,Description\n", readAs(kEastFirst, kMetres)},
      {"Name;N;E;Z;Code\nA;1;2;3;x", readAs(kNorthFirst, kMetres)},
      {"Punto\tEst [m]\tNord [m]\tQuota [m]\tDescrizione\n",
       readAs(kEastFirst, "m (as its heads say)")},
      {"number, northing (US ft), easting (US ft), height (US ft)\nA,1,2,3",
       readAs(kNorthFirst, "US ft (as its heads say)")},
      {"Date,Id,EAST.,NORTH.\nx,A,1,2",
       readAs("(not read), point, easting, northing, description", kMetres)},
      {"A,1,2", "Read as " + std::string(kEastFirst) +
                    " (as the settings say), in m (as the settings say)."},
      {"P,x,y\nA,1,2",
       "the heads \"P, x, y\" don't tell which is north, x or y; --columns does, such as "
       "P,E,N,Z,D"},
      {"Point,A,B\nA,1,2",
       "the heads \"Point, A, B\" don't tell which columns are point, easting and northing; "
       "--columns does, such as P,E,N,Z,D"},
      {"P,E,N,East\nA,1,2,3", "the heads \"P, E, N, East\" name the easting twice"},
      {"P,E [m],N [ft]\nA,1,2,3", "the heads \"P, E [m], N [ft]\" have different units"},
      {"P,E [miles],N\nA,1,2", "the unit of the head \"E [miles]\" isn't known"},
  };
  for (const auto& [bytes, layout] : cases) EXPECT_EQ(LayoutOf(bytes), layout) << bytes;

  LayoutWishes wishes;
  wishes.from = &kLengthUnits[1];
  EXPECT_EQ(LayoutOf("P,E (m),N (m)\nA,1,2", wishes),
            "the heads \"P, E (m), N (m)\" are in m, and --from says ft");
  wishes.columns = fieldbook::ReadColumns(KTEXT("n,-,e,p"));
  ASSERT_TRUE(wishes.columns);
  EXPECT_EQ(LayoutOf("x,y,z,w\n1,2,3,A", wishes),
            "Read as northing, (not read), easting, point, description (as --columns says), in ft "
            "(as --from says).");
  const PointFile file = ReadPoints("x,y,z,w\n1,2,3,A,d\n", wishes);
  ASSERT_EQ(file.points.size(), 1u);
  EXPECT_EQ(file.points[0].northing, 1);
  EXPECT_EQ(file.points[0].easting, 3);
  EXPECT_EQ(file.points[0].name, WString(KTEXT("A")));
  EXPECT_EQ(file.points[0].description, WString(KTEXT("d")));
  for (const WChar* bad :
       {KTEXT(""), KTEXT("P,E"), KTEXT("P,E,N,E"), KTEXT("P,E,N,Q"), KTEXT("P E N")}) {
    EXPECT_FALSE(fieldbook::ReadColumns(bad));
  }
}

TEST(PointFile, DecimalCommasBetweenCommasAreAFault) {
  const std::string fault =
      ": the numbers seem to have decimal commas, and commas separate the fields\n";
  EXPECT_EQ(Summary("A,1000,25,5000,50,12,3\nB,1,2,3,x\nC,-1,25,2,50\n"),
            "B|1.00|2.00|3.00|x\n1" + fault + "3" + fault);
  EXPECT_EQ(Summary("A,1,2,3,4 x\nB,1.5,2,3,4\nC,1,-2,3,4\n"),
            "A|1.00|2.00|3.00|4 x\nB|1.50|2.00|3.00|4\nC|1.00|-2.00|3.00|4\n");
}

TEST(PointFile, LikeFaultsAreCountedBehindTheTenth) {
  std::string bytes = "A,1,2\n";
  for (int i = 0; i < 25; ++i) bytes += "B,x,2\n";
  bytes += "C,1\n";
  const PointFile file = ReadPoints(bytes);
  EXPECT_EQ(file.faults.Count(), 26u);
  EXPECT_EQ(file.faults.Told().size(), 11u);
  EXPECT_EQ(file.faults.Told().back().line, 27);
  ASSERT_EQ(file.faults.Rests().size(), 1u);
  EXPECT_EQ(file.faults.Rests()[0].count, 15u);
  EXPECT_EQ(file.faults.Rests()[0].likeLine, 11);
}

TEST(PointFile, AnyBytesAreTaken) {
  std::mt19937 random(20240229);
  const std::string pieces[] = {
      ",", ";",    "\t",       " ", "\"",       "\n",   "\r\n",
      "1", "-2.5", "5'6\"3/8", "#", "\xC3\xA0", "\xE0", std::string(1, '\0'),
      "e", "'"};
  for (int round = 0; round < 3000; ++round) {
    std::string bytes;
    const std::size_t size = random() % 200;
    while (bytes.size() < size) {
      bytes += round % 2 == 0 ? std::string(1, static_cast<char>(random()))
                              : pieces[random() % std::size(pieces)];
    }
    PointFile file;
    try {
      file = ReadPoints(bytes, InUnit(kLengthUnits[random() % std::size(kLengthUnits)]));
    } catch (const fieldbook::LayoutFailure&) {
      continue;
    }
    const auto isEnd = [](char byte) { return byte == '\n' || byte == '\r'; };
    const int lines = static_cast<int>(std::count_if(bytes.begin(), bytes.end(), isEnd)) + 1;
    EXPECT_LE(file.points.size() + file.faults.Count(), static_cast<std::size_t>(lines));
    for (const Point& point : file.points) {
      EXPECT_LE(point.line, lines);
      EXPECT_LT(point.northing, kelp::kNotSetThreshold);
      EXPECT_LT(point.easting, kelp::kNotSetThreshold);
    }
  }
}

}  // namespace
