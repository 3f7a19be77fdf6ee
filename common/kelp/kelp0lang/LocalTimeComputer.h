// Local time of one zone, without asking the operating system for each conversion.
//
//   kelp::CLocalTimeComputer computer;           // the machine's zone
//   const std::uint64_t localMs = computer.Utc_to_Local(utcMs);
//   if (!computer.SetTimeZone(KTEXT("Europe/Rome"))) ...  // another zone
//
// Moments and clock readings are milliseconds since 1601, as in UtcTime.h. The rules of the zone
// give two passages for each year, the moments at which another offset takes effect; they hold for
// all years, past ones too. Passages are kept, by whole years, from the earliest to the latest year
// that has been asked for: a conversion between them looks at those around its own year.
//
// A reading that the clock skips in spring counts as daylight saving time, and one that it shows
// twice in autumn as the first of the two, also daylight saving time.
//
// Rules whose two changes meet on the clock, or overtake one another by their offsets, give an
// answer too, but which of the changes counts there depends on the years asked for so far.
//
// Before the first passage of the year 1601 the offset is that with which years end; behind the
// last one of 30827 it stays.
//
// Threads: conversions too may add years, so a computer is for one thread at a time. The
// process-wide one has a lock.
#pragma once

#include <windows.h>

#include <cstdint>
#include <vector>

#include "kelp0lang/CriticalSec.h"
#include "kelp0lang/Export.h"
#include "kelp0lang/Singleton.h"
#include "kelp0lang/String.h"

namespace kelp {

class KELP0LANG_API CLocalTimeComputer {
 public:
  // The moment at which a new offset takes effect.
  struct stCachedPassage {
    std::uint64_t utcMs;
    std::uint64_t localMs;  // on the clock as it reads before the change
    std::int32_t offsetMs;  // local minus UTC from here on
    std::uint16_t year;
    std::uint16_t daylight;  // 1: daylight saving from here on
  };

  // The column of a passage in which a lookup goes.
  enum class enumIntervalType : std::int32_t { Utc, Local };

  // For the machine's zone.
  CLocalTimeComputer();
  CLocalTimeComputer(const CLocalTimeComputer&) = default;
  CLocalTimeComputer& operator=(const CLocalTimeComputer&) = default;

  // Takes another zone. Its dates are read as a weekday of a week of the month, whatever their
  // year; the zone has daylight saving if both months are from 1 to 12.
  void SetTimeZoneInformation(const _TIME_ZONE_INFORMATION& zone);
  // Takes the zone that the system has under a name: "Europe/Rome", on Windows "W. Europe Standard
  // Time". False where it has none, which leaves all as it is. Elsewhere than on Windows the whole
  // list of zones is gone through, which takes some milliseconds.
  bool SetTimeZone(const WString& name);

  std::uint64_t Utc_to_Local(std::uint64_t utcMs);
  std::uint64_t Local_to_Utc(std::uint64_t localMs);
  // By the zone's Bias alone, without daylight saving.
  std::uint64_t Utc_to_Zone(std::uint64_t utcMs) const;
  std::uint64_t Zone_to_Utc(std::uint64_t zoneMs) const;

  bool IsUtcTimeInDaylight(std::uint64_t utcMs);
  bool IsLocalTimeInDaylight(std::uint64_t localMs);

 private:
  void Init();
  void ClearAll();
  void UpdateMinMax();
  void CalcPassagesInYear(unsigned short year, stCachedPassage* two) const;
  void CalcSinglePassage(unsigned short year, const _SYSTEMTIME& rule, _SYSTEMTIME& result) const;
  void EnsurePassagesPresent(enumIntervalType type, std::uint64_t ms);
  void AddPastYears(enumIntervalType type, std::uint64_t ms);
  void AddFutureYears(enumIntervalType type, std::uint64_t ms);
  // The place of the last passage at or before ms, -1 for none.
  int FindPassage(enumIntervalType type, std::uint64_t ms) const;
  const stCachedPassage& PassageInForce(enumIntervalType type, std::uint64_t ms);

  _TIME_ZONE_INFORMATION m_zone;
  std::vector<stCachedPassage> m_passages;
  std::uint64_t m_minUtcMs;
  std::uint64_t m_maxUtcMs;
  std::uint64_t m_minLocalMs;
  std::uint64_t m_maxLocalMs;
  bool m_ascend;  // whether the passages do, in both columns
};

// The one of the process, for the machine's zone; built when the library is loaded.
class KELP0LANG_API CGlobalLocalTimeComputer : public ISingleton {
 public:
  static CGlobalLocalTimeComputer& GetInstance();

  // Under the lock.
  std::uint64_t Utc_to_Local(std::uint64_t utcMs);
  std::uint64_t Local_to_Utc(std::uint64_t localMs);

  // Without it: for what runs beside no conversion, or only reads the zone.
  CLocalTimeComputer& GetComputer() { return m_computer; }

 private:
  CGlobalLocalTimeComputer() = default;

  CCriticalSec m_section;
  CLocalTimeComputer m_computer;
};

}  // namespace kelp
