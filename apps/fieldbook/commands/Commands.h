// The commands, and what they have in common.
#pragma once

#include "console/Program.h"
#include "fieldbook/points/PointFile.h"
#include "fieldbook/values/Length.h"
#include "kelp0lang/MeasUnitSystem.h"

namespace fieldbook {

// Every command throws Failure when it can't go on.
Status ShowCommand(const CommandLine& line, Console& console);
Status AngleCommand(const CommandLine& line, Console& console);
Status InverseCommand(const CommandLine& line, Console& console);
Status PolarCommand(const CommandLine& line, Console& console);
Status AreaCommand(const CommandLine& line, Console& console);
Status PlotCommand(const CommandLine& line, Console& console);
Status CheckCommand(const CommandLine& line, Console& console);
Status ToleranceCommand(const CommandLine& line, Console& console);
Status RecentCommand(const CommandLine& line, Console& console);

Status SendCommand(const CommandLine& line, Console& console);
Status UnitsCommand(const CommandLine& line, Console& console);
Status ServiceCommand(const CommandLine& line, Console& console);
Status EditCommand(const CommandLine& line, Console& console);
Status SystemCommand(const CommandLine& line, Console& console);

extern const WChar* const kShowHelp;
extern const WChar* const kAngleHelp;
extern const WChar* const kInverseHelp;
extern const WChar* const kPolarHelp;
extern const WChar* const kAreaHelp;
extern const WChar* const kPlotHelp;
extern const WChar* const kCheckHelp;
extern const WChar* const kToleranceHelp;
extern const WChar* const kRecentHelp;

extern const WChar* const kSendHelp;
extern const WChar* const kUnitsHelp;
extern const WChar* const kServiceHelp;
extern const WChar* const kEditHelp;
extern const WChar* const kSystemHelp;

// "--to: "yd" isn't one of m, ft, ...".
[[noreturn]] void FailOnChoice(const WChar* name, const WString& given, const WString& choices);

// The entry of a table whose name an option gives; null where the option isn't given.
template <class Entry, std::size_t N>
const Entry* FindChoice(const CommandLine& line, Option option, const Entry (&entries)[N]) {
  const Argument* given = line.Value(option);
  if (given == nullptr) return nullptr;
  for (const Entry& entry : entries) {
    if (given->text.Compare(entry.name) == 0) return &entry;
  }
  FailOnChoice(NameOf(option), given->text, NamesOf(entries));
}

template <class Entry, std::size_t N>
const Entry& Choose(const CommandLine& line, Option option, const Entry (&entries)[N],
                    const Entry& preset) {
  const Entry* choice = FindChoice(line, option, entries);
  return choice != nullptr ? *choice : preset;
}

template <class Entry, std::size_t N>
const Entry& RequireChoice(const CommandLine& line, Option option, const Entry (&entries)[N]) {
  const Entry* choice = FindChoice(line, option, entries);
  if (choice != nullptr) return *choice;
  throw UsageFailure(
      {KTEXT("{1} is missing; it takes one of {2}"), {NameOf(option), NamesOf(entries)}});
}

inline constexpr int kMostDecimals = 9;
// The number of decimals that stands behind the option or setting of this name.
int ReadDecimals(const WChar* name, const WString& text);
// How many decimals --decimals asks for, and which fraction --denominator.
int ChooseDecimals(const CommandLine& line, int preset);
enumInchDecPrec ChooseFraction(const CommandLine& line, enumInchDecPrec preset);
// A style by --decimals, --denominator and --reduced. Throws UsageFailure where one of these can't
// act on the unit.
LengthStyle StyleIn(const LengthUnit& unit, const CommandLine& line, int decimals,
                    enumInchDecPrec fraction);
// How lengths are to be shown, by --to, --decimals and --denominator.
LengthStyle ChooseLengthStyle(const CommandLine& line);
// The same for distances, by the settings where --to doesn't say it.
LengthStyle ChooseDistanceStyle(const CMeasUnitSystem& settings, const CommandLine& line);

// Throws UsageFailure unless the operands are files, one at most of them standard input.
void RequireFiles(const CommandLine& line);
// How many --limit lets through.
std::size_t ChooseLimit(const CommandLine& line, std::size_t preset);

// Complains of the rows that can't be read.
void ComplainOfRows(const FaultList& faults, const Argument& file, Console& console);

// A head with its unit: "Northing (m)".
WString WithUnit(const WChar* head, const LengthUnit& unit);

}  // namespace fieldbook
