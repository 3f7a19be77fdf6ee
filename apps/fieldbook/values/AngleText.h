// Angles as they are typed and shown, in every notation of the program.
#pragma once

#include "fieldbook/values/Number.h"
#include "kelp0lang/AngleForm.h"

namespace fieldbook {

struct AngleNotation {
  const WChar* name;  // on the command line
  enumDisplayAngleUnits form;
  double (*fromDegrees)(double);  // null for degrees, minutes and seconds
  int decimals;                   // shown where nothing else was asked for; of seconds in DMS
};

extern const AngleNotation kAngleNotations[7];

// The value in degrees, signed, as the library's strict reading takes it (ValueCheck.h): a text
// without signs or a unit of its own is in the notation. A hemisphere letter makes the angle a
// latitude or a longitude; a quadrant bearing counts from north, clockwise.
Reading ReadAngle(const WString& text, const AngleNotation& notation, enumLatLonType type);

// An angle in degrees, as ReadAngle gave it. In the forms of degrees, minutes and seconds a
// latitude or longitude has a letter instead of a sign.
WString WriteAngle(double degrees, const AngleNotation& notation, enumLatLonType type,
                   int decimals);

}  // namespace fieldbook
