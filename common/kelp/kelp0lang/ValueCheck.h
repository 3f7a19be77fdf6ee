// Strict reading of what people type: whether a text is wholly a value of its kind, and otherwise
// where it stops being one and why.
//
//   const TValueCheck check = CheckValue(field.GetText(), enumMeasUnitValue::Dist);
//   if (!check.IsValue()) return field.Mark(check.position, check.Reason());
//   point.SetHeight(check.value);   // metres
//
// The readers of value text (MeasUnitText.h) take whatever digits they find, and a text without any
// as 0. This family takes a text as a whole or not at all; what could mean two things is refused
// with both of them named.
//
// Understood are, blanks in front and behind aside:
//
//   numbers   -12.5, +12,5, 1.5e3; the decimal mark is a point or a comma in every locale, digits
//             aren't grouped. A minus may be the typographic one, or an en dash.
//   fractions 1/2, 12 3/4, 12 1/2 and the single characters from one half to seven eighths
//   units     behind the number, in any case: mm cm m km, in ft yd ch mi and their English words;
//             "US" in front of a unit or behind it is the US survey one, "ift" the international
//             foot. Other feet, and what goes by them, are those of the system: US survey feet
//             where it shows lengths in these, else international ones. Areas have m2, ft^2, sq ft
//             with the sign of a square or without, ha and ac, volumes m3, cu yd and so on.
//             Angles have their sign of a degree or deg, gon, g, grad, rad, mil.
//   feet      12'6 1/2", 12 ft 6 1/2 in, 12'6.5", 6.5", 5'6"3/8, 12-6-1/2 in every unit, 12-6
//             where feet are shown
//   angles    45°30'15.5", 45 30 15.5, 45-30-15.5, 45:30:15.5, 45d30'15", 45°30.5', 30';
//   typographic
//             and ordinal signs too. Where angles are in gon, radians or mils these need the sign
//             of the degrees.
//   bearings  S45°30'15"E, for directions alone: an angle to either side of north or south,
//             whatever start and sense the system has
//   letters   N, S, E and W, and those of the user's language, in front of a latitude or longitude
//             or behind it, in place of a sign
//
// Refused are, beside what isn't understood: minutes and seconds of 60 and more, inches of 12 and
// more behind feet, a denominator of zero, a fraction of one and more behind a whole number,
// decimals of a part that another follows, a sign twice or beside a letter, latitudes beyond 90 and
// longitudes beyond 180 degrees, other angles beyond 1,000,000, bearings beyond 90, and numbers
// whose magnitude is above kelp::kNotSetThreshold. Of two meanings are
//
//   10.3 as packed DD.MMSS             3 minutes or 30; likewise a single digit of seconds
//   10.5 where degrees, minutes and    10 and a half degrees, or 10 degrees 5 minutes
//     seconds are shown
//   12 1/2, 1/2, 12-1/2 where feet     feet, or inches
//     and inches are shown
//   45d30m15s for a latitude           15 seconds, or south
//
// No function throws or has state but for the translations and the current system
// (CurrMeasUnitInfo) and allocates where a text is a value; any thread may call them.
#pragma once

#include "kelp0lang/AngleForm.h"
#include "kelp0lang/Export.h"
#include "kelp0lang/MeasUnit.h"
#include "kelp0lang/MeasUnitSystem.h"
#include "kelp0lang/String.h"
#include "kelp0lang/ValueCheckResult.h"

// A text as a value of a kind, in its stored unit (enumMeasUnitValue), under a system or the
// current one. A text without a unit is in the system's unit of display. An unknown kind has no
// values. A latitude or longitude is what it says, whatever start and sense of angles the system
// has.
KELP0LANG_API TValueCheck CheckValue(const kelp::WString& text, enumMeasUnitValue kind,
                                     const CMeasUnitSystem& system);
KELP0LANG_API TValueCheck CheckValue(const kelp::WString& text, enumMeasUnitValue kind);

// A plain number or fraction.
KELP0LANG_API TValueCheck CheckNumber(const kelp::WString& text);
// A length, in the arithmetic unit of units (FeetAndInches in feet), which it is in where the text
// has no unit of its own.
KELP0LANG_API TValueCheck CheckLength(const kelp::WString& text, enumDisplayDistUnits units);
// An angle in degrees, as it is written. Units are those of a text that has none of its own. Of
// type None it may be a bearing, clockwise from north then, and a single letter makes it a latitude
// or longitude.
KELP0LANG_API TValueCheck CheckAngle(const kelp::WString& text, enumDisplayAngleUnits units,
                                     enumLatLonType type);
