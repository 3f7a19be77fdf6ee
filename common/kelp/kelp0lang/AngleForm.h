// The forms in which angles are exchanged, read and typed.
//
//   constexpr auto kForm = enumDisplayAngleUnits::DMSSymbols;
//   WString text = DegToDMS(45.5042, kForm, enumLatLonType::Latitude, 1);  // 45°30'15.1"N
//   double deg = DMSToDeg(text, kForm, enumLatLonType::Latitude);
//
// The names say the form: Sesd decimal degrees, Sesg degrees, minutes and seconds as three values,
// Cent gon, Radi radians, Nmea the number ddmm.mmmm, SesgVerto the number DD.MMSSss, GraPriDcP the
// number DD.MMmmm (degrees and decimal minutes).
//
// A value above kelp::kNotSetThreshold is none: it gives kelp::kNotSet, zeros or the empty text. No
// other input fails. NaN counts as zero where the result is in parts or a text, and parts that
// their type can't hold end at its limit.
//
// Where the digits of a number mean degrees, minutes and seconds they are cut in decimal: the
// number is taken at 15 significant digits, as many as a double keeps of any decimal (at most 18 of
// them behind the point). No double is 45.3; the nearest one lies below, and cut in binary it would
// read as 45°29'100". The way back gives the double nearest to the decimal, so that it cuts right
// again.
//
// In Sesg the sign rides on the degrees alone: an angle between 0 and -1 degree loses it there, and
// in everything that goes through Sesg. TDMS keeps it.
//
// The readers take what digits they find, and traps come with that: "junk" is 0, "S 45 30 00" is
// positive (a letter counts at the end alone), "45.5" in DMSSymbols is 45°05', "45.3" in DMSPacked
// 45°03', and minutes of 60 and more count as they are. CheckAngle (ValueCheck.h) is the strict
// reading.
//
// Angles that round to zero keep their sign, and "360°00'00"" can come of an angle below the full
// circle: what is rounded for a text isn't normalised again.
//
// Threads: all functions are pure, but for hemisphere letters, which are translated (Translate.h),
// and for texts with decimals, which show the decimal point of the process locale.
#pragma once

#include <cstdint>

#include "kelp0lang/Export.h"
#include "kelp0lang/MeasUnit.h"
#include "kelp0lang/String.h"

// Which hemisphere letters an angle has.
enum class enumLatLonType : std::int32_t {
  None,
  Latitude,   // north and south
  Longitude,  // east and west
};

// An angle in degrees, minutes and seconds.
struct TDMS {
  std::int32_t degrees = 0;  // never negative out of DegToTDMS
  std::int32_t minutes = 0;
  double seconds = 0.0;
  bool negative = false;  // the sign of the whole angle
};

// Plain factors, with the double nearest to pi.
KELP0LANG_API double AngCentFromRadi(double value);
KELP0LANG_API double AngCentFromSesd(double value);
KELP0LANG_API double AngRadiFromCent(double value);
KELP0LANG_API double AngRadiFromSesd(double value);
KELP0LANG_API double AngSesdFromCent(double value);
KELP0LANG_API double AngSesdFromRadi(double value);

// From degrees, minutes and seconds: the sum of the absolute values, with the sign of d.
KELP0LANG_API double AngSesdFromSesg(int d, int m, double s);
KELP0LANG_API double AngCentFromSesg(int d, int m, double s);
KELP0LANG_API double AngRadiFromSesg(int d, int m, double s);

// Into degrees, minutes and seconds, rounded to a millionth of a second before the split, so that
// seconds are always below 60. d has the sign, m and s aren't negative.
KELP0LANG_API void AngSesgFromSesd(double value, int& d, int& m, double& s);
KELP0LANG_API void AngSesgFromCent(double value, int& d, int& m, double& s);
KELP0LANG_API void AngSesgFromRadi(double value, int& d, int& m, double& s);

// The number ddmm.mmmm. Of a negative one all three parts are negative.
KELP0LANG_API void AngSesgFromNmea(double value, int& d, int& m, double& s);
KELP0LANG_API double AngRadiFromNmea(double value);

// The number DD.MMmmm, out of radians rounded to 10^-10 of a minute. The sign of the number counts
// on the way in, that of the whole degrees on the way out.
KELP0LANG_API double AngGraPriDcPFromRadi(double value);
KELP0LANG_API double AngRadiFromGraPriDcP(double value);

