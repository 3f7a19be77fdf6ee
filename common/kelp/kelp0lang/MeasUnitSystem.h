// The settings that say how each kind of value is shown and typed: unit, decimals, fraction of an
// inch, direction of angles.
//
//   CMeasUnitSystem feet;
//   feet.SetUnitSystem(enumUnitSystem::USSurvey, true);
//   feet.SetNumDistDec(2);
//   feet.FromDistToString(12.5);   // "41.01"
//
// A program has one current system and further ones for reports (CurrMeasUnitInfo.h owns them).
// Any field may be left not set, which is the value -1 whatever the field's type: a report then
// follows the current system in it.
//
// A setter, and CopyFrom, raise the changed flag where a value differs; Notify reports it once.
//
// Value text: a value above kelp::kNotSetThreshold is not set and gives the empty text, and the
// empty text reads as kelp::kNotSet, as does every text that can't be read. Decimals of -1 stand
// for the system's field. Plain numbers follow the process locale in their decimal point
// (StringDaDouble, DoubleDaString).
//
// Threads: a system is changed on one thread at a time, by its setters, CopyFrom, FromConcrete,
// Notify and the loads, and may be read and copied on any thread meanwhile: each field reads as it
// was before the change or as it is behind it, and a value that takes several of them may meet some
// of both. Whoever needs them of one moment takes a copy where nobody sets. Not so the file names
// and the context: assignment, CopyFrom with copyFileNames and SetContext need the system alone.
#pragma once

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "kelp0lang/AngleForm.h"
#include "kelp0lang/Export.h"
#include "kelp0lang/MeasUnit.h"
#include "kelp0lang/String.h"

class CMeasUnitChangeContext;

namespace kelp {
class ifpstream;
class ofpstream;
}  // namespace kelp

// Which coordinate comes first.
enum class enumCoordDisplayMode : std::int32_t {
  EastNorth,
  NorthEast,
};

// The kinds of value of FromValueToString, FromStringToValue and the labels, with the unit that
// each is stored in.
enum class enumMeasUnitValue : std::int32_t {
  Dist = 0,             // metres
  TSDist = 1,           // metres, as a total station reads them
  Area = 2,             // square metres
  Volume = 3,           // cubic metres
  VolPerDist = 4,       // cubic metres per metre
  Speed = 5,            // metric speed
  Quote = 6,            // height, metres
  TSAngle = 7,          // gon, as a total station reads them
  PosAngle = 8,         // direction, gon
  RotAngle = 9,         // signed turn, gon
  LenAngle = 10,        // extent, gon
  LatAngle = 11,        // radians
  LonAngle = 12,        // radians
  PosGeomAngle = 13,    // direction, radians from East, counter-clockwise
  RotGeomAngle = 14,    // signed turn, radians, counter-clockwise
  LenGeomAngle = 15,    // extent, radians
  Coord = 16,           // metres
  Coord1 = 17,          // metres
  Coord2 = 18,          // metres
  Temperature = 19,     // as it stands
  Pressure = 20,        // as it stands
  Slope = 21,           // percent
  Number = 22,          // 6 decimals unless told otherwise
  Integer = 101,        // no decimals
  NumberThreeDec = 102  // 3 decimals unless told otherwise
};

class KELP0LANG_API CMeasUnitSystem {
 public:
  // Metric defaults. The names are those of the shipped defaults and of the user's settings, for
  // LoadDefault, LoadConfig and SaveConfig; without a name these do nothing and give true.
  CMeasUnitSystem(const kelp::WString& defaultFile, const kelp::WString& configFile);
  CMeasUnitSystem();

  // The unit system; its setter, with applyUnits, also sets the units of length, area, volume and
  // speed to those of the system. The unit system itself raises no flag.
  enumUnitSystem GetUnitSystem() const { return Get<enumUnitSystem>(Field::UnitSystem); }
  void SetUnitSystem(enumUnitSystem system, bool applyUnits);

