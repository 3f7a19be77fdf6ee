// fieldbook angle: angles from one notation into another.
#include "fieldbook/commands/Commands.h"
#include "fieldbook/values/AngleText.h"

namespace fieldbook {

const WChar* const kAngleHelp = KTEXT(
    "Usage: fieldbook angle VALUE... --from FORM --to FORM [--decimals N]\n"
    "                       [--lat|--lon]\n"
    "\n"
    "Converts angles and prints one a line.\n"
    "\n"
    "  VALUE         an angle, with a minus sign if need be; one with blanks needs\n"
    "                quotes, as in \"10 30 15.5\"; - reads standard input, one a line\n"
    "  --from FORM   how VALUE is written\n"
    "  --to FORM     how to print it\n"
    "  --decimals N  decimals, of seconds in the dms forms, 0 to 9\n"
    "                (deg 6, gon 5, rad 8, mil 4, dms 2)\n"
    "  --lat         a latitude: -90 to 90 degrees; in dms N or S, not a sign\n"
    "  --lon         a longitude: -180 to 180 degrees; in dms E or W\n"
    "\n"
    "FORM is one of\n"
    "  deg         decimal degrees\n"
    "  gon         400 to the circle\n"
    "  rad         radians\n"
    "  mil         6400 to the circle\n"
    "  dms         10\u00B030'15.5\"\n"
    "  dms-blank   10 30 15.5\"\n"
    "  dms-packed  10.30155\", degrees, then two digits each for minutes and seconds\n"
    "  bearing     S45\u00B030'15.5\"E, a direction from north or south\n"
    "In the dms forms the sign of the seconds may be left out, and seconds and\n"
    "minutes that are zero. A hemisphere letter may stand in front or behind.\n"
    "Signs and units that VALUE has of its own go before FORM, and a bearing with\n"
    "its signs is read in every FORM; it is the direction, clockwise from north.\n"
    "\n"
    "A value that can't be read is reported as VALUE: what is wrong, the others\n"
    "are printed, and the exit status is 2.\n");

namespace {

class Converter {
 public:
  Converter(const CommandLine& line, Console& console)
      : m_console(console),
        m_from(RequireChoice(line, Option::From, kAngleNotations)),
        m_to(RequireChoice(line, Option::To, kAngleNotations)),
        m_type(ChooseType(line)),
        m_decimals(ChooseDecimals(line, m_to.decimals)) {
    if (m_to.isBearing && m_type != enumLatLonType::None) {
      throw UsageFailure({KTEXT("a bearing is no latitude or longitude"), {}});
    }
  }

  // Prints the angle, or complains with the place in front.
  void Convert(const WString& text, const WString& place) {
    const Reading reading = ReadAngle(text, m_from, m_type);
    if (reading.fault) {
      Complain(reading.fault, place);
    } else {
      m_console.PrintLine(WriteAngle(reading.value, m_to, m_type, m_decimals));
    }
  }

  void ConvertInput() {
    std::string line;
    for (int number = 1; !m_console.IsOutputLost() && ReadInputLine(line); ++number) {
      const WString place = WString(KTEXT("-:")).Concat(WString::ValueOf(number));
      if (line.size() > kLongestLine) {
        Complain({KTEXT("the line is too long"), {}}, place);
        continue;
      }
      const WString text = Decode(number == 1 ? WithoutMark(line) : line);
      if (!Trimmed(ViewOf(text)).empty()) Convert(text, place);
    }
  }

  Status GetStatus() const { return m_status; }

 private:
  static enumLatLonType ChooseType(const CommandLine& line) {
    const bool isLatitude = line.Has(Option::Lat);
    if (isLatitude && line.Has(Option::Lon)) {
      throw UsageFailure({KTEXT("--lat and --lon don't go together"), {}});
    }
    if (isLatitude) return enumLatLonType::Latitude;
    return line.Has(Option::Lon) ? enumLatLonType::Longitude : enumLatLonType::None;
  }

  void Complain(const Message& fault, const WString& place) {
    m_console.Complain((place + KTEXT(": ")).Concat(fault.Text()));
    m_status = kPartly;
  }

  Console& m_console;
  const AngleNotation& m_from;
  const AngleNotation& m_to;
  enumLatLonType m_type;
  int m_decimals;
  Status m_status = kDone;
};

}  // namespace

Status AngleCommand(const CommandLine& line, Console& console) {
  Converter converter(line, console);
  if (line.Operands().empty()) {
    throw UsageFailure({KTEXT("angle takes at least one VALUE"), {}});
  }
  for (const Argument& value : line.Operands()) {
    if (value.text == WString(KTEXT("-"))) {
      converter.ConvertInput();
    } else {
      converter.Convert(value.text, Quoted(value.text));
    }
  }
  return converter.GetStatus();
}

}  // namespace fieldbook
