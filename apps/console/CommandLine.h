// The command line: a command, its operands and its options, in any order.
//
//   fieldbook show points.csv --to us-ft
//   fieldbook --lang=it.po angle -10.5 --from deg --to dms
//
// An option's value stands behind it, or in it behind an equals sign. A minus sign with a number
// behind it begins a value, not an option; "-" alone is an operand, and behind "--" everything is.
// Of an option that comes twice the last one counts, but where all of them do.
#pragma once

#include <filesystem>
#include <vector>

#include "console/Text.h"

namespace console {

// One argument: its text, and the same as a name of a file, with the bytes that the system gave.
struct Argument {
  WString text;
  std::filesystem::path path;
};

enum class Option {
  From,
  Columns,
  To,
  Decimals,
  Denominator,
  Reduced,
  Csv,
  Points,
  Sort,
  Within,
  Limit,
  Tolerance,
  Output,
  NoBackup,
  Field,
  Lat,
  Lon,
  Bearing,
  Progress,
  Verbose,
  Json,
  Data,
  Lang,
  Help,
  Version
};
inline constexpr int kOptionCount = 25;

class CommandLine {
 public:
  explicit CommandLine(const std::vector<Argument>& arguments);

  // The first operand; empty if there is none.
  const WString& Command() const { return m_command; }
  // The operands behind it.
  const std::vector<Argument>& Operands() const { return m_operands; }
  bool Has(Option option) const { return !Values(option).empty(); }
  // The option's value; null if the option wasn't given.
  const Argument* Value(Option option) const;
  // The values of an option that may come several times, in their order.
  const std::vector<Argument>& Values(Option option) const { return m_options[Index(option)]; }
  // The first thing that is wrong with the line itself, if any.
  const Message& Fault() const { return m_fault; }

 private:
  static int Index(Option option) { return static_cast<int>(option); }
  // Takes an option, and the argument behind it where that is its value. Gives how many it took.
  std::size_t TakeOption(const std::vector<Argument>& arguments, std::size_t at);
  void TakeOperand(const Argument& argument);
  void SetFault(const WChar* source, std::vector<WString> values);

  WString m_command;
  bool m_hasCommand = false;
  std::vector<Argument> m_operands;
  std::vector<Argument> m_options[kOptionCount];
  Message m_fault;
};

// The name of an option, with its dashes.
const WChar* NameOf(Option option);

}  // namespace console