  // Units. The total station has its own for length and angle.
  enumDisplayDistUnits GetDistUnits() const { return Get<enumDisplayDistUnits>(Field::DistUnits); }
  void SetDistUnits(enumDisplayDistUnits value) { Set(Field::DistUnits, value); }
  enumDisplayDistUnits GetTSDistUnits() const {
    return Get<enumDisplayDistUnits>(Field::TSDistUnits);
  }
  void SetTSDistUnits(enumDisplayDistUnits value) { Set(Field::TSDistUnits, value); }
  enumDisplayAreaUnits GetAreaUnits() const { return Get<enumDisplayAreaUnits>(Field::AreaUnits); }
  void SetAreaUnits(enumDisplayAreaUnits value) { Set(Field::AreaUnits, value); }
  enumDisplayVolumeUnits GetVolumeUnits() const {
    return Get<enumDisplayVolumeUnits>(Field::VolumeUnits);
  }
  void SetVolumeUnits(enumDisplayVolumeUnits value) { Set(Field::VolumeUnits, value); }
  enumSpeedUnits GetSpeedUnits() const { return Get<enumSpeedUnits>(Field::SpeedUnits); }
  void SetSpeedUnits(enumSpeedUnits value) { Set(Field::SpeedUnits, value); }
  enumCoordDisplayMode GetCoordDisplayMode() const {
    return Get<enumCoordDisplayMode>(Field::CoordDisplayMode);
  }
  void SetCoordDisplayMode(enumCoordDisplayMode value) { Set(Field::CoordDisplayMode, value); }
  enumDisplayAngleUnits GetTSAngleUnits() const {
    return Get<enumDisplayAngleUnits>(Field::TSAngleUnits);
  }
  void SetTSAngleUnits(enumDisplayAngleUnits value) { Set(Field::TSAngleUnits, value); }
  enumDisplayAngleUnits GetAngleUnits() const {
    return Get<enumDisplayAngleUnits>(Field::AngleUnits);
  }
  void SetAngleUnits(enumDisplayAngleUnits value) { Set(Field::AngleUnits, value); }
  enumDisplayAngleUnits GetLatLonAngleUnits() const {
    return Get<enumDisplayAngleUnits>(Field::LatLonAngleUnits);
  }
  void SetLatLonAngleUnits(enumDisplayAngleUnits value) { Set(Field::LatLonAngleUnits, value); }
  enumTemperatureUnits GetTemperatureUnits() const {
    return Get<enumTemperatureUnits>(Field::TemperatureUnits);
  }
  void SetTemperatureUnits(enumTemperatureUnits value) { Set(Field::TemperatureUnits, value); }
  enumPressureUnits GetPressureUnits() const {
    return Get<enumPressureUnits>(Field::PressureUnits);
  }
  void SetPressureUnits(enumPressureUnits value) { Set(Field::PressureUnits, value); }

  // How angles and dates count.
  enumHorizStartAngle GetHorizStartAngle() const {
    return Get<enumHorizStartAngle>(Field::HorizStartAngle);
  }
  void SetHorizStartAngle(enumHorizStartAngle value) { Set(Field::HorizStartAngle, value); }
  enumVertAngle GetVertAngle() const { return Get<enumVertAngle>(Field::VertAngle); }
  void SetVertAngle(enumVertAngle value) { Set(Field::VertAngle, value); }
  enumAngleDir GetAngleDir() const { return Get<enumAngleDir>(Field::AngleDir); }
  void SetAngleDir(enumAngleDir value) { Set(Field::AngleDir, value); }
  enumDateFormat GetDateFormatW() const { return Get<enumDateFormat>(Field::DateFormat); }
  void SetDateFormat(enumDateFormat value) { Set(Field::DateFormat, value); }

