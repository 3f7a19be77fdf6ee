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
            "Read as point, easting, northing, elevation, description (as the settings say), in m "
            "(as the settings say).\n"
            "Point  Easting (m)  Northing (m)  Elevation (m)  Description\n"
            "P1          10.000       -20.500          3.250  Ca' N\xC3\xB2va, door\n"
            "P2;x      1000.000         2.000\n");
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
    std::vector<std::string> options = {"show", "-", "--csv", "--to", unit};
    const bool isInches = std::string(unit).ends_with("-in");
    options.insert(options.end(),
                   {isInches ? "--denominator" : "--decimals", isInches ? "64" : "6"});
    const ProgramResult there = RunFieldbook(options, "P,1000,0,0,x");
    EXPECT_NE(there.out.find(std::string("\nP,") + northing + ","), std::string::npos) << there.out;
    // The output with its heads is a points file again.
    const ProgramResult back =
        RunFieldbook({"show", "-", "--csv", "--from", unit, "--to", "m"}, there.out);
    EXPECT_EQ(back.out,
              "Point,Easting (m),Northing (m),Elevation (m),Description\n"
              "P,1000.000,0.000,0.000,x\n");
    EXPECT_EQ(back.err, "");
  }
}

TEST(Program, RowsThatCannotBeReadAreReportedAndTheOthersShown) {
  const DataFolder folder;
  const std::string path = folder.Write("città.csv", "A,1,2,3,x\nB,1,zwei,3,x\n\nC,1,2,3,x\nD,1\n");
  const ProgramResult result = RunFieldbook({"show", path});
  EXPECT_EQ(result.status, 2);
  EXPECT_EQ(CountLines(result.out), 4u);
  EXPECT_EQ(result.err, path + ":2: northing \"zwei\": not a number\n" + path +
                            ":5: fewer than three fields; a row is point, easting, northing, "
                            "elevation, description\n");
}

