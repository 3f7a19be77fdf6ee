#include "fieldbook/commands/Commands.h"

#include <algorithm>

#include "fieldbook/values/Scanner.h"
#include "kelp0lang/Translate.h"

namespace fieldbook {

void FailOnChoice(const WChar* name, const WString& given, const WString& choices) {
  throw UsageFailure({KTEXT("{1}: \"{2}\" isn't one of {3}"), {name, Quoted(given), choices}});
}

int ReadDecimals(const WChar* name, const WString& text) {
  Scanner scan(ViewOf(text));
  const std::optional<int> decimals = scan.TakeWhole();
  if (decimals && *decimals <= kMostDecimals && scan.AtEnd()) return *decimals;
  throw UsageFailure({KTEXT("{1}: \"{2}\" isn't a whole number from 0 to {3}"),
                      {name, Quoted(text), WString::ValueOf(kMostDecimals)}});
}

int ChooseDecimals(const CommandLine& line, int preset) {
  const Argument* given = line.Value(Option::Decimals);
  return given == nullptr ? preset : ReadDecimals(NameOf(Option::Decimals), given->text);
}

enumInchDecPrec ChooseFraction(const CommandLine& line, enumInchDecPrec preset) {
  const Fraction* given = FindChoice(line, Option::Denominator, kFractions);
  return given == nullptr ? preset : given->precision;
}

LengthStyle ChooseLengthStyle(const CommandLine& line) {
  const LengthUnit& unit = Choose(line, Option::To, kLengthUnits, kLengthUnits[0]);
  return StyleIn(unit, line, unit.decimals, enumInchDecPrec::Sixteenths);
}

LengthStyle StyleIn(const LengthUnit& unit, const CommandLine& line, int decimals,
                    enumInchDecPrec fraction) {
  for (const Option option : {Option::Denominator, Option::Reduced}) {
    if (unit.inches || !line.Has(option)) continue;
    throw UsageFailure({KTEXT("{1} acts on feet and inches alone, and the lengths are in {2}"),
                        {NameOf(option), unit.name}});
  }
  if (unit.inches && line.Has(Option::Decimals)) {
    throw UsageFailure({KTEXT("{1} doesn't act on feet and inches; {2} does"),
                        {NameOf(Option::Decimals), NameOf(Option::Denominator)}});
  }
  return {&unit, ChooseDecimals(line, decimals), ChooseFraction(line, fraction),
          line.Has(Option::Reduced)};
}

LengthStyle ChooseDistanceStyle(const CMeasUnitSystem& settings, const CommandLine& line) {
  if (line.Has(Option::To)) return ChooseLengthStyle(line);
  return StyleIn(UnitOf(settings.GetDistUnits()), line, settings.GetNumDistDec(),
                 settings.GetDistInchDecPrec());
}

void RequireFiles(const CommandLine& line) {
  const std::vector<Argument>& files = line.Operands();
  if (files.empty()) throw UsageFailure({KTEXT("{1} takes at least one FILE"), {line.Command()}});
  const auto inputs = std::count_if(files.begin(), files.end(), [](const Argument& file) {
    return file.text == WString(KTEXT("-"));
  });
  if (inputs > 1) throw UsageFailure({KTEXT("standard input can be one FILE only"), {}});
}

std::size_t ChooseLimit(const CommandLine& line, std::size_t preset) {
  const Argument* given = line.Value(Option::Limit);
  if (given == nullptr) return preset;
  Scanner scan(ViewOf(given->text));
  const std::optional<int> limit = scan.TakeWhole();
  if (limit && scan.AtEnd()) return static_cast<std::size_t>(*limit);
  throw UsageFailure({KTEXT("{1}: \"{2}\" isn't a number of points"),
                      {NameOf(Option::Limit), Quoted(given->text)}});
}

void ComplainOfRows(const FaultList& faults, const Argument& file, Console& console) {
  const WString name = Shown(file.text) + KTEXT(':');
  for (const RowFault& fault : faults.Told()) {
    const WString place = name.Concat(WString::ValueOf(fault.line)) + KTEXT(": ");
    console.Complain(place.Concat(fault.message.Text()));
  }
  for (const FaultList::Rest& rest : faults.Rests()) {
    console.Complain(Message{KTEXT("{1}: {2} more rows with a fault like that of line {3}"),
                             {Shown(file.text), WString::ValueOf(static_cast<int>(rest.count)),
                              WString::ValueOf(rest.likeLine)}}
                         .Text());
  }
}

WString WithUnit(const WChar* head, const LengthUnit& unit) {
  return Message{KTEXT("{1} ({2})"), {kelp::Xlate(head), kelp::Xlate(unit.symbol)}}.Text();
}

}  // namespace fieldbook
