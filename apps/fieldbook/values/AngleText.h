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
  bool isBearing = false;         // written as a quadrant bearing; read as DMS otherwise
};

extern const AngleNotation kAngleNotations[8];

// The value in degrees, signed, as the library's strict reading takes it (ValueCheck.h): a text
// without signs or a unit of its own is in the notation. A hemisphere letter makes the angle a
// latitude or a longitude; a quadrant bearing counts from north, clockwise.
Reading ReadAngle(const WString& text, const AngleNotation& notation, enumLatLonType type);

// An angle in degrees, as ReadAngle gave it. In the forms of degrees, minutes and seconds a
// latitude or longitude has a letter instead of a sign. As a bearing it is a direction, clockwise
// from north, and has no type.
WString WriteAngle(double degrees, const AngleNotation& notation, enumLatLonType type,
                   int decimals);

// A direction, in degrees clockwise from north, as the angle to either side of north or south:
// S45°30'15"E. Half-way between them north stands; a zero that only the rounding makes goes east.
WString WriteBearing(double degrees, int decimals);

}  // namespace fieldbook
