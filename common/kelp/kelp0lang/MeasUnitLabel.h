// Labels of quantities with their units, for column heads and dialog fields.
//
//   GetDistLabel(KTEXT("H"), enumMeasUnitSize::Normal, true);   // "H [m]"
//
// A label is the prefix, a blank and the text of the unit; without a prefix it is the unit's text
// alone. With bracket the unit stands in square brackets, unless it has no text: degrees, minutes
// and seconds carry their own signs, and an unknown unit or size has none. The units are those of
// the current settings (CurrMeasUnitInfo.h), where a function doesn't say otherwise.
#pragma once

#include <cstdint>

#include "kelp0lang/Export.h"
#include "kelp0lang/MeasUnitSystem.h"
#include "kelp0lang/String.h"

// How GetCoord1Label and GetCoord2Label name a coordinate.
enum class enumCoordLabelMode : std::int32_t {
  Word,
  Letter,
};

// The label of a kind of value, in its unit of the current settings.
KELP0LANG_API kelp::WString GetDistLabel(const kelp::WString& prefix, enumMeasUnitSize size,
                                         bool bracket);
KELP0LANG_API kelp::WString GetAreaLabel(const kelp::WString& prefix, enumMeasUnitSize size,
                                         bool bracket);
KELP0LANG_API kelp::WString GetVolumeLabel(const kelp::WString& prefix, enumMeasUnitSize size,
                                           bool bracket);
KELP0LANG_API kelp::WString GetAngleLabel(const kelp::WString& prefix, enumMeasUnitSize size,
                                          bool bracket);
// "%" at any size.
KELP0LANG_API kelp::WString GetSlopeLabel(const kelp::WString& prefix, enumMeasUnitSize size,
                                          bool bracket);

// Always in brackets.
KELP0LANG_API kelp::WString GetTSDistLabel(const kelp::WString& prefix, enumMeasUnitSize size);
KELP0LANG_API kelp::WString GetSpeedLabel(const kelp::WString& prefix, enumMeasUnitSize size);
KELP0LANG_API kelp::WString GetTSAngleLabel(const kelp::WString& prefix, enumMeasUnitSize size);
KELP0LANG_API kelp::WString GetLatLonLabel(const kelp::WString& prefix, enumMeasUnitSize size);
// Volume per length, such as "[m³]*[m]".
KELP0LANG_API kelp::WString GetVolPerDistLabel(const kelp::WString& prefix, enumMeasUnitSize size);

// With a unit of the caller's.
KELP0LANG_API kelp::WString DoGetDistLabel(const kelp::WString& prefix, enumMeasUnitSize size,
                                           enumDisplayDistUnits units, bool bracket);
KELP0LANG_API kelp::WString DoGetAngleLabel(const kelp::WString& prefix, enumMeasUnitSize size,
                                            enumDisplayAngleUnits units, bool bracket);

// The first and the second coordinate of the display mode, "East" and "North" in the user's
// language as a word or as one letter.
KELP0LANG_API kelp::WString GetCoord1Label(const kelp::WString& prefix, enumCoordLabelMode mode);
KELP0LANG_API kelp::WString GetCoord2Label(const kelp::WString& prefix, enumCoordLabelMode mode);

// The label of any kind of value under a system of the caller's. Temperature and pressure are their
// unit alone; a plain number, and an unknown kind, has no label.
KELP0LANG_API kelp::WString GetUnitMeasureLabel(const CMeasUnitSystem& system,
                                                const kelp::WString& prefix, enumMeasUnitValue kind,
                                                enumMeasUnitSize size, bool bracket);
