#include "fieldbook/commands/Commands.h"

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

const LengthUnit& ChooseFileUnit(const CommandLine& line) {
  return Choose(line, Option::From, kLengthUnits, kLengthUnits[0]);
}

LengthStyle ChooseLengthStyle(const CommandLine& line) {
  const LengthUnit& unit = Choose(line, Option::To, kLengthUnits, kLengthUnits[0]);
  return {&unit, ChooseDecimals(line, unit.decimals),
          ChooseFraction(line, enumInchDecPrec::Sixteenths)};
}

void ComplainOfRows(const PointFile& points, const Argument& file, Console& console) {
  const WString name = Shown(file.text) + KTEXT(':');
  for (const RowFault& fault : points.faults) {
    const WString place = name.Concat(WString::ValueOf(fault.line)) + KTEXT(": ");
    console.Complain(place.Concat(fault.message.Text()));
  }
}

void ComplainOfFailure(const WString& what, Console& console) {
  console.Complain(WString(KTEXT("fieldbook: ")).Concat(what));
}

WString WithUnit(const WChar* head, const LengthUnit& unit) {
  return Message{KTEXT("{1} ({2})"), {kelp::Xlate(head), kelp::Xlate(unit.symbol)}}.Text();
}

}  // namespace fieldbook
