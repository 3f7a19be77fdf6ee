// fieldbook edit on a terminal.
#include <gtest/gtest.h>
#include <signal.h>

#include "tests/fieldbook/RunProgram.h"

namespace {

const std::string kUp = "\x1B[A";
const std::string kLeft = "\x1B[D";
const std::string kCtrlC = "\x03";
const std::string kAsks = "quit again to drop them";

class Terminal : public testing::Test {
 protected:
  TerminalResult Type(const std::vector<Typing>& typing, int columns = 80,
                      int lastSignal = 0) const {
    return TypeIntoFieldbook({"edit", m_file}, typing, columns, lastSignal);
  }

  DataFolder m_folder;
  const std::string m_file = m_folder.Write("p.csv",
                                            "P1,1,2,3\nP10,1,2,3\nP2,1,2,3\n\"Mill \"\"A\"\"\",5,5,"
                                            "5\n\xC3\x84pfel,7,7,7\n\xC3\x84pfelchen,7,7,7\n");
};

TEST_F(Terminal, TabCompletesAndTheArrowBringsBack) {
  const TerminalResult result = Type({
      {"mo\t", "move "},
      {"P\t", "P1  P2  P10"},  // as people count
      {"10 1 0 0\n", "Easting (m) 2.000"},
      {kUp + "\n", "Easting (m) 3.000"},
      {kUp + kUp + kLeft + kLeft + kLeft + kLeft +
           "\x7F"
           "2\n",
       "Easting (m) 5.000"},
      {"move M\t1 0 0\n", "Mill \"A\"  Easting (m) 6.000"},
      {"set \xC3\x84\t\t", "\xC3\x84pfel  \xC3\x84pfelchen"},
      {"c\tno\t9\n", "\xC3\x84pfelchen  Easting (m) 7.000  Northing (m) 9.000"},
      {"undo a\t\n", "Northing (m) 7.000"},
      {"undo\n", "nothing to undo"},
      {"\x04", "\n"},
  });
  EXPECT_EQ(result.status, 2);
  EXPECT_TRUE(result.isEchoing);
}

TEST_F(Terminal, CtrlCAsksWhatQuitAsks) {
  const Typing move = {"move P1 1 0 0\n", "Easting (m) 2.000"};
  for (const std::string& first :
       {kCtrlC, std::string("half a line") + kCtrlC, std::string("quit\n")}) {
    for (const std::string& second : {kCtrlC, std::string("quit\n")}) {
      const TerminalResult result = Type({move, {first, kAsks}, {second, "\n"}});
      EXPECT_EQ(result.status, 0);
      EXPECT_TRUE(result.isEchoing);
    }
  }
  // Any other command takes the question back.
  Type({move, {kCtrlC, kAsks}, {"help\n", "The commands"}, {"quit\n", kAsks}, {"quit\n", "\n"}});
}

TEST_F(Terminal, SignalsEndItWithTheTerminalAsItWas) {
  for (const int signal : {SIGTERM, SIGHUP}) {
    const TerminalResult result = Type({{"mo", "mo"}}, 80, signal);
    EXPECT_EQ(result.status, 128 + signal);
    EXPECT_TRUE(result.isEchoing);
  }
}

TEST_F(Terminal, LinesLongerThanANarrowTerminalAreRead) {
  const TerminalResult result =
      Type({{"move P1 100 0 0\n", "101.000"}, {"undo\n", "1.000"}, {"quit\n", "\n"}}, 12);
  EXPECT_EQ(result.status, 0);
}

}  // namespace
