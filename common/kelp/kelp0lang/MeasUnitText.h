// Stored values as text, and text as stored values, under the current unit settings.
//
//   cell.SetText(DistToString(metres));
//   double metres = StringToDist(cell.GetText());
//
// Each function is the member of CMeasUnitSystem (MeasUnitSystem.h) of the same kind, on the
// current system that CCurrMeasUnitInfo owns: what holds there holds here. The first call of the
// program builds the current system from its files and must come before threads use these
// functions.
#pragma once

#include "kelp0lang/Export.h"
#include "kelp0lang/MeasUnitSystem.h"
#include "kelp0lang/String.h"

// A stored value as text, as CMeasUnitSystem::FromDistToString and its kin give it.
KELP0LANG_API kelp::WString DistToString(double v, enumDistType type = enumDistType::Distance,
                                         enumMeasUnitSize size = enumMeasUnitSize::Normal,
                                         int decimals = -1, bool plainDecimal = false);
KELP0LANG_API kelp::WString TSDistToString(double v);
KELP0LANG_API kelp::WString AreaToString(double v, int decimals = -1);
KELP0LANG_API kelp::WString VolumeToString(double v);
KELP0LANG_API kelp::WString VolPerDistToString(double v);
KELP0LANG_API kelp::WString SpeedToString(double v,
                                          enumMeasUnitSize size = enumMeasUnitSize::Normal);
KELP0LANG_API kelp::WString PosAngleToString(double v,
                                             enumMeasUnitSize size = enumMeasUnitSize::Normal);
KELP0LANG_API kelp::WString RotAngleToString(double v,
                                             enumMeasUnitSize size = enumMeasUnitSize::Normal);
KELP0LANG_API kelp::WString PosGeomAngleToString(double v,
                                                 enumMeasUnitSize size = enumMeasUnitSize::Normal);
KELP0LANG_API kelp::WString RotGeomAngleToString(double v,
                                                 enumMeasUnitSize size = enumMeasUnitSize::Normal);
KELP0LANG_API kelp::WString TSAngleToString(double v);
KELP0LANG_API kelp::WString LenAngleToString(double v,
                                             enumMeasUnitSize size = enumMeasUnitSize::Normal);
KELP0LANG_API kelp::WString LenGeomAngleToString(double v,
                                                 enumMeasUnitSize size = enumMeasUnitSize::Normal);
KELP0LANG_API kelp::WString LatAngleToString(double v);
KELP0LANG_API kelp::WString LonAngleToString(double v);
KELP0LANG_API kelp::WString ValueToString(double v, enumMeasUnitValue kind, int decimals = -1,
                                          enumMeasUnitSize size = enumMeasUnitSize::Normal,
                                          enumMeasUnitSize valueSize = enumMeasUnitSize::Normal,
                                          bool plainDecimal = false);
KELP0LANG_API void EastToString(double v, kelp::WString& out, bool* first = nullptr);
KELP0LANG_API void NorthToString(double v, kelp::WString& out, bool* first = nullptr);
KELP0LANG_API void CoordsToStrings(double east, double north, kelp::WString& s1, kelp::WString& s2,
                                   bool* eastFirst = nullptr);
// A scale factor, 8 decimals.
KELP0LANG_API kelp::WString ScaleToString(double v);
// The text for a column of maxChars characters: with 3, 2, 1 or no decimals, whichever fits first.
// Where none does the text is ">999", ">9999" or ">99999" for 4, 5 or 6 characters and ">999999"
// for any other number; a negative number takes 3 decimals whatever their length. The fourth
// argument plays no part.
KELP0LANG_API kelp::WString DistToStringMaxChar(double v, enumDistType type, enumMeasUnitSize size,
                                                int ignored, bool plainDecimal, int maxChars);

// Text as a stored value, as CMeasUnitSystem::FromStringToDist and its kin read it: nothing is
// refused.
KELP0LANG_API double StringToDist(const kelp::WString& s,
                                  enumDistType type = enumDistType::Distance,
                                  enumMeasUnitSize size = enumMeasUnitSize::Normal,
                                  bool plainDecimal = false);
KELP0LANG_API double StringToTSDist(const kelp::WString& s);
KELP0LANG_API double StringToArea(const kelp::WString& s);
KELP0LANG_API double StringToVolume(const kelp::WString& s);
KELP0LANG_API double StringToVolPerDist(const kelp::WString& s);
KELP0LANG_API double StringToSpeed(const kelp::WString& s,
                                   enumMeasUnitSize size = enumMeasUnitSize::Normal);
KELP0LANG_API double StringToPosAngle(const kelp::WString& s,
                                      enumMeasUnitSize size = enumMeasUnitSize::Normal);
KELP0LANG_API double StringToRotAngle(const kelp::WString& s,
                                      enumMeasUnitSize size = enumMeasUnitSize::Normal);
KELP0LANG_API double StringToPosGeomAngle(const kelp::WString& s,
                                          enumMeasUnitSize size = enumMeasUnitSize::Normal);
KELP0LANG_API double StringToRotGeomAngle(const kelp::WString& s,
                                          enumMeasUnitSize size = enumMeasUnitSize::Normal);
KELP0LANG_API double StringToTSAngle(const kelp::WString& s);
KELP0LANG_API double StringToLenAngle(const kelp::WString& s,
                                      enumMeasUnitSize size = enumMeasUnitSize::Normal);
KELP0LANG_API double StringToLenGeomAngle(const kelp::WString& s,
                                          enumMeasUnitSize size = enumMeasUnitSize::Normal);
KELP0LANG_API double StringToLatAngle(const kelp::WString& s);
KELP0LANG_API double StringToLonAngle(const kelp::WString& s);
KELP0LANG_API double StringToValue(const kelp::WString& s, enumMeasUnitValue kind,
                                   enumMeasUnitSize size = enumMeasUnitSize::Normal,
                                   enumMeasUnitSize valueSize = enumMeasUnitSize::Normal,
                                   bool plainDecimal = false);
KELP0LANG_API void String1ToCoord(const kelp::WString& s, double& c, bool* isEast = nullptr);
KELP0LANG_API void String2ToCoord(const kelp::WString& s, double& c, bool* isEast = nullptr);
KELP0LANG_API void StringsToCoords(const kelp::WString& s1, const kelp::WString& s2, double& east,
                                   double& north, bool* eastFirst = nullptr);