  // Decimals of each kind.
  int GetNumDistDec() const { return Get<int>(Field::NumDistDec); }
  void SetNumDistDec(int value) { Set(Field::NumDistDec, value); }
  int GetNumTSDistDec() const { return Get<int>(Field::NumTSDistDec); }
  void SetNumTSDistDec(int value) { Set(Field::NumTSDistDec, value); }
  int GetNumAreaDec() const { return Get<int>(Field::NumAreaDec); }
  void SetNumAreaDec(int value) { Set(Field::NumAreaDec, value); }
  int GetNumVolDec() const { return Get<int>(Field::NumVolDec); }
  void SetNumVolDec(int value) { Set(Field::NumVolDec, value); }
  int GetNumSpeedDec() const { return Get<int>(Field::NumSpeedDec); }
  void SetNumSpeedDec(int value) { Set(Field::NumSpeedDec, value); }
  int GetNumCoordDec() const { return Get<int>(Field::NumCoordDec); }
  void SetNumCoordDec(int value) { Set(Field::NumCoordDec, value); }
  int GetNumQuoteDec() const { return Get<int>(Field::NumQuoteDec); }
  void SetNumQuoteDec(int value) { Set(Field::NumQuoteDec, value); }
  int GetNumTSAngleDec() const { return Get<int>(Field::NumTSAngleDec); }
  void SetNumTSAngleDec(int value) { Set(Field::NumTSAngleDec, value); }
  int GetNumAngleDec() const { return Get<int>(Field::NumAngleDec); }
  void SetNumAngleDec(int value) { Set(Field::NumAngleDec, value); }
  int GetNumLatLonAngleDec() const { return Get<int>(Field::NumLatLonAngleDec); }
  void SetNumLatLonAngleDec(int value) { Set(Field::NumLatLonAngleDec, value); }
  // Scale factors always show 8.
  int GetNumScaleDec() const { return 8; }

  // Fractions of an inch of each kind.
  enumInchDecPrec GetDistInchDecPrec() const {
    return Get<enumInchDecPrec>(Field::DistInchDecPrec);
  }
  void SetDistInchDecPrec(enumInchDecPrec value) { Set(Field::DistInchDecPrec, value); }
  enumInchDecPrec GetTSDistInchDecPrec() const {
    return Get<enumInchDecPrec>(Field::TSDistInchDecPrec);
  }
  void SetTSDistInchDecPrec(enumInchDecPrec value) { Set(Field::TSDistInchDecPrec, value); }
  enumInchDecPrec GetAreaInchDecPrec() const {
    return Get<enumInchDecPrec>(Field::AreaInchDecPrec);
  }
  void SetAreaInchDecPrec(enumInchDecPrec value) { Set(Field::AreaInchDecPrec, value); }
  enumInchDecPrec GetVolInchDecPrec() const { return Get<enumInchDecPrec>(Field::VolInchDecPrec); }
  void SetVolInchDecPrec(enumInchDecPrec value) { Set(Field::VolInchDecPrec, value); }
  enumInchDecPrec GetCoordInchDecPrec() const {
    return Get<enumInchDecPrec>(Field::CoordInchDecPrec);
  }
  void SetCoordInchDecPrec(enumInchDecPrec value) { Set(Field::CoordInchDecPrec, value); }
  enumInchDecPrec GetQuoteInchDecPrec() const {
    return Get<enumInchDecPrec>(Field::QuoteInchDecPrec);
  }
  void SetQuoteInchDecPrec(enumInchDecPrec value) { Set(Field::QuoteInchDecPrec, value); }

  // Where Notify reports to; not owned, may be null.
  CMeasUnitChangeContext* GetContext() const { return m_context; }
  void SetContext(CMeasUnitChangeContext* context) { m_context = context; }

  // Every choice of a kind, in the order of the values.
  static std::vector<enumDisplayDistUnits> GetAllDistOptions();
  static std::vector<enumDisplayDistUnits> GetAllTSDistOptions();
  static std::vector<enumDisplayAreaUnits> GetAllAreaOptions();
  static std::vector<enumDisplayVolumeUnits> GetAllVolumeOptions();
  static std::vector<enumSpeedUnits> GetAllSpeedOptions();
  static std::vector<enumDisplayAngleUnits> GetAllAngleOptions();
  static std::vector<enumDisplayAngleUnits> GetAllTSAngleOptions();
  static std::vector<enumDisplayAngleUnits> GetAllLatLonAngleOptions();
  // The choices that suit the unit system; none for an unknown one.
  std::vector<enumDisplayDistUnits> GetDefaultDistOptions() const;
  std::vector<enumDisplayDistUnits> GetDefaultTSDistOptions() const;
  std::vector<enumDisplayAreaUnits> GetDefaultAreaOptions() const;
  std::vector<enumDisplayVolumeUnits> GetDefaultVolumeOptions() const;
  std::vector<enumSpeedUnits> GetDefaultSpeedOptions() const;
  // Whether a unit of length, area, volume or speed is not among the choices of the unit system.
  // Volume is tested against the choices of length.
  bool IsCustom() const;

