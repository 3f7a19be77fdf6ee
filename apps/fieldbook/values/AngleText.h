// Angles as they are typed and shown, in every notation of the program.
#pragma once

#include "fieldbook/values/Number.h"
#include "kelp0lang/AngleForm.h"

namespace fieldbook {

struct AngleNotation {
  const WChar* name;  // on the command line
  enumDisplayAngleUnits form;
  double (*toDegrees)(double);  // null for degrees, minutes and seconds
  double (*fromDegrees)(double);
  int decimals;  // shown where nothing else was asked for; of seconds in DMS
};

extern const AngleNotation kAngleNotations[7];

// The value in degrees, signed. A latitude lies within 90 degrees, a longitude within 180, any
// other angle within a million. In the forms of degrees, minutes and seconds a hemisphere letter
// may stand behind; it makes the angle a latitude or a longitude.
Reading ReadAngle(const WString& text, const AngleNotation& notation, enumLatLonType type);

// An angle in degrees, as ReadAngle gave it. In the forms of degrees, minutes and seconds a
// latitude or longitude has a letter instead of a sign.
WString WriteAngle(double degrees, const AngleNotation& notation, enumLatLonType type,
                   int decimals);

}  // namespace fieldbook
