// fieldbook units, and how show follows the settings.
#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <utility>

#include "tests/fieldbook/RunProgram.h"

namespace {

const std::string kItalian = std::string(FIELDBOOK_DATA) + "/it.po";
const std::string kSettings = "Support/config_measunit.dat";
const std::string kOthers = "Support/fieldbook.ket";

// Runs on settings of its own.
class Units : public testing::Test {
 protected:
  ProgramResult Run(std::vector<std::string> arguments, const std::string& input = "") const {
    arguments.push_back("--data=" + Data());
    return RunFieldbook(arguments, input);
  }
  ProgramResult Set(std::vector<std::string> pairs) const {
    pairs.insert(pairs.begin(), {"units", "set"});
    return Run(pairs);
  }
  // The value that the table of units shows for a key.
  static std::string ValueIn(const std::string& table, const std::string& key) {
    const std::size_t row = table.find("\n" + key + " ");
    if (row == std::string::npos) return "no such row";
    const std::size_t begin = table.find_first_not_of(' ', row + 1 + key.size());
    return table.substr(begin, table.find(' ', begin) - begin);
  }
  std::string Data() const { return m_folder.PathOf("data").string(); }

  DataFolder m_folder;
};

TEST_F(Units, EveryKeyTakesItsValuesAndKeepsThem) {
  const std::vector<const char*> lengths = {"ft", "us-ft", "ft-in", "us-ft-in", "ch", "us-ch", "m"};
  // The default comes last.
  const std::pair<const char*, std::vector<const char*>> cases[] = {
      {"file-units", lengths},
      {"dist-units", lengths},
      {"ts-dist-units", lengths},
      {"area-units", {"ft2", "us-ft2", "ft-in2", "us-ft-in2", "m2"}},
      {"volume-units", {"ft3", "us-ft3", "ft-in3", "us-ft-in3", "yd3", "us-yd3", "m3"}},
      {"speed-units", {"imperial", "metric"}},
      {"coord-display-mode", {"north-east", "east-north"}},
      {"ts-angle-units", {"deg", "dms", "dms-blank", "dms-packed", "gon"}},
      {"angle-units", {"deg", "dms", "dms-blank", "dms-packed", "rad", "mil", "gon"}},
      {"lat-lon-angle-units", {"dms-blank", "dms-packed", "dms"}},
      {"temperature-units", {"celsius"}},
      {"pressure-units", {"mmhg"}},
      {"horiz-start-angle", {"east", "north"}},
      {"vert-angle", {"default"}},
      {"angle-dir", {"counter-clockwise", "clockwise"}},
      {"date-format", {"default"}},
      {"num-dist-dec", {"0", "9", "3"}},
      {"num-ts-dist-dec", {"4", "3"}},
      {"num-area-dec", {"4", "2"}},
      {"num-vol-dec", {"4", "2"}},
      {"num-speed-dec", {"4", "1"}},
      {"num-coord-dec", {"4", "3"}},
      {"num-quote-dec", {"4", "3"}},
      {"num-ts-angle-dec", {"5", "4"}},
      {"num-angle-dec", {"5", "4"}},
      {"num-lat-lon-angle-dec", {"4", "5"}},
      {"dist-inch-dec-prec", {"4", "16", "32", "64", "8"}},
      {"ts-dist-inch-dec-prec", {"16", "8"}},
      {"area-inch-dec-prec", {"16", "4"}},
      {"vol-inch-dec-prec", {"16", "4"}},
      {"coord-inch-dec-prec", {"16", "8"}},
      {"quote-inch-dec-prec", {"16", "8"}},
  };
  // One run sets the n-th value of every key, so that a key which sets another's field shows.
  for (std::size_t n = 0; n < 7; ++n) {
    std::vector<std::string> pairs;
    for (const auto& [key, values] : cases) {
      pairs.insert(pairs.end(), {key, values[std::min(n, values.size() - 1)]});
    }
    const ProgramResult set = Set(pairs);
    ASSERT_EQ(set.status, 0) << set.err;
    const std::string table = Run({"units"}).out;
    for (std::size_t i = 0; i < pairs.size(); i += 2) {
      EXPECT_EQ(ValueIn(table, pairs[i]), pairs[i + 1]) << pairs[i];
    }
  }
}

TEST_F(Units, ListenersHearWhatChangesOnce) {
  EXPECT_EQ(
      Set({"dist-units", "us-ft", "angle-dir", "counter-clockwise", "num-coord-dec", "2"}).out,
      "distance units: m -> us-ft\n"
      "direction of angles: clockwise -> counter-clockwise\n"
      "decimals of coordinates: 3 -> 2\n");
  EXPECT_EQ(Set({"angle-dir", "clockwise"}).out,
            "direction of angles: counter-clockwise -> clockwise\n")
      << "what CopyFrom leaves out";
  EXPECT_EQ(Set({"unit-system", "us-survey", "speed-units", "metric"}).out,
            "unit system: metric -> us-survey\n"
            "distance units, total station: m -> us-ft\n"
            "area units: m2 -> us-ft2\n"
            "volume units: m3 -> us-ft3\n");
  EXPECT_EQ(Set({"unit-system", "metric", "unit-system", "us-survey", "speed-units", "metric"}).out,
            "no setting changes\n");
  EXPECT_EQ(Set({"dist-units", "m", "--lang", kItalian}).out,
            "unit\xC3\xA0 di distanza: us-ft -> m\n");
}

TEST_F(Units, TheUnitSystemAloneIsHeardToo) {
  Set({"unit-system", "imperial"});
  Set({"unit-system", "metric", "dist-units", "ft", "ts-dist-units", "ft", "area-units", "ft2",
       "volume-units", "ft3", "speed-units", "imperial"});
  EXPECT_EQ(Set({"unit-system", "imperial"}).out, "unit system: metric -> imperial\n");
}

TEST_F(Units, ShowFollowsTheSettings) {
  const std::string row = "P,-20.5,1000,3.25,x\nQ,2,1\n";
  EXPECT_EQ(Run({"show", "-"}, row).out,
            "Read as point, easting, northing, elevation, description (as the settings say), in m "
            "(as the settings say).\n"
            "Point  Easting (m)  Northing (m)  Elevation (m)  Description\n"
            "P          -20.500      1000.000          3.250  x\n"
            "Q            2.000         1.000\n");
  Set({"dist-units", "us-ft-in", "coord-inch-dec-prec", "8", "quote-inch-dec-prec", "4",
       "coord-display-mode", "north-east"});
  // The order of the settings is that of files without heads too.
  const std::string north = "P,1000,-20.5,3.25,x\nQ,1,2\n";
  EXPECT_EQ(Run({"show", "-", "--csv"}, north).out,
            "Point,Northing (US ft-in),Easting (US ft-in),Elevation (US ft-in),Description\n"
            "P,\"3280'10\"\"0/8\",\"-67'3\"\"1/8\",\"10'8\"\"0/4\",x\n"
            "Q,\"3'3\"\"3/8\",\"6'6\"\"6/8\",,\n");
  Set({"dist-units", "ch", "num-coord-dec", "1", "num-quote-dec", "5"});
  EXPECT_EQ(Run({"show", "-", "--csv", "--lang", kItalian}, north).out,
            "Punto,Nord (ch),Est (ch),Quota (ch),Descrizione\nP,49.7,-1.0,0.16156,x\n"
            "Q,0.0,0.1,,\n");
  EXPECT_EQ(Run({"show", "-", "--csv", "--decimals", "0", "--columns", "P,E,N,Z"}, row).out,
            "Point,Northing (ch),Easting (ch),Elevation (ch),Description\nP,50,-1,0,x\n"
            "Q,0,0,,\n");
}

TEST_F(Units, FilesWithoutAUnitAreInThatOfTheSettings) {
  EXPECT_EQ(Set({"file-units", "us-ft", "dist-units", "us-ft"}).out,
            "units of files: m -> us-ft\ndistance units: m -> us-ft\n");
  const std::string row = "P,1766868.5,4000,3\n";
  const struct {
    std::string bytes;
    std::vector<std::string> options;
    const char* unit;
    const char* easting;
  } cases[] = {
      {row, {}, "in US ft (as the settings say)", "1766868.500"},
      {row, {"--from", "m"}, "in m (as --from says)", "5796801.070"},
      {"Point,E (ft),N\n" + row, {}, "in ft (as its heads say)", "1766864.966"},
      {"Point,E,N\n" + row, {}, "in US ft (as the settings say)", "1766868.500"},
  };
  for (const auto& [bytes, options, unit, easting] : cases) {
    std::vector<std::string> arguments = {"show", "-"};
    arguments.insert(arguments.end(), options.begin(), options.end());
    const std::string out = Run(arguments, bytes).out;
    EXPECT_NE(out.find(unit), std::string::npos) << out;
    EXPECT_NE(out.find(easting), std::string::npos) << out;
  }
  const std::string file = m_folder.Write("points.csv", row);
  const ProgramResult edit = Run({"edit", file}, "move P 0.5 0 0\nsave\n");
  EXPECT_NE(edit.out.find("Easting (US ft) 1766869.000"), std::string::npos) << edit.out;
  EXPECT_EQ(m_folder.Read("points.csv"), "P,1766869.000,4000.000,3.000,\n");
}

TEST_F(Units, ADamagedFileOfOtherSettingsIsToldAndSetAside) {
  Set({"file-units", "us-ft-in"});
  const std::string sound = m_folder.Read("data/" + kOthers);
  const std::pair<std::string, const char*> cases[] = {
      {"", "isn't a whole settings file"},
      {sound.substr(0, 1), "isn't a whole settings file"},
      {sound.substr(0, 11), "isn't a whole settings file"},
      {sound.substr(0, sound.size() - 10), "isn't a whole settings file"},  // "us-ft"
      {std::string("[Files]\nUnits=ft\n\0", 19), "isn't a whole settings file"},
      {"[Files]\nUnits=yd\n", "the settings have values that aren't known"},
  };
  for (const auto& [bytes, what] : cases) {
    m_folder.Write("data/" + kOthers, bytes);
    const ProgramResult show = Run({"show", "-"}, "P,1,2,3,x\n");
    EXPECT_NE(show.err.find(what), std::string::npos) << bytes << show.err;
    EXPECT_NE(show.err.find("the defaults stand for file-units"), std::string::npos) << show.err;
    EXPECT_NE(show.out.find("in m (as the settings say)"), std::string::npos) << show.out;
    EXPECT_EQ(Set({"file-units", "m"}).status, 0);
    EXPECT_EQ(Run({"units"}).err, "") << bytes;
  }
  EXPECT_EQ(m_folder.Read("data/" + kOthers + ".bak"), cases[4].first);
  // As somebody may have written it by hand.
  m_folder.Write("data/" + kOthers, "; mine\n[files]\nunits = ft\n");
  EXPECT_EQ(ValueIn(Run({"units"}).out, "file-units"), "ft");

  std::filesystem::remove(m_folder.PathOf("data/" + kOthers));
  std::filesystem::create_directory(m_folder.PathOf("data/" + kOthers));
  EXPECT_NE(Run({"units"}).err.find("it is a folder; the defaults stand for file-units"),
            std::string::npos);
  EXPECT_EQ(Set({"file-units", "ft", "dist-units", "ft"}).status, 1);
  EXPECT_EQ(ValueIn(Run({"units"}).out, "dist-units"), "m") << "all or nothing";
  EXPECT_EQ(Set({"dist-units", "ft"}).status, 0);
}

// What is shown as comma-separated values is a points file with the same points.
TEST_F(Units, WhatIsShownIsReadBackAsItWas) {
  for (const char* order : {"east-north", "north-east"}) {
    for (const char* unit : {"m", "ft", "us-ft", "ch", "us-ch", "ft-in", "us-ft-in"}) {
      Set({"dist-units", unit, "coord-display-mode", order, "num-coord-dec", "9", "num-quote-dec",
           "9", "coord-inch-dec-prec", "64", "quote-inch-dec-prec", "64"});
      const std::string once =
          Run({"show", "-", "--csv", "--columns", "P,E,N,Z,D"}, "P,1000,-20.5,3.25,\"x, y\"\n").out;
      const ProgramResult twice = Run({"show", "-", "--csv"}, once);
      EXPECT_EQ(twice.out, once);
      EXPECT_EQ(twice.err, "");
    }
  }
}

TEST_F(Units, WhatIsUnknownNamesWhatThereIsAndChangesNothing) {
  const std::pair<std::vector<std::string>, const char*> cases[] = {
      {{"num-dist-dec", "2", "dist-units", "yd"},
       "dist-units: \"yd\" isn't one of m, ft, us-ft, ft-in, us-ft-in, ch, us-ch"},
      {{"num-dist-dec", "10"}, "num-dist-dec: \"10\" isn't a whole number from 0 to 9"},
      {{"num-dist-dec", "-1"}, "num-dist-dec: \"-1\" isn't a whole number from 0 to 9"},
      {{"coord-inch-dec-prec", "3"}, "coord-inch-dec-prec: \"3\" isn't one of 4, 8, 16, 32, 64"},
      {{"num-dist-dec", "2", "dist-units"}, "dist-units needs a value behind it"},
      {{}, "units set takes KEY and VALUE, at least once"},
  };
  for (const auto& [pairs, error] : cases) {
    const ProgramResult result = Set(pairs);
    EXPECT_EQ(result.err, std::string("fieldbook: ") + error + "\nTry: fieldbook units --help\n");
    EXPECT_EQ(result.status, 1);
  }
  const std::string error = Set({"distance", "m"}).err;
  EXPECT_EQ(
      error.find("fieldbook: there is no setting \"distance\", only unit-system, file-units, "),
      0u);
  EXPECT_EQ(Run({"units", "reset"}).status, 1);
  EXPECT_FALSE(std::filesystem::exists(Data())) << "a folder is made for what is saved";
}

TEST_F(Units, WhatCannotBeSavedIsOneLineAndTheOldSettingsStay) {
  Set({"dist-units", "ft"});
  const std::string old = m_folder.Read("data/" + kSettings);
  const std::filesystem::path path = m_folder.PathOf("data/" + kSettings);
  std::filesystem::permissions(path, std::filesystem::perms::owner_read);
  const ProgramResult result = Set({"dist-units", "ch"});
  EXPECT_EQ(result.out, "");
  EXPECT_EQ(result.err.find("fieldbook: the settings can't be saved in "), 0u) << result.err;
  EXPECT_EQ(std::count(result.err.begin(), result.err.end(), '\n'), 1);
  EXPECT_EQ(result.status, 1);
  EXPECT_EQ(m_folder.Read("data/" + kSettings), old);
  EXPECT_EQ(ValueIn(Run({"units"}).out, "dist-units"), "ft");
  std::filesystem::permissions(path, std::filesystem::perms::owner_all);

  const std::string file = m_folder.Write("file", "x");
  const ProgramResult below =
      RunFieldbook({"units", "set", "dist-units", "m", "--data", file + "/d"});
  EXPECT_EQ(below.err.find("fieldbook: the settings can't be saved in "), 0u) << below.err;
  EXPECT_EQ(below.status, 1);
  EXPECT_EQ(RunFieldbook({"units", "--data="}).err,
            "fieldbook: there is no folder for the settings; name one with --data DIR\n");
}

TEST_F(Units, ASettingsFileOfAnyContentIsTaken) {
  Set({"dist-units", "ft", "num-coord-dec", "1"});
  const std::string sound = m_folder.Read("data/" + kSettings);
  std::mt19937 random(3);
  for (int round = 0; round < 24; ++round) {
    // Cut short, changed in places, or anything.
    std::string bytes = sound;
    if (round % 3 == 0) bytes.resize(random() % bytes.size());
    if (round % 3 == 1) bytes[7 + random() % (bytes.size() - 7)] = static_cast<char>(random());
    if (round % 3 == 2) {
      bytes.resize(random() % 400);
      for (char& byte : bytes) byte = static_cast<char>(random());
    }
    m_folder.Write("data/" + kSettings, bytes);
    const ProgramResult show = Run({"show", "-"}, "P,1,2,3,x\n");
    EXPECT_EQ(show.status, 0) << round;
    EXPECT_EQ(show.out.find("Read as "), 0u) << round << show.out;
    if (round % 3 != 1) {
      EXPECT_NE(show.err.find("isn't a whole settings file; the defaults stand for all settings\n"),
                std::string::npos)
          << round;
      EXPECT_NE(show.out.find("in m (as the settings say)"), std::string::npos);
    }
    EXPECT_EQ(Run({"units"}).status, 0) << round;
  }
  // The value that isn't known gives its default, the others stay.
  std::string bytes = sound;
  bytes[7 + 4] = 77;
  m_folder.Write("data/" + kSettings, bytes);
  const ProgramResult show = Run({"show", "-", "--csv"}, "P,1,2,3,x\n");
  EXPECT_EQ(show.out,
            "Point,Easting (m),Northing (m),Elevation (m),Description\nP,1.0,2.0,3.000,x\n");
  EXPECT_EQ(show.err.find(
                "the settings have values that aren't known; the defaults stand for dist-units\n"),
            0u);
}

}  // namespace