TEST(Program, WhatCannotBeDoneIsOneClearLine) {
  const std::string hint =
      "\nTry: fieldbook( show| angle| inverse| polar| area| plot| units| edit)? --help\n";
  const std::pair<std::vector<std::string>, std::string> cases[] = {
      {{"show", "none.csv"}, "fieldbook: none.csv: there is no such file\n"},
      {{"edit", "none.csv"}, "fieldbook: none.csv: there is no such file\n"},
      {{"edit"}, "fieldbook: edit takes one FILE, 0 given$"},
      {{"edit", "-"}, "fieldbook: edit takes a FILE; standard input is for the commands$"},
      {{"show", kData}, "fieldbook: .*: it is a folder\n"},
      {{"inverse", kPoints, "T1", "nowhere"}, "fieldbook: .*: there is no point \"nowhere\"\n"},
      {{"--lang", kPoints, "--version"}, "fieldbook: --lang: .*points\\.csv.*\n"},
      {{},
       "fieldbook: a command is missing: one of show, angle, inverse, polar, area, check, "
       "tolerance, recent, plot, send, units, service, "
       "edit, system$"},
      {{"list"},
       "fieldbook: there is no command \"list\", only show, angle, inverse, polar, area, check, "
       "tolerance, recent, plot, "
       "send, units, service, "
       "edit, system$"},
      {{"show"}, "fieldbook: show takes at least one FILE$"},
      {{"show", "-", "a", "-"}, "fieldbook: standard input can be one FILE only$"},
      {{"show", "a", "--lat"}, "fieldbook: show takes no --lat$"},
      {{"show", "a", "--to", "yd"},
       "fieldbook: --to: \"yd\" isn't one of m, ft, us-ft, ft-in, us-ft-in, ch, us-ch$"},
      {{"show", "a", "--to", "ft-in", "--denominator", "3"},
       "fieldbook: --denominator: \"3\" isn't one of 4, 8, 16, 32, 64$"},
      {{"show", "a", "--denominator", "8"},
       "fieldbook: --denominator acts on feet and inches alone, and the lengths are in m$"},
      {{"show", "a", "--reduced"},
       "fieldbook: --reduced acts on feet and inches alone, and the lengths are in m$"},
      {{"show", "a", "--to", "ft-in", "--decimals", "2"},
       "fieldbook: --decimals doesn't act on feet and inches; --denominator does$"},
      {{"plot", "a"}, "fieldbook: plot takes one FILE, and -o with the drawing$"},
      {{"show", "a", "--decimals", "-1"},
       "fieldbook: --decimals: \"-1\" isn't a whole number from 0 to 9$"},
      {{"angle", "1", "--from", "deg"},
       "fieldbook: --to is missing; it takes one of deg, gon, rad, mil, dms, dms-blank, "
       "dms-packed, bearing$"},
      {{"angle", "--from", "deg", "--to", "dms"}, "fieldbook: angle takes at least one VALUE$"},
      {{"angle", "1", "--from", "deg", "--to", "dms", "--lat", "--lon"},
       "fieldbook: --lat and --lon don't go together$"},
      {{"angle", "1", "--from", "deg", "--to", "bearing", "--lat"},
       "fieldbook: a bearing is no latitude or longitude$"},
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
      RunFieldbook({"angle", "-10,5", "x", "370", "--from", "deg", "--to", "dms"});
  EXPECT_EQ(values.out, "-10\u00B030'00.00\"\n370\u00B000'00.00\"\n");
  EXPECT_EQ(values.err, "x: not a number\n");
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
  EXPECT_EQ(RunFieldbook({"angle", "S45\u00B030'E", "-50", "--from", "gon", "--to", "bearing"}).out,
            "S45\u00B030'00.00\"E\nN45\u00B000'00.00\"W\n");
}

// Without the line that tells the layout.
std::string WithoutLayout(const ProgramResult& result) {
  return result.out.substr(result.out.find('\n') + 1);
}

TEST(Program, InverseGoesFromOnePointToAnother) {
  const std::string file =
      "A,100,100,10,\nB,104,103,,\nC,99.9999,100,12.5,\nA2,100,100,10,\nB,1,1,1,\nD,96,103,10\n";
  const ProgramResult west = RunFieldbook({"inverse", "-", "A", "C"}, file);
  EXPECT_EQ(WithoutLayout(west),
            "From                                            A\n"
            "To                                              C\n"
            "Distance (m)                                0.000\n"
            "Slope distance (m)                          2.500\n"
            "Difference of height (m)                    2.500\n"
            "Grade (%)                              2500000.00\n"
            "Direction (gon, clockwise from north)    300.0000\n");
  EXPECT_EQ(west.status, 0);
  const ProgramResult same = RunFieldbook({"inverse", "-", "A", "A2", "--to", "ft"}, file);
  EXPECT_NE(same.out.find("Direction (gon, clockwise from north)  not known\n"), std::string::npos)
      << same.out;
  const ProgramResult twice = RunFieldbook({"inverse", "-", "A", "B"}, file);
  EXPECT_EQ(twice.err, "fieldbook: -: there are several points \"B\", in lines 2 and 5\n");
  EXPECT_EQ(twice.status, 1);
  // Just west of north the direction rounds to a full turn, which is shown as 0.
  const ProgramResult north =
      RunFieldbook({"inverse", "-", "P", "Q"}, "P,0,0,0\nQ,-0.00001,1000,0\n");
  EXPECT_NE(north.out.find("north)    0.0000\n"), std::string::npos) << north.out;
  // Heads decide which is which.
  const ProgramResult heads = RunFieldbook({"inverse", "-", "A", "B"},
                                           "Point,Easting,Northing\nA,1000,5000\nB,1100,5000\n");
  EXPECT_NE(heads.out.find("north)   100.0000\n"), std::string::npos) << heads.out;
  const ProgramResult bearing = RunFieldbook({"inverse", "-", "D", "A", "--bearing"}, file);
  EXPECT_NE(bearing.out.find("Bearing                   S53\u00B007'48\"E\n"), std::string::npos)
      << bearing.out;
  const ProgramResult chain = RunFieldbook({"inverse", "-", "A", "D", "A2"}, file);
  EXPECT_EQ(WithoutLayout(chain),
            "From  To  Distance (m)  Slope distance (m)  Difference of height (m)  Grade (%)  "
            "Direction (gon, clockwise from north)\n"
            "A     D          5.000               5.000                     0.000       0.00       "
            "                        340.9666\n"
            "D     A2         5.000               5.000                     0.000       0.00       "
            "                        140.9666\n"
            "Sum             10.000              10.000                     0.000\n");
}

TEST(Program, PolarAndAreaReckonOnThePoints) {
  const std::string file = "A,100,100,10\nB,110,100\nC,110,110\nD,100,110\n";
  EXPECT_EQ(WithoutLayout(RunFieldbook({"polar", "-", "A", "150", "14.142136"}, file)),
            "Easting (m)  Northing (m)\n    110.000        90.000\n");
  EXPECT_EQ(RunFieldbook({"polar", "-", "A", "0", "10", "--csv", "--to", "ft"}, file).out,
            "Point,Easting (ft),Northing (ft),Elevation (ft),Description\n,328.084,338.084,,\n");
  EXPECT_EQ(RunFieldbook({"polar", "-", "A", "north", "1"}, file).err,
            "fieldbook: direction \"north\": not a number\n");
  EXPECT_EQ(WithoutLayout(RunFieldbook({"area", "-", "A", "B", "C", "D"}, file)),
            "Area [m\u00B2]      100.00\nPerimeter (m)  40.000\n");
  EXPECT_EQ(RunFieldbook({"area", "-", "A", "C", "B", "D"}, file).err,
            "fieldbook: the boundary crosses itself: A to C meets B to D\n");
}

TEST(Program, FeetAndInchesCanBeReduced) {
  EXPECT_EQ(RunFieldbook({"show", "-", "--from", "ft", "--to", "ft-in", "--reduced", "--csv"},
                         "A,12.5416666667,-0.5,3\nB,-0.01,0,\n")
                .out,
            "Point,Easting (ft-in),Northing (ft-in),Elevation (ft-in),Description\n"
            "A,\"12'6 1/2\"\"\",\"-0'6\"\"\",\"3'0\"\"\",\n"
            "B,\"-0'0 1/8\"\"\",\"0'0\"\"\",,\n");
}

TEST(Program, PlotDrawsPointsLinesAndScale) {
  const DataFolder folder;
  const std::string map = folder.PathOf("map.svg").string();
  const ProgramResult result =
      RunFieldbook({"plot", "-", "-o", map},
                   "A<1>,0,0,,fence\nB,100,0,,fence\nC,100,50,,tree\nD,0,50,,\nE,1,1,,\n");
  EXPECT_EQ(result.status, 0) << result.err;
  const std::string svg = folder.Read("map.svg");
  for (const char* piece : {"viewBox=\"0 0 1160.00 660.00\"", "<circle cx=\"80.00\" cy=\"580.00\"",
                            ">A&lt;1&gt;</text>",
                            "<polyline points=\"80.00,580.00 1080.00,580.00\"><title>fence</title>",
                            "H280.00 v-6", ">20 m</text>"}) {
    EXPECT_NE(svg.find(piece), std::string::npos) << piece << svg;
  }
  EXPECT_EQ(svg.find("polyline"), svg.rfind("<polyline") + 1) << "one line alone";
  EXPECT_EQ(RunFieldbook({"plot", "-", "-o", map}, "A,5,5\n").status, 0);
  EXPECT_EQ(RunFieldbook({"plot", "-", "-o", map}, "").err,
            "fieldbook: -: this isn't a points file: it holds no point\n");
  EXPECT_NE(folder.Read("map.svg").find(">A</text>"), std::string::npos) << "the drawing stays";
}

TEST(Program, ShowPicksAndSortsPoints) {
  const std::string file = "P10,1,9,3,x\nP2,2,8,1,y\nQ1,3,7,,x\np1,4,6,2,x10\n";
  const auto names = [&file](std::vector<std::string> options) {
    options.insert(options.begin(), {"show", "-", "--csv"});
    const std::string out = RunFieldbook(options, file).out;
    std::string names;
    for (std::size_t at = out.find('\n') + 1; at < out.size(); at = out.find('\n', at) + 1) {
      names += out.substr(at, out.find(',', at) - at) + ' ';
    }
    return names;
  };
  EXPECT_EQ(names({"--sort", "name"}), "p1 P2 P10 Q1 ");
  EXPECT_EQ(names({"--sort", "northing", "--limit", "3"}), "p1 Q1 P2 ");
  EXPECT_EQ(names({"--sort", "elevation"}), "P2 p1 P10 Q1 ");
  EXPECT_EQ(names({"--sort", "description"}), "P10 Q1 p1 P2 ");
  EXPECT_EQ(names({"--points", "Q1, P10,none"}), "P10 Q1 ");
  EXPECT_EQ(names({"--within", "3.5,8.5,1.5,6.5"}), "P2 Q1 ");
  EXPECT_EQ(names({"--limit", "0"}), "");
  EXPECT_EQ(RunFieldbook({"show", "-", "--within", "1,2,3"}, file).status, 1);
  EXPECT_EQ(RunFieldbook({"show", "-", "--limit", "-1"}, file).status, 1);
}

TEST(Program, WhatIsNoPointsFileIsOneMessage) {
  for (const char* command : {"show", "inverse"}) {
    const DataFolder folder;
    const std::string path = folder.Write("x.txt", "Dear Sir,\nthank you for\nyour letter.\n");
    const ProgramResult result =
        RunFieldbook(command == std::string("show") ? std::vector<std::string>{"show", path}
                                                    : std::vector<std::string>{"edit", path});
    EXPECT_EQ(result.err.find("fieldbook: " + path + ": this isn't a points file: line 1: "), 0u)
        << result.err;
    EXPECT_EQ(CountLines(result.err), 1u);
    EXPECT_EQ(result.status, 1);
  }
  for (const char* content : {"", "Point,E,N\n", "# nothing yet\n"}) {
    const ProgramResult shown = RunFieldbook({"show", "-"}, content);
    EXPECT_EQ(shown.err, "fieldbook: -: this isn't a points file: it holds no point\n");
    EXPECT_EQ(shown.status, 1);
  }
  // Points can be added there.
  const DataFolder folder;
  EXPECT_EQ(RunFieldbook({"edit", folder.Write("new.csv", "")}, "add A 1 2\nsave\n").status, 0);
  EXPECT_NE(folder.Read("new.csv").find("A,"), std::string::npos);
}

TEST(Program, SpeaksItalian) {
  const ProgramResult table = RunFieldbook({"show", kPoints, "--to", "m", "--lang", kItalian});
  EXPECT_NE(table.out.find("\nPunto      Est (m)     Nord (m)  Quota (m)  Descrizione\n"),
            std::string::npos)
      << table.out;
  EXPECT_EQ(CountLines(table.out), 26u);
  EXPECT_EQ(table.err, "");
  EXPECT_EQ(RunFieldbook({"angle", "10 30 0 O", "10 0 0 N", "--from", "dms", "--to", "dms", "--lon",
                          "--decimals", "0", "--lang=" + kItalian})
                .out,
            "10\u00B030'00\"O\n");
  EXPECT_EQ(RunFieldbook({"--lang", "it", "help", "area"}).out.find("Uso: fieldbook area"), 0u);
  EXPECT_EQ(RunFieldbook({"--nope", "--lang", kItalian}).err,
            "fieldbook: l'opzione --nope non esiste\nVedi: fieldbook --help\n");
  for (const char* command :
       {"show", "angle", "inverse", "polar", "area", "check", "tolerance", "recent", "plot", "send",
        "units", "edit", "system"}) {
    const std::string help = RunFieldbook({command, "--help", "--lang", kItalian}).out;
    EXPECT_EQ(help.find(std::string("Uso: fieldbook ") + command), 0u) << help;
  }
}

TEST(Program, HelpAndVersionAreOnStandardOutput) {
  const ProgramResult general = RunFieldbook({"--help"});
  EXPECT_EQ(general.out.find("Usage: fieldbook COMMAND"), 0u);
  EXPECT_EQ(general.status, 0);
  EXPECT_EQ(RunFieldbook({"help"}).out, general.out);
  EXPECT_EQ(RunFieldbook({"-v"}).out, RunFieldbook({"--version"}).out);
  for (const char* command :
       {"show", "angle", "inverse", "polar", "area", "check", "tolerance", "recent", "plot", "send",
        "units", "edit", "system"}) {
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
