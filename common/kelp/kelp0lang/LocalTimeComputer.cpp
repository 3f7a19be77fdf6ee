#include "kelp0lang/LocalTimeComputer.h"

#include <windows.h>
// It needs the one before.
#include <shlwapi.h>

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <iterator>
#include <utility>

#include "kelp0lang/Calendar.h"

namespace kelp {

using detail::FieldsOrEndOfDayToMs;
using detail::kDaysOfWeek;
using detail::kMonths;

namespace {

using Passage = CLocalTimeComputer::stCachedPassage;

// The years of the platform's calendar.
constexpr unsigned short kFirstYear = 1601;
constexpr unsigned short kLastYear = 30827;
constexpr std::int32_t kMsPerMinute = 60'000;
constexpr int kLastWeek = 5;

bool IsMonth(int month) {
  return month >= 1 && month <= kMonths;
}

// Local minus UTC under the biases of a zone and of a part of its year, in 32 bits as these are.
std::int32_t OffsetMs(LONG bias, LONG partBias) {
  const std::uint32_t minutes =
      static_cast<std::uint32_t>(bias) + static_cast<std::uint32_t>(partBias);
  return static_cast<std::int32_t>(minutes * static_cast<std::uint32_t>(-kMsPerMinute));
}

std::uint64_t ToLocal(std::uint64_t utcMs, std::int32_t offsetMs) {
  return utcMs + static_cast<std::uint64_t>(std::int64_t{offsetMs});
}

std::uint64_t ToUtc(std::uint64_t localMs, std::int32_t offsetMs) {
  return localMs - static_cast<std::uint64_t>(std::int64_t{offsetMs});
}

_SYSTEMTIME DateOf(unsigned short year, WORD month, WORD day) {
  _SYSTEMTIME date = {};
  date.wYear = year;
  date.wMonth = month;
  date.wDay = day;
  return date;
}

int WeekdayOf(_SYSTEMTIME date) {
  FILETIME ticks = {};
  SystemTimeToFileTime(&date, &ticks);
  FileTimeToSystemTime(&ticks, &date);
  return date.wDayOfWeek;
}

// There are two passages for each year, and none lies more than a month outside its own, as offsets
// have 32 bits. So, where they ascend, only those of the moment's year and of its neighbours are
// looked at, and these all, without a jump: what moments are asked for can't be foretold.
int LastAtOrBefore(const std::vector<Passage>& passages, std::uint64_t Passage::*column,
                   std::uint64_t ms) {
  constexpr std::uint64_t kMsPerYear = 31'556'952'000;  // the mean one of the calendar
  constexpr std::int64_t kOfThreeYears = 6;
  const auto size = static_cast<std::int64_t>(passages.size());
  if (size == 0) return -1;
  const auto year = static_cast<std::int64_t>(ms / kMsPerYear) + kFirstYear;
  const std::int64_t count = std::min(size, kOfThreeYears);
  const std::int64_t first =
      std::clamp<std::int64_t>((year - 1 - passages.front().year) * 2, 0, size - count);
  std::int64_t passed = first;
  for (std::int64_t i = first; i < first + count; ++i) {
    passed += passages[static_cast<std::size_t>(i)].*column <= ms;
  }
  return static_cast<int>(passed) - 1;
}

// Where changes meet or overtake one another, it is this search that says which of them counts.
int SearchLast(const std::vector<Passage>& passages, std::uint64_t Passage::*column,
               std::uint64_t ms) {
  std::size_t low = 0;
  std::size_t high = passages.size();
  while (low < high) {
    const std::size_t middle = (low + high) / 2;
    const std::uint64_t value = passages[middle].*column;
    if (value == ms) return static_cast<int>(middle);
    if (value < ms) {
      low = middle + 1;
    } else {
      high = middle;
    }
  }
  return static_cast<int>(low) - 1;
}

#ifdef _WIN32
// Out of the registry, since the call that lists zones is there from Windows 8 on alone.
bool FindZone(const WString& name, _TIME_ZONE_INFORMATION& zone) {
  struct {  // REG_TZI_FORMAT, as the documentation of the record tells it
    LONG bias, standardBias, daylightBias;
    _SYSTEMTIME standardDate, daylightDate;
  } stored;
  DWORD size = sizeof stored;
  const WString key = KTEXT("SOFTWARE\\Microsoft\\Windows NT\\CurrentVersion\\Time Zones\\") + name;
  // The years of a zone are keys below its own.
  if (name.IndexOf(KTEXT('\\')) >= 0 ||
      SHGetValueW(HKEY_LOCAL_MACHINE, key.c_str(), KTEXT("TZI"), nullptr, &stored, &size) !=
          ERROR_SUCCESS ||
      size != sizeof stored) {
    return false;
  }
  zone.Bias = stored.bias;
  zone.StandardBias = stored.standardBias;
  zone.DaylightBias = stored.daylightBias;
  zone.StandardDate = stored.standardDate;
  zone.DaylightDate = stored.daylightDate;
  return true;
}
#else
bool FindZone(const WString& name, _TIME_ZONE_INFORMATION& zone) {
  DYNAMIC_TIME_ZONE_INFORMATION listed;
  for (DWORD i = 0; EnumDynamicTimeZoneInformation(i, &listed) == ERROR_SUCCESS; ++i) {
    if (name != listed.TimeZoneKeyName) continue;
    // The one record begins as the other.
    std::memcpy(&zone, &listed, sizeof zone);
    return true;
  }
  return false;
}
#endif

bool Ascend(const Passage& a, const Passage& b) {
  return a.utcMs < b.utcMs && a.localMs < b.localMs;
}

}  // namespace

// The three that each conversion runs through are inline, as calls within the library of exported
// members otherwise go through its table of symbols.

inline void CLocalTimeComputer::EnsurePassagesPresent(enumIntervalType type, std::uint64_t ms) {
  const bool isUtc = type == enumIntervalType::Utc;
  if (ms < (isUtc ? m_minUtcMs : m_minLocalMs)) {
    AddPastYears(type, ms);
  } else if (ms > (isUtc ? m_maxUtcMs : m_maxLocalMs)) {
    AddFutureYears(type, ms);
  }
}

inline int CLocalTimeComputer::FindPassage(enumIntervalType type, std::uint64_t ms) const {
  const auto column = type == enumIntervalType::Utc ? &Passage::utcMs : &Passage::localMs;
  return m_ascend ? LastAtOrBefore(m_passages, column, ms) : SearchLast(m_passages, column, ms);
}

inline const Passage& CLocalTimeComputer::PassageInForce(enumIntervalType type, std::uint64_t ms) {
  EnsurePassagesPresent(type, ms);
  const int place = FindPassage(type, ms);
  // Nothing before 1601: the year that would be there ends as the first one does.
  return m_passages[place >= 0 ? place : 1];
}

CLocalTimeComputer::CLocalTimeComputer() {
  GetTimeZoneInformation(&m_zone);
  Init();
}

void CLocalTimeComputer::SetTimeZoneInformation(const _TIME_ZONE_INFORMATION& zone) {
  m_zone = zone;
  Init();
}

bool CLocalTimeComputer::SetTimeZone(const WString& name) {
  _TIME_ZONE_INFORMATION zone = {};
  if (!FindZone(name, zone)) return false;
  SetTimeZoneInformation(zone);
  return true;
}

std::uint64_t CLocalTimeComputer::Utc_to_Local(std::uint64_t utcMs) {
  return ToLocal(utcMs, PassageInForce(enumIntervalType::Utc, utcMs).offsetMs);
}

std::uint64_t CLocalTimeComputer::Local_to_Utc(std::uint64_t localMs) {
  return ToUtc(localMs, PassageInForce(enumIntervalType::Local, localMs).offsetMs);
}

std::uint64_t CLocalTimeComputer::Utc_to_Zone(std::uint64_t utcMs) const {
  return ToLocal(utcMs, OffsetMs(m_zone.Bias, 0));
}

std::uint64_t CLocalTimeComputer::Zone_to_Utc(std::uint64_t zoneMs) const {
  return ToUtc(zoneMs, OffsetMs(m_zone.Bias, 0));
}

bool CLocalTimeComputer::IsUtcTimeInDaylight(std::uint64_t utcMs) {
  return PassageInForce(enumIntervalType::Utc, utcMs).daylight != 0;
}

bool CLocalTimeComputer::IsLocalTimeInDaylight(std::uint64_t localMs) {
  return PassageInForce(enumIntervalType::Local, localMs).daylight != 0;
}

void CLocalTimeComputer::Init() {
  ClearAll();
  _SYSTEMTIME now;
  GetLocalTime(&now);
  Passage two[2];
  CalcPassagesInYear(now.wYear, two);
  m_passages.assign(std::begin(two), std::end(two));
  m_ascend = Ascend(two[0], two[1]);
  UpdateMinMax();
}

void CLocalTimeComputer::ClearAll() {
  m_passages.clear();
}

void CLocalTimeComputer::UpdateMinMax() {
  m_minUtcMs = m_passages.front().utcMs;
  m_maxUtcMs = m_passages.back().utcMs;
  m_minLocalMs = m_passages.front().localMs;
  m_maxLocalMs = m_passages.back().localMs;
}

void CLocalTimeComputer::CalcPassagesInYear(unsigned short year, stCachedPassage* two) const {
  if (IsMonth(m_zone.StandardDate.wMonth) && IsMonth(m_zone.DaylightDate.wMonth)) {
    const std::int32_t standard = OffsetMs(m_zone.Bias, m_zone.StandardBias);
    const std::int32_t daylight = OffsetMs(m_zone.Bias, m_zone.DaylightBias);
    _SYSTEMTIME date;
    CalcSinglePassage(year, m_zone.DaylightDate, date);
    const std::uint64_t begin = FieldsOrEndOfDayToMs(date);
    CalcSinglePassage(year, m_zone.StandardDate, date);
    const std::uint64_t end = FieldsOrEndOfDayToMs(date);
    two[0] = {ToUtc(begin, standard), begin, daylight, year, 1};
    two[1] = {ToUtc(end, daylight), end, standard, year, 0};
    if (two[0].utcMs > two[1].utcMs) std::swap(two[0], two[1]);
    return;
  }
  // Two that change nothing keep the cache going.
  const std::int32_t offset = OffsetMs(m_zone.Bias, 0);
  _SYSTEMTIME dates[] = {DateOf(year, 1, 2), DateOf(year, 12, 30)};
  for (int i = 0; i < 2; ++i) {
    const std::uint64_t ms = detail::FieldsToMs(dates[i]);
    two[i] = {ms, ToLocal(ms, offset), offset, year, 0};
  }
}

void CLocalTimeComputer::CalcSinglePassage(unsigned short year, const _SYSTEMTIME& rule,
                                           _SYSTEMTIME& result) const {
  const int length = detail::DaysInMonth(year, rule.wMonth);
  const int first = WeekdayOf(DateOf(year, rule.wMonth, 1));
  int day = rule.wDayOfWeek - first + 1;
  if (first > rule.wDayOfWeek) day += kDaysOfWeek;
  const int weeks = rule.wDay == kLastWeek ? (length - day) / kDaysOfWeek : rule.wDay - 1;
  day += weeks * kDaysOfWeek;
  while (day > length) day -= kDaysOfWeek;
  result = rule;
  result.wYear = year;
  result.wDay = static_cast<WORD>(day);
}

void CLocalTimeComputer::AddPastYears(enumIntervalType type, std::uint64_t ms) {
  const std::uint64_t& least = type == enumIntervalType::Utc ? m_minUtcMs : m_minLocalMs;
  while (ms < least && m_passages.front().year > kFirstYear) {
    Passage two[2];
    CalcPassagesInYear(m_passages.front().year - 1, two);
    m_ascend = m_ascend && Ascend(two[0], two[1]) && Ascend(two[1], m_passages.front());
    m_passages.insert(m_passages.begin(), std::begin(two), std::end(two));
    UpdateMinMax();
  }
}

void CLocalTimeComputer::AddFutureYears(enumIntervalType type, std::uint64_t ms) {
  const std::uint64_t& most = type == enumIntervalType::Utc ? m_maxUtcMs : m_maxLocalMs;
  while (ms > most && m_passages.back().year < kLastYear) {
    Passage two[2];
    CalcPassagesInYear(m_passages.back().year + 1, two);
    m_ascend = m_ascend && Ascend(m_passages.back(), two[0]) && Ascend(two[0], two[1]);
    m_passages.insert(m_passages.end(), std::begin(two), std::end(two));
    UpdateMinMax();
  }
}

CGlobalLocalTimeComputer& CGlobalLocalTimeComputer::GetInstance() {
  static constinit CGlobalLocalTimeComputer* instance = nullptr;
  if (instance == nullptr) instance = new CGlobalLocalTimeComputer;
  return *instance;
}

std::uint64_t CGlobalLocalTimeComputer::Utc_to_Local(std::uint64_t utcMs) {
  const CCriticalSecLock lock(&m_section);
  return m_computer.Utc_to_Local(utcMs);
}

std::uint64_t CGlobalLocalTimeComputer::Local_to_Utc(std::uint64_t localMs) {
  const CCriticalSecLock lock(&m_section);
  return m_computer.Local_to_Utc(localMs);
}

}  // namespace kelp