// The number DD.MMSSss, out of radians rounded to a millionth of a second. Signs as in GraPriDcP.
KELP0LANG_API double AngSesgVertoFromRadi(double value);
KELP0LANG_API double AngRadiFromSesgVerto(double value);

// Texts with dec decimals of the seconds (0 to 230, what lies outside counts as the nearer of the
// two). Seconds that round to 60 carry into the minutes and the degrees. Numbers are padded with
// blanks: minutes to 2 places, seconds to 2 before the point (3 without one); where the table shows
// four signs for the degrees, these to 4.
//
//   StrAngSesgFromRadi, StrAngSesgFromSesd   "  45°30'15.00"
//   StrAngSesgFromCent                       "45°30'15.00"" with its closing sign; keeps the "-" of
//                                            an angle below one degree
//   StrAngSesgNoSmbFromRadi                  "  45 30 15.00", always with "."
//   StrLatSesgFromRadi, StrLonSesgFromRadi   "45° 30' 15.00" N", of the absolute value; N or S, and
//                                            E or O (ovest), not translated
KELP0LANG_API kelp::WString StrAngSesgFromRadi(double value, int dec);
KELP0LANG_API kelp::WString StrAngSesgFromSesd(double value, int dec);
KELP0LANG_API kelp::WString StrAngSesgFromCent(double value, int dec);
KELP0LANG_API kelp::WString StrAngSesgNoSmbFromRadi(double value, int dec);
KELP0LANG_API kelp::WString StrLatSesgFromRadi(double value, int dec);
KELP0LANG_API kelp::WString StrLonSesgFromRadi(double value, int dec);
// The sign, + too, and the whole degrees.
KELP0LANG_API kelp::WString StrGradiFromRadi(double value);

// Decimal degrees rounded once, at dec decimals of the seconds, and then split: 59.99... seconds
// carry into the next minute and degree. More than 12 decimals, or 18 digits in all, are beyond
// what a double has and don't count. A value that isn't below the threshold gives zeros.
KELP0LANG_API TDMS DegToTDMS(double deg, int dec);
// Decimal degrees. Minutes and seconds of 60 and more count as they are.
KELP0LANG_API double TDMSToDeg(const TDMS& angle);

// The text of an angle in one of the three DMS forms, with dec decimals of the seconds:
//
//   DMSSymbols  10°30'15.25"      DMSBlanks  10 30 15.25"      DMSPacked  10.301525"
//
// A negative angle has a leading "-", unless type and translation give a hemisphere letter, which
// then stands at the end. Any other form gives the empty text. Decimals are those of DegToTDMS and
// zeros behind them, 230 at most. DMSPacked shows them as an int, which ends at 2147483647: up to 9
// are safe, with ten a fraction of a second above 0.2147483647 ends there, with more a smaller one
// does.
KELP0LANG_API kelp::WString DegToDMS(double deg, enumDisplayAngleUnits form, enumLatLonType type,
                                     int dec);

// Reads such a text, or what a user types for it: up to four runs of digits, with anything between
// them, are degrees, minutes, seconds and the decimals of the seconds. In DMSPacked there are two,
// degrees and MMSSss; there one or two digits behind the point are whole minutes ("45.3" has 3),
// and a single digit behind the minutes is whole seconds. A "-" at the front and a negative
// hemisphere letter at the end each turn the sign. Any other form, and a text without digits, gives
// zeros.
//
// A run, but for the decimals of DMSPacked, that 32 bits don't hold counts 2147483647.
KELP0LANG_API TDMS DMSToTDMS(const kelp::WString& text, enumDisplayAngleUnits form,
                             enumLatLonType type);
KELP0LANG_API double DMSToDeg(const kelp::WString& text, enumDisplayAngleUnits form,
                              enumLatLonType type);

// Whether c is the letter of the negative hemisphere, S or W, in the user's language; upper and
// lower case are the same.
KELP0LANG_API bool IsLatLonSignNegative(WChar c, enumLatLonType type);
// The hemisphere letter, the first unit of the translation. False, and c stays, where there is
// none.
KELP0LANG_API bool LatLonSignToSign(bool negative, enumLatLonType type, WChar& c);
