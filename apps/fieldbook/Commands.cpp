#include "Commands.h"

#include "Scanner.h"
#include "kelp0lang/Translate.h"

namespace fieldbook {
namespace {

constexpr int kMostDecimals = 9;

struct Fraction {
  const WChar* name;
  enumInchDecPrec precision;
};

constexpr Fraction kFractions[] = {
    {KTEXT("4"), enumInchDecPrec::Quarters},      {KTEXT("8"), enumInchDecPrec::Eighths},
    {KTEXT("16"), enumInchDecPrec::Sixteenths},   {KTEXT("32"), enumInchDecPrec::ThirtySeconds},
    {KTEXT("64"), enumInchDecPrec::SixtyFourths},
};

}  // namespace

void FailOnChoice(Option option, const WString& given, const WString& choices) {
  throw UsageFailure(
      {KTEXT("{1}: \"{2}\" isn't one of {3}"), {NameOf(option), Quoted(given), choices}});
}

int ChooseDecimals(const CommandLine& line, int preset) {
  const Argument* given = line.Value(Option::Decimals);
  if (given == nullptr) return preset;
  Scanner scan(ViewOf(given->text));
  const std::optional<int> decimals = scan.TakeWhole();
  if (decimals && *decimals <= kMostDecimals && scan.AtEnd()) return *decimals;
  throw UsageFailure(
      {KTEXT("{1}: \"{2}\" isn't a whole number from 0 to {3}"),
       {NameOf(Option::Decimals), Quoted(given->text), WString::ValueOf(kMostDecimals)}});
}

const LengthUnit& ChooseFileUnit(const CommandLine& line) {
  return Choose(line, Option::From, kLengthUnits, kLengthUnits[0]);
}

LengthStyle ChooseLengthStyle(const CommandLine& line) {
  const LengthUnit& unit = Choose(line, Option::To, kLengthUnits, kLengthUnits[0]);
  return {&unit, ChooseDecimals(line, unit.decimals),
          Choose(line, Option::Denominator, kFractions, kFractions[2]).precision};
}

PointFile ReadPointFile(const Argument& file, const LengthUnit& unit, Console& console) {
  PointFile points = ReadPoints(ReadAll(file), unit);
  const WString name = Shown(file.text) + KTEXT(':');
  for (const RowFault& fault : points.faults) {
    const WString place = name.Concat(WString::ValueOf(fault.line)) + KTEXT(": ");
    console.Complain(place.Concat(fault.message.Text()));
  }
  return points;
}

WString WithUnit(const WChar* head, const LengthUnit& unit) {
  return Message{KTEXT("{1} ({2})"), {kelp::Xlate(head), kelp::Xlate(unit.symbol)}}.Text();
}

}  // namespace fieldbook