  // Every field of concrete, but not set where it equals the current system's.
  void FromConcrete(const CMeasUnitSystem& concrete);
  // The fields into out, those not set from the current system.
  void ToConcrete(CMeasUnitSystem& out) const;
  // The fields that a change of settings carries over: all but temperature, pressure, start and
  // direction of angles, vertical angle and date format. The unit system raises no flag.
  void CopyFrom(const CMeasUnitSystem& other, bool copyFileNames);

  // Lowers the changed flag; where it was up, tells the context, if there is one.
  void Notify();
  // Lowers the flag and tells nobody.
  void ResetNotify() { m_changed = false; }

  // The user's settings, in the data folder's Support folder, and the shipped defaults, in the
  // program's. False if the file can't be opened (saving: or written; the old file then stays).
  // A file that ends early gives true: the fields that it lacks keep their values.
  bool LoadConfig();
  bool SaveConfig();
  bool LoadDefault();

  // A stored value as text, in its unit of display. A unit that the system doesn't know, and a size
  // that the kind doesn't have, give the empty text. What is rounded is rounded behind everything
  // else: a position a hair below the full circle reads "400.0000", not "0.0000" (its range ends
  // before the rounding), and a small negative number "-0.000". NaN reads "nan", and as 0 in parts.
  //
  // A length, metres: "12.500", or "41'0"1/8" in feet and inches and "492"1/8" in Smallest of them,
  // unless plainDecimal. A number of feet or inches in parts ends at 2147483647.
  kelp::WString FromDistToString(double v, enumDistType type = enumDistType::Distance,
                                 enumMeasUnitSize size = enumMeasUnitSize::Normal,
                                 int decimals = -1, bool plainDecimal = false) const;
  // Metres, in the units of the total station.
  kelp::WString FromTSDistToString(double v) const;
  // Square metres. In feet and inches the number of square feet is written as a length of feet is;
  // decimals don't count there. Volumes, cubic metres, likewise.
  kelp::WString FromAreaToString(double v, int decimals = -1) const;
  kelp::WString FromVolumeToString(double v) const;
  // Cubic metres per metre; a number of cubic units per unit of length.
  kelp::WString FromVolPerDistToString(double v) const;
  // Metric speed: "1.0", in Normal or Large.
  kelp::WString FromSpeedToString(double v, enumMeasUnitSize size = enumMeasUnitSize::Normal) const;
  // Gon: a direction in the full circle or, with position false, a signed turn in the half circles
  // on both sides of zero; by the system's start and direction. "33.8912", and in the forms of
  // degrees, minutes and seconds what DegToDMS gives. Geometric angles, radians, likewise.
  kelp::WString FromAngleToString(double v, bool position,
                                  enumMeasUnitSize size = enumMeasUnitSize::Normal) const;
  kelp::WString FromGeomAngleToString(double v, bool position,
                                      enumMeasUnitSize size = enumMeasUnitSize::Normal) const;
  // A direction, gon, in the units of the total station.
  kelp::WString FromTSAngleToString(double v) const;
  // An extent, gon and radians, in the full circle.
  kelp::WString FromLenAngleToString(double v,
                                     enumMeasUnitSize size = enumMeasUnitSize::Normal) const;
  kelp::WString FromLenGeomAngleToString(double v,
                                         enumMeasUnitSize size = enumMeasUnitSize::Normal) const;
  // Radians, with a hemisphere letter: "45°30'15.10000"N". They count by the system's start and
  // direction too: under another start or sense than north and clockwise what is shown isn't the
  // latitude or longitude itself, and only reads back under the same.
  kelp::WString FromLatAngleToString(double v) const;
  kelp::WString FromLonAngleToString(double v) const;
  // v is in valueSize of its stored unit, the text in size of the unit of display. An unknown kind
  // gives the empty text.
  kelp::WString FromValueToString(double v, enumMeasUnitValue kind, int decimals = -1,
                                  enumMeasUnitSize size = enumMeasUnitSize::Normal,
                                  enumMeasUnitSize valueSize = enumMeasUnitSize::Normal,
                                  bool plainDecimal = false) const;
  // first, where given, says whether this coordinate is the first in the display mode.
  void FromEastToString(double v, kelp::WString& out, bool* first = nullptr) const;
  void FromNorthToString(double v, kelp::WString& out, bool* first = nullptr) const;
  // In the order of the display mode.
  void FromCoordsToStrings(double east, double north, kelp::WString& s1, kelp::WString& s2,
                           bool* eastFirst = nullptr) const;

