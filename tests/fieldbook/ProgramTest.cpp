#include <gtest/gtest.h>

#include <algorithm>
#include <regex>

#include "tests/fieldbook/RunProgram.h"

namespace {

const std::string kData = FIELDBOOK_DATA;
const std::string kPoints = kData + "/points.csv";
const std::string kItalian = kData + "/it.po";

std::size_t CountLines(const std::string& text) {
  return static_cast<std::size_t>(std::count(text.begin(), text.end(), '\n'));
}

TEST(Program, ShowPrintsATable) {
  const std::string rows = "P1,10,-20.5,3.25,\"Ca' N\xC3\xB2va, door\"\r\nP2;x,1000,2,,\n";
  const ProgramResult table = RunFieldbook({"show", "-", "--to", "m"}, rows);
  EXPECT_EQ(table.out,
            "Point  Northing (m)  Easting (m)  Elevation (m)  Description\n"
            "P1           10.000      -20.500          3.250  Ca' N\xC3\xB2va, door\n"
            "P2;x       1000.000        2.000\n");
  EXPECT_EQ(table.err, "");
  EXPECT_EQ(table.status, 0);
}

TEST(Program, ShowConvertsBetweenAllUnits) {
  // What 1000 m are in each.
  const std::pair<const char*, const char*> cases[] = {
      {"m", "1000.000000"},
      {"ft", "3280.839895"},
      {"us-ft", "3280.833333"},
      {"ch", "49.709695"},
      {"us-ch", "49.709596"},
      {"ft-in", "\"3280'10\"\"5/64\""},
      {"us-ft-in", "\"3280'10\"\"0/64\""},
  };
  for (const auto& [unit, northing] : cases) {
    const ProgramResult there =
        RunFieldbook({"show", "-", "--csv", "--to", unit, "--decimals", "6", "--denominator", "64"},
                     "P,1000,0,0,x");
    EXPECT_NE(there.out.find(std::string("\nP,") + northing + ","), std::string::npos) << there.out;
    // The output with its heads is a points file again.
    const ProgramResult back =
        RunFieldbook({"show", "-", "--csv", "--from", unit, "--to", "m"}, there.out);
    EXPECT_EQ(back.out,
              "Point,Northing (m),Easting (m),Elevation (m),Description\n"
              "P,1000.000,0.000,0.000,x\n");
    EXPECT_EQ(back.err, "");
  }
}

TEST(Program, RowsThatCannotBeReadAreReportedAndTheOthersShown) {
  const DataFolder folder;
  const std::string path = folder.Write("città.csv", "A,1,2,3,x\nB,1,zwei,3,x\n\nC,1,2,3,x\nD,1\n");
  const ProgramResult result = RunFieldbook({"show", path});
  EXPECT_EQ(result.status, 2);
  EXPECT_EQ(CountLines(result.out), 3u);
  EXPECT_EQ(result.err, path + ":2: easting \"zwei\": not a number\n" + path +
                            ":5: fewer than three fields; a row is point, northing, easting, "
                            "elevation, description\n");
}

TEST(Program, WhatCannotBeDoneIsOneClearLine) {
  const std::string hint = "\nTry: fieldbook( show| angle| inverse| units| edit)? --help\n";
  const std::pair<std::vector<std::string>, std::string> cases[] = {
      {{"show", "none.csv"}, "fieldbook: none.csv: there is no such file\n"},
      {{"edit", "none.csv"}, "fieldbook: none.csv: there is no such file\n"},
      {{"edit"}, "fieldbook: edit takes one FILE, 0 given$"},
      {{"edit", "-"}, "fieldbook: edit takes a FILE; standard input is for the commands$"},
      {{"show", kData}, "fieldbook: .*: it is a folder\n"},
      {{"inverse", kPoints, "T1", "nowhere"}, "fieldbook: .*: there is no point \"nowhere\"\n"},
      {{"--lang", kPoints, "--version"}, "fieldbook: --lang: .*points\\.csv.*\n"},
      {{}, "fieldbook: a command is missing: one of show, angle, inverse, units, edit$"},
      {{"list"},
       "fieldbook: there is no command \"list\", only show, angle, inverse, units, edit$"},
      {{"show"}, "fieldbook: show takes at least one FILE$"},
      {{"show", "-", "a", "-"}, "fieldbook: standard input can be one FILE only$"},
      {{"show", "a", "--lat"}, "fieldbook: show takes no --lat$"},
      {{"show", "a", "--to", "yd"},
       "fieldbook: --to: \"yd\" isn't one of m, ft, us-ft, ft-in, us-ft-in, ch, us-ch$"},
      {{"show", "a", "--denominator", "3"},
       "fieldbook: --denominator: \"3\" isn't one of 4, 8, 16, 32, 64$"},
      {{"show", "a", "--decimals", "-1"},
       "fieldbook: --decimals: \"-1\" isn't a whole number from 0 to 9$"},
      {{"angle", "1", "--from", "deg"},
       "fieldbook: --to is missing; it takes one of deg, gon, rad, mil, dms, dms-blank, "
       "dms-packed$"},
      {{"angle", "--from", "deg", "--to", "dms"}, "fieldbook: angle takes at least one VALUE$"},
      {{"angle", "1", "--from", "deg", "--to", "dms", "--lat", "--lon"},
       "fieldbook: --lat and --lon don't go together$"},
      {{"inverse", kPoints, "T1"}, "fieldbook: inverse takes FILE, FROM and TO, 2 given$"},
  };
  for (const auto& [arguments, error] : cases) {
    const ProgramResult result = RunFieldbook(arguments);
    const std::regex expected(error.back() == '$' ? error.substr(0, error.size() - 1) + hint
                                                  : error);
    EXPECT_TRUE(std::regex_match(result.err, expected)) << result.err;
    EXPECT_EQ(result.out, "");
    EXPECT_EQ(result.status, 1) << result.err;
  }
}

TEST(Program, AngleConvertsValuesAndReportsTheRest) {
  const ProgramResult values =
      RunFieldbook({"angle", "-10.5", "10,5", "370", "--from", "deg", "--to", "dms"});
  EXPECT_EQ(values.out, "-10\u00B030'00.00\"\n370\u00B000'00.00\"\n");
  EXPECT_EQ(values.err, "10,5: not a number\n");
  EXPECT_EQ(values.status, 2);

  const ProgramResult input =
      RunFieldbook({"angle", "-", "--from", "dms", "--to", "gon", "--decimals", "4", "--lon"},
                   "\xEF\xBB\xBF"
                   "90\u00B0 W\r\n\n181 0 0\n45 30 0");
  EXPECT_EQ(input.out, "-100.0000\n50.5556\n");
  EXPECT_EQ(input.err, "-:3: a longitude lies between -180 and 180 degrees\n");
  EXPECT_EQ(input.status, 2);

  EXPECT_EQ(RunFieldbook({"angle", "200", "--from", "gon", "--to", "rad", "--decimals", "9"}).out,
            "3.141592654\n");
  EXPECT_EQ(RunFieldbook({"angle", "-0.5", "--from", "deg", "--to", "dms-packed", "--lat"}).out,
            "0.300000\"S\n");
}

TEST(Program, InverseGoesFromOnePointToAnother) {
  const std::string file =
      "A,100,100,10,\nB,103,104,,\nC,100,99.9999,12.5,\nA2,100,100,10,\nB,1,1,1,\n";
  const ProgramResult west = RunFieldbook({"inverse", "-", "A", "C"}, file);
  EXPECT_EQ(west.out,
            "From                                 A\n"
            "To                                   C\n"
            "Distance (m)                     0.000\n"
            "Difference of height (m)         2.500\n"
            "Direction (gon)               300.0000\n"
            "Direction (DMS)           270\u00B000'00.0\"\n");
  EXPECT_EQ(west.status, 0);
  const ProgramResult same = RunFieldbook({"inverse", "-", "A", "A2", "--to", "ft"}, file);
  EXPECT_NE(same.out.find("Direction (gon)            not known\n"), std::string::npos) << same.out;
  const ProgramResult twice = RunFieldbook({"inverse", "-", "A", "B"}, file);
  EXPECT_EQ(twice.err, "fieldbook: -: there are several points \"B\", in lines 2 and 5\n");
  EXPECT_EQ(twice.status, 1);
  // Just west of north the direction rounds to a full turn, which is shown as 0.
  const ProgramResult north =
      RunFieldbook({"inverse", "-", "P", "Q"}, "P,0,0,0\nQ,1000,-0.00001,0\n");
  EXPECT_NE(north.out.find("Direction (gon)               0.0000\n"), std::string::npos)
      << north.out;
  EXPECT_NE(north.out.find("0\u00B000'00.0\"\n"), std::string::npos) << north.out;
}

TEST(Program, SpeaksItalian) {
  const ProgramResult table = RunFieldbook({"show", kPoints, "--to", "m", "--lang", kItalian});
  EXPECT_EQ(table.out.find("Punto     Nord (m)      Est (m)  Quota (m)  Descrizione\n"), 0u);
  EXPECT_EQ(CountLines(table.out), 25u);
  EXPECT_EQ(table.err, "");
  EXPECT_EQ(RunFieldbook({"angle", "10 30 0 O", "10 0 0 W", "--from", "dms", "--to", "dms", "--lon",
                          "--decimals", "0", "--lang=" + kItalian})
                .out,
            "10\u00B030'00\"O\n");
  EXPECT_EQ(RunFieldbook({"--nope", "--lang", kItalian}).err,
            "fieldbook: l'opzione --nope non esiste\nVedi: fieldbook --help\n");
  for (const char* command : {"show", "angle", "inverse", "units", "edit"}) {
    const std::string help = RunFieldbook({command, "--help", "--lang", kItalian}).out;
    EXPECT_EQ(help.find(std::string("Uso: fieldbook ") + command), 0u) << help;
  }
}

TEST(Program, HelpAndVersionAreOnStandardOutput) {
  const ProgramResult general = RunFieldbook({"--help"});
  EXPECT_EQ(general.out.find("Usage: fieldbook COMMAND"), 0u);
  EXPECT_EQ(general.status, 0);
  for (const char* command : {"show", "angle", "inverse", "units", "edit"}) {
    const ProgramResult help = RunFieldbook({"-h", command});
    EXPECT_EQ(help.out.find(std::string("Usage: fieldbook ") + command), 0u) << help.out;
    EXPECT_EQ(help.status, 0);
  }
  EXPECT_TRUE(std::regex_match(RunFieldbook({"--version"}).out,
                               std::regex("fieldbook \\d+\\.\\d+\\.\\d+\n")));
}

#ifndef _WIN32
TEST(Program, AFullDiskIsReported) {
  const ProgramResult result = RunFieldbook({"show", kPoints}, "", "/dev/full");
  EXPECT_EQ(result.err, "fieldbook: can't write the output: no space is left\n");
  EXPECT_EQ(result.status, 1);
}
#endif

}  // namespace
