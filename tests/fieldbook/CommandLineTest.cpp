#include "console/CommandLine.h"

#include "tests/TestText.h"

using console::Argument;
using console::CommandLine;
using console::Option;
using kelp::WString;

namespace {

CommandLine Parse(const std::vector<std::string>& texts) {
  std::vector<Argument> arguments;
  for (const std::string& text : texts) {
    arguments.push_back({WString::ConvertFromUtf8(text.c_str()), text});
  }
  return CommandLine(arguments);
}

std::string OperandsOf(const CommandLine& line) {
  std::string all;
  for (const Argument& operand : line.Operands())
    all += operand.text.ToUtf8().c_str() + std::string("|");
  return all;
}

TEST(CommandLine, OptionsStandAnywhereAndNegativeNumbersAreValues) {
  const CommandLine line =
      Parse({"--to", "dms", "angle", "-10.5", "--lat", "-.5", "-", "--from=deg", "x"});
  EXPECT_FALSE(line.Fault());
  EXPECT_EQ(line.Command(), WString(KTEXT("angle")));
  EXPECT_EQ(OperandsOf(line), "-10.5|-.5|-|x|");
  EXPECT_TRUE(line.Has(Option::Lat));
  EXPECT_FALSE(line.Has(Option::Lon));
  EXPECT_EQ(line.Value(Option::To)->text, WString(KTEXT("dms")));
  EXPECT_EQ(line.Value(Option::From)->path, "deg");
  EXPECT_EQ(line.Value(Option::Decimals), nullptr);
}

TEST(CommandLine, BehindTwoDashesNothingIsAnOption) {
  const CommandLine line = Parse({"show", "--", "--csv", "--", "-h"});
  EXPECT_FALSE(line.Fault());
  EXPECT_EQ(OperandsOf(line), "--csv|--|-h|");
  EXPECT_FALSE(line.Has(Option::Csv));
  EXPECT_EQ(OperandsOf(Parse({"show", "--lang", "--", "f"})), "f|")
      << "here it is the option's value";
}

TEST(CommandLine, TheFirstFaultIsKeptAndTheLanguageStillFound) {
  const CommandLine line = Parse({"--colour", "show", "--csv=1", "--lang", "it.po", "--to"});
  EXPECT_STREQ(line.Fault().Text().ToUtf8().c_str(), "there is no option --colour");
  ASSERT_NE(line.Value(Option::Lang), nullptr);
  EXPECT_STREQ(Parse({"--csv=1"}).Fault().Text().ToUtf8().c_str(), "--csv takes no value");
  EXPECT_STREQ(Parse({"--to"}).Fault().Text().ToUtf8().c_str(), "--to needs a value behind it");
}

}  // namespace
