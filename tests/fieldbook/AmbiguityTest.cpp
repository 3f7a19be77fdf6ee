// What could mean two things is refused with both, wherever it is typed.
#include <gtest/gtest.h>

#include "tests/fieldbook/RunProgram.h"

namespace {

const std::string kFile = "P,0,0,0\nQ,1,1,1\n";

TEST(Ambiguity, EveryCommandNamesBothReadings) {
  const DataFolder folder;
  const std::string data = "--data=" + folder.PathOf("data").string();
  RunFieldbook(
      {"units", "set", "angle-units", "dms", "dist-units", "ft-in", "file-units", "ft-in", data});
  const std::string file = folder.Write("p.csv", kFile);
  const std::pair<std::vector<std::string>, const char*> cases[] = {
      {{"angle", "10.3", "--from", "dms-packed", "--to", "deg"},
       "10.3: this could be 10.03 or 10.30"},
      {{"angle", "10.5", "--from", "dms", "--to", "deg"},
       "10.5: this could be 10.5\xC2\xB0 or 10\xC2\xB0"
       "5'"},
      {{"angle", "45d30m15s", "--lat", "--from", "dms", "--to", "deg"},
       "45d30m15s: this could be \" or S"},
      {{"polar", file, "P", "10.5", "1"},
       "direction \"10.5\": this could be 10.5\xC2\xB0 or 10\xC2\xB0"
       "5'"},
      {{"polar", file, "P", "45-30", "1 1/2"},
       "distance \"1 1/2\": this could be 1 1/2' or 1'1/2\""},
      {{"show", file, "--within", "0,0,1/2,1"}, "--within \"1/2\": this could be 1/2' or 1/2\""},
      {{"check", file, "--tolerance", "12-1/2"},
       "--tolerance \"12-1/2\": this could be 12'0 1/2\" or 12 1/2"},
      {{"tolerance", "1/2"}, "tolerance \"1/2\": this could be 1/2' or 1/2\""},
      {{"show", folder.Write("h.csv", "P,1 1/2,2\nQ,1,1\n")},
       "h.csv:1: easting \"1 1/2\": this could be 1 1/2' or 1'1/2\""},
  };
  for (auto [arguments, error] : cases) {
    arguments.push_back(data);
    const ProgramResult result = RunFieldbook(arguments);
    EXPECT_NE(result.err.find(error), std::string::npos) << error << "\n" << result.err;
    EXPECT_NE(result.status, 0) << error;
  }
  // Of one meaning.
  EXPECT_EQ(RunFieldbook({"polar", file, "P", "45-30-15.5", "12-6-1/2", data}).status, 0);
}

// Blanks part the words of a line, so that a fraction may be a word of its own or not.
TEST(Ambiguity, AFractionBehindANumberIsNoWordOfItsOwn) {
  const DataFolder folder;
  const std::pair<const char*, const char*> cases[] = {
      {"move P 1 1/2 0", "dN \"1/2\": this could be a value of its own or part of \"1 1/2\""},
      {"shift 0 1 \xC2\xBD", "dH \"\xC2\xBD\": this could be"},
      {"add Z 1 1/2 2", "N \"1/2\": this could be"},
      {"add Z 1 2 3 1/2", "CODE \"1/2\": this could be"},
      {"set P up 3 1/2", "up \"1/2\": this could be"},
      {"set P up 3 x", "set takes P WHAT VALUE"},
      {"set P code a b", "set takes P WHAT VALUE"},
      {"set P name a b", "set takes P WHAT VALUE"},
      {"move P \"1 1/2\" 0 0", ""},
      {"move P 1 m 1/2 0", ""},
      {"move P 0.5 1/2 0", ""},
      {"add Z 1 2 3 2x4", ""},
  };
  for (const auto& [command, error] : cases) {
    const std::string file = folder.Write("p.csv", kFile);
    const ProgramResult result =
        RunFieldbook({"edit", file, "--no-backup"}, std::string(command) + "\nsave\n");
    EXPECT_NE(result.err.find(error), std::string::npos) << command << result.err;
    EXPECT_EQ(result.err.empty(), *error == 0) << command << result.err;
    EXPECT_EQ(result.out.find("Easting") == std::string::npos, *error != 0) << command;
  }
}

}  // namespace