  // Text as a stored value, the mirror of the above: the text is in the unit of display, or by what
  // size says of it. Nothing is refused: text without a number reads as 0, what follows a number
  // doesn't count, and out of range parts count as they are. CheckValue (ValueCheck.h) is the
  // strict reading, for what people type. An unknown unit or size, and a number above the
  // threshold, give kelp::kNotSet.
  //
  // Numbers are read by DoubleDaString, feet and inches by FeetInchToFeet, degrees, minutes and
  // seconds by DMSToDeg; their headers tell the traps.
  double FromStringToDist(const kelp::WString& s, enumDistType type = enumDistType::Distance,
                          enumMeasUnitSize size = enumMeasUnitSize::Normal,
                          bool plainDecimal = false) const;
  double FromStringToTSDist(const kelp::WString& s) const;
  double FromStringToArea(const kelp::WString& s) const;
  double FromStringToVolume(const kelp::WString& s) const;
  double FromStringToVolPerDist(const kelp::WString& s) const;
  double FromStringToSpeed(const kelp::WString& s,
                           enumMeasUnitSize size = enumMeasUnitSize::Normal) const;
  double FromStringToAngle(const kelp::WString& s, bool position,
                           enumMeasUnitSize size = enumMeasUnitSize::Normal) const;
  double FromStringToGeomAngle(const kelp::WString& s, bool position,
                               enumMeasUnitSize size = enumMeasUnitSize::Normal) const;
  double FromStringToTSAngle(const kelp::WString& s) const;
  double FromStringToLenAngle(const kelp::WString& s,
                              enumMeasUnitSize size = enumMeasUnitSize::Normal) const;
  double FromStringToLenGeomAngle(const kelp::WString& s,
                                  enumMeasUnitSize size = enumMeasUnitSize::Normal) const;
  double FromStringToLatAngle(const kelp::WString& s) const;
  double FromStringToLonAngle(const kelp::WString& s) const;
  double FromStringToValue(const kelp::WString& s, enumMeasUnitValue kind,
                           enumMeasUnitSize size = enumMeasUnitSize::Normal,
                           enumMeasUnitSize valueSize = enumMeasUnitSize::Normal,
                           bool plainDecimal = false) const;
  // isEast, where given, says whether the first, or second, coordinate is the East one.
  void FromString1ToCoord(const kelp::WString& s, double& c, bool* isEast = nullptr) const;
  void FromString2ToCoord(const kelp::WString& s, double& c, bool* isEast = nullptr) const;
  void FromStringsToCoords(const kelp::WString& s1, const kelp::WString& s2, double& east,
                           double& north, bool* eastFirst = nullptr) const;

  // The order of the display mode; an unknown mode leaves the outputs alone.
  void CoordsToEastNorth(double c1, double c2, double& east, double& north,
                         bool* eastFirst = nullptr) const;
  void EastNorthToCoords(double east, double north, double& c1, double& c2,
                         bool* eastFirst = nullptr) const;

