// fieldbook edit, as a script drives it.
#include <gtest/gtest.h>

#include <utility>

#include "tests/fieldbook/RunProgram.h"

namespace {

namespace fs = std::filesystem;

const std::string kItalian = std::string(FIELDBOOK_DATA) + "/it.po";

class Edit : public testing::Test {
 protected:
  ProgramResult Run(const std::string& input, std::vector<std::string> options = {}) const {
    options.insert(options.begin(), {"edit", m_path, "--columns", "P,N,E,Z,D", "--no-backup"});
    ProgramResult result = RunFieldbook(options, input);
    // The layout, which is the same in all tests.
    result.out.erase(0, result.out.find('\n') + 1);
    return result;
  }
  std::string Saved() const { return m_folder.Read("points.csv"); }
  std::size_t Files() const {
    return static_cast<std::size_t>(
        std::distance(fs::directory_iterator(m_folder.PathOf("")), fs::directory_iterator()));
  }

  const std::string m_start = "# head\nA,10,20,30,wall\nB,11,21,,\n";
  DataFolder m_folder;
  std::string m_path = m_folder.Write("points.csv", m_start);
};

TEST_F(Edit, ChangesAreCarriedOutAndSaved) {
  const ProgramResult result = Run(
      "\xEF\xBB\xBFmove A 1 -2 0,5\r\n\n# a comment\nrename B \"B 2\"\nmove \"B 2\" .5 0 0\nlist\n"
      "save\n");
  EXPECT_EQ(result.out,
            "A  Easting (m) 21.000  Northing (m) 8.000  Elevation (m) 30.500\n"
            "B 2  Easting (m) 21.000  Northing (m) 11.000\n"
            "B 2  Easting (m) 21.500  Northing (m) 11.000\n"
            "Point  Easting (m)  Northing (m)  Elevation (m)  Description\n"
            "A           21.000         8.000         30.500  wall\n"
            "B 2         21.500        11.000\n"
            "saved in " +
                m_path + "\n");
  EXPECT_EQ(result.err, "");
  EXPECT_EQ(result.status, 0);
  EXPECT_EQ(Saved(), "# head\nA,8.000,21.000,30.500,wall\nB 2,11.000,21.500,,\n");
  EXPECT_EQ(Files(), 1u) << "nothing stays beside the file";
}

TEST_F(Edit, AGroupIsOneStep) {
  const ProgramResult result =
      Run("move B 1 0 0\n"
          "begin \"new names\"\nmove A 1 1 1\nrename A C\nmove C 1 1 1\nrename B A\ndelete C\nend\n"
          "undo\nredo\nundo\nundo\nredo\nsave\n");
  EXPECT_EQ(result.out,
            "B  Easting (m) 22.000  Northing (m) 11.000\n"
            "C is deleted\nA  Easting (m) 22.000  Northing (m) 11.000\n"
            "undone: new names\nA  Easting (m) 20.000  Northing (m) 10.000  Elevation (m) "
            "30.000\nB  Easting (m) 22.000  Northing (m) 11.000\n"
            "redone: new names\nC is deleted\nA  Easting (m) 22.000  Northing (m) 11.000\n"
            "undone: new names\nA  Easting (m) 20.000  Northing (m) 10.000  Elevation (m) "
            "30.000\nB  Easting (m) 22.000  Northing (m) 11.000\n"
            "undone: move B 1 0 0\nB  Easting (m) 21.000  Northing (m) 11.000\n"
            "redone: move B 1 0 0\nB  Easting (m) 22.000  Northing (m) 11.000\n"
            "saved in " +
                m_path + "\n");
  EXPECT_EQ(result.status, 0) << result.err;
  EXPECT_EQ(Saved(), "# head\nA,10.000,20.000,30.000,wall\nB,11.000,22.000,,\n");
}

TEST_F(Edit, WhatCannotBeDoneIsReportedWithItsLineAndTheRestGoesOn) {
  const std::pair<const char*, const char*> cases[] = {
      {"jump A",
       "there is no command \"jump\", only add, move, shift, set, rename, delete, begin, end, "
       "undo, redo, "
       "list, save, help, quit"},
      {"move A 1 1", "move takes P dE dN dH"},
      {"list all", "list takes nothing behind it"},
      {"move X 1 1 1", "there is no point \"X\""},
      {"move A 1 y 1", "dN \"y\": not a number"},
      {"move A 1 1 5e8", "out of range"},
      {"move B 1 1 1", "the point \"B\" has no elevation"},
      {"rename A B", "there is a point \"B\" already"},
      {"rename A \" \"", "a point can't be without a name"},
      {"delete \"A", "a quote isn't closed"},
      {"undo", "there is nothing to undo"},
      {"redo", "there is nothing to redo"},
      {"end", "no group is open"},
  };
  std::string input, errors;
  int number = 0;
  for (const auto& [line, error] : cases) {
    input += std::string(line) + '\n';
    errors += "-:" + std::to_string(++number) + ": " + error + '\n';
  }
  input += "begin g\ndelete A\nundo\nsave\nbegin h\nend\nsave\n";
  for (const int line : {16, 17, 18}) {
    errors += "-:" + std::to_string(line) + ": the group \"g\" is open; end it first\n";
  }
  const ProgramResult result = Run(input);
  EXPECT_EQ(result.err, errors);
  EXPECT_EQ(result.status, 2);
  EXPECT_EQ(Saved(), "# head\nB,11.000,21.000,,\n");
}

TEST_F(Edit, UnsavedChangesAreReported) {
  EXPECT_EQ(Run("move A 1 0 0\nundo\n").err, "");
  EXPECT_EQ(Run("list\nquit\nbogus\n").err, "");
  const ProgramResult result = Run("move A 1 0 0\nquit\nsave\n", {"--lang", kItalian});
  EXPECT_EQ(result.err, m_path + ": le modifiche non sono salvate\n");
  EXPECT_EQ(result.status, 2);
  const ProgramResult open = Run("begin g\ndelete A\n");
  EXPECT_EQ(open.err, "the group \"g\" isn't ended; it ends here\n" + m_path +
                          ": the changes aren't saved\n");
  EXPECT_EQ(open.status, 2);
  EXPECT_EQ(Saved(), m_start);
}

TEST_F(Edit, LengthsAreInTheUnitOfTheFileOrInTheirOwn) {
  const ProgramResult result =
      Run("move A 1'6\"0/8 \"-6\"\"\" 0\nmove B 0.3048 m 1 us-ft 0\nsave\n", {"--from", "ft-in"});
  EXPECT_EQ(result.err, "");
  EXPECT_EQ(result.out,
            "A  Easting (ft-in) 21'6\"0/8  Northing (ft-in) 9'6\"0/8  Elevation (ft-in) 30'0\"0/8\n"
            "B  Easting (ft-in) 22'0\"0/8  Northing (ft-in) 12'0\"0/8\nsaved in " +
                m_path + "\n");
  EXPECT_EQ(Saved(), "# head\nA,9.500,21.500,30.000,wall\nB,12.000002000004,22.000,,\n");
}

TEST_F(Edit, PointsAreAddedSetAndShifted) {
  const ProgramResult result =
      Run("add C 1 ft 2 3 \"a, b\"\nset C east 5\nset C north 1 ft\nset C up \"\"\nset C code x\n"
          "set B name D\nshift 1 2 3\nundo all\nredo\nsave\n");
  EXPECT_EQ(result.err, "");
  EXPECT_EQ(Saved(),
            "# head\nA,10.000,20.000,30.000,wall\nB,11.000,21.000,,\n"
            "C,2.000,0.3048,3.000,\"a, b\"\n");
  const std::pair<const char*, const char*> faults[] = {
      {"add A 1 2", "there is a point \"A\" already"},
      {"add X 1 \"\"", "N is missing"},
      {"add X 1 2 3 code 4", "add takes P E N [H [CODE]]"},
      {"set A height 1", "set: \"height\" isn't one of east, north, up, name, code"},
      {"set A east \"\"", "east is missing"},
      {"shift 5e8 0 0", "out of range"},
      {"undo some", "undo takes [all]"},
  };
  for (const auto& [line, fault] : faults) {
    EXPECT_EQ(Run(line).err, std::string("-:1: ") + fault + "\n");
  }
}

TEST_F(Edit, TheFileAsItWasIsKeptOnce) {
  ProgramResult result = RunFieldbook({"edit", m_path}, "move A 1 0 0\nsave\nmove A 1 0 0\nsave\n");
  EXPECT_EQ(result.status, 0) << result.err;
  EXPECT_EQ(m_folder.Read("points.csv.bak"), m_start);
  EXPECT_EQ(Saved(), "# head\nA,12.000,20.000,30.000,wall\nB,11.000,21.000,,\n");
  m_folder.Write("points.csv", "A;1;2\n");
  result = RunFieldbook({"edit", m_path}, "move A 1 0 0\nsave\nsave\n");
  EXPECT_EQ(m_folder.Read("points.csv.bak"), "A;1;2\n");
  const std::string note = "the fields are separated by commas now\n";
  EXPECT_EQ(result.out.find(note), result.out.rfind(note));
  EXPECT_NE(result.out.find(note), std::string::npos);
}

TEST_F(Edit, WhatCannotBeReadIsNotWrittenOver) {
  const std::string bytes = "A,1,2,3,x\nB,1,zwei,3,x\n";
  m_folder.Write("points.csv", bytes);
  const std::string other = m_path.substr(0, m_path.rfind("points")) + "per\xC3\xB2.csv";
  const std::string full = m_folder.Write("full.csv", "x");
  const std::string refused = m_path +
                              " holds what can't be read and isn't written over; save under "
                              "another name\n";
  const ProgramResult result = Run("move A 1 1 1\nsave\nsave \"" + m_path + "\"\nsave \"" + full +
                                   "\"\nsave \"" + other + "\"\nsave \"" + other + "\"\n");
  const std::string without = other + " is without what couldn't be read in " + m_path + "\n";
  EXPECT_EQ(result.err, m_path + ":2: easting \"zwei\": not a number\n-:2: " + refused +
                            "-:3: " + refused + "-:4: " + full +
                            " is there already; save under another name\n" + without + without);
  EXPECT_EQ(result.status, 2);
  EXPECT_EQ(Saved(), bytes);
  EXPECT_EQ(m_folder.Read("full.csv"), "x");
  EXPECT_EQ(m_folder.Read("per\xC3\xB2.csv"), "A,2.000,3.000,4.000,x\n");
}

TEST_F(Edit, AFileThatCannotBeWrittenStays) {
  fs::permissions(m_folder.PathOf("points.csv"), fs::perms::owner_read);
  const ProgramResult result =
      Run("delete A\nsave\nsave \"" + m_folder.PathOf("no/points.csv").string() + "\"\n");
  fs::permissions(m_folder.PathOf("points.csv"), fs::perms::owner_all);
  EXPECT_EQ(result.err, "-:2: " + m_path + ": access is denied\n-:3: " +
                            m_folder.PathOf("no/points.csv").string() +
                            ": there is no such file\n" + m_path + ": the changes aren't saved\n");
  EXPECT_EQ(result.status, 2);
  EXPECT_EQ(Saved(), m_start);
  EXPECT_EQ(Files(), 1u);
}

}  // namespace