  // Between the stored unit and the unit of display, as numbers. Angles take the system's start and
  // direction on the display side; positions and extents come into the full circle, turns,
  // latitudes and longitudes into the half circles on both sides of zero.
  double ConvertDistToCurr(double v) const;
  double ConvertDistFromCurr(double v) const;
  double ConvertAreaToCurr(double v) const;
  double ConvertAreaFromCurr(double v) const;
  double ConvertVolumeToCurr(double v) const;
  double ConvertVolumeFromCurr(double v) const;
  double ConvertSpeedToCurr(double v) const;
  double ConvertSpeedFromCurr(double v) const;
  double ConvertPosAngleToCurr(double v) const;
  double ConvertPosAngleFromCurr(double v) const;
  double ConvertRotAngleToCurr(double v) const;
  double ConvertRotAngleFromCurr(double v) const;
  double ConvertLenAngleToCurr(double v) const;
  double ConvertLenAngleFromCurr(double v) const;
  double ConvertPosGeomAngleToCurr(double v) const;
  double ConvertPosGeomAngleFromCurr(double v) const;
  double ConvertRotGeomAngleToCurr(double v) const;
  double ConvertRotGeomAngleFromCurr(double v) const;
  double ConvertLenGeomAngleToCurr(double v) const;
  double ConvertLenGeomAngleFromCurr(double v) const;
  double ConvertTSAngleToCurr(double v) const;
  double ConvertTSAngleFromCurr(double v) const;
  double ConvertLatLonAngleToCurr(double v) const;
  double ConvertLatLonAngleFromCurr(double v) const;

 private:
  friend class CCurrMeasUnitInfo;

  // The order of the settings file.
  enum class Field : std::size_t {
    UnitSystem,
    DistUnits,
    TSDistUnits,
    AreaUnits,
    VolumeUnits,
    SpeedUnits,
    CoordDisplayMode,
    TSAngleUnits,
    AngleUnits,
    LatLonAngleUnits,
    TemperatureUnits,
    PressureUnits,
    HorizStartAngle,
    VertAngle,
    AngleDir,
    DateFormat,
    NumDistDec,
    NumTSDistDec,
    NumAreaDec,
    NumVolDec,
    NumSpeedDec,
    NumCoordDec,
    NumQuoteDec,
    NumTSAngleDec,
    NumAngleDec,
    NumLatLonAngleDec,
    DistInchDecPrec,
    TSDistInchDecPrec,
    AreaInchDecPrec,
    VolInchDecPrec,
    CoordInchDecPrec,
    QuoteInchDecPrec,
    Count
  };
  // A value that one thread may set while others read it.
  template <class T>
  class Shared {
   public:
    constexpr Shared(T value = T()) : m_value(value) {}
    Shared(const Shared& other) : m_value(other) {}
    Shared& operator=(const Shared& other) { return *this = static_cast<T>(other); }
    Shared& operator=(T value) {
      m_value.store(value, std::memory_order_relaxed);
      return *this;
    }
    operator T() const { return m_value.load(std::memory_order_relaxed); }

   private:
    std::atomic<T> m_value;
  };

  static constexpr std::size_t kFields = static_cast<std::size_t>(Field::Count);
  using Fields = std::array<Shared<std::int32_t>, kFields>;

  template <class T>
  T Get(Field field) const {
    return static_cast<T>(std::int32_t{m_fields[static_cast<std::size_t>(field)]});
  }
  template <class T>
  void Set(Field field, T value) {
    SetField(field, static_cast<std::int32_t>(value));
  }
  void SetField(Field field, std::int32_t value);
  void SetToNotSet();

  int GetDistNumDec(enumDistType type) const;
  enumInchDecPrec GetDistInchDecPrec(enumDistType type) const;

  bool Load(const kelp::WString& path);
  bool Save(const kelp::WString& path) const;
  void ReadFromFile(kelp::ifpstream& file, short version);
  void WriteToFile(kelp::ofpstream& file) const;

  static constexpr std::int32_t kNotSetField = -1;
  static const Fields kDefaults;

  kelp::WString m_defaultFile;
  kelp::WString m_configFile;
  Fields m_fields;
  Shared<bool> m_changed;
  CMeasUnitChangeContext* m_context = nullptr;
};
