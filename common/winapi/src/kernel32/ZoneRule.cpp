#include "kernel32/ZoneRule.h"

#include <algorithm>
#include <cstddef>
#include <utility>

using std::chrono::days;
using std::chrono::hours;
using std::chrono::minutes;
using std::chrono::seconds;
using std::chrono::sys_days;
using std::chrono::sys_seconds;
using std::chrono::year;

namespace {

constexpr std::string_view kDefaultDates = ",M3.2.0,M11.1.0";
constexpr int kHoursOfOffset = 24;
constexpr int kHoursOfChange = 167;
constexpr seconds kDefaultTime = hours(2);

bool IsDigit(char c) {
  return c >= '0' && c <= '9';
}

bool IsLetter(char c) {
  return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}

// Reads a rule from its front. A piece that isn't there makes it fail for good.
class Reader {
 public:
  explicit Reader(std::string_view text) : m_rest(text) {}

  bool Failed() const { return m_failed; }
  bool AtEnd() const { return m_rest.empty(); }
  bool Next(char c) const { return !m_rest.empty() && m_rest.front() == c; }

  bool Take(char c) {
    if (!Next(c)) return false;
    m_rest.remove_prefix(1);
    return true;
  }

  void Expect(char c) {
    if (!Take(c)) m_failed = true;
  }

  int Number(int least, int most) {
    int number = 0;
    std::size_t length = 0;
    while (length < m_rest.size() && IsDigit(m_rest[length]) && number <= most) {
      number = number * 10 + (m_rest[length++] - '0');
    }
    m_rest.remove_prefix(length);
    if (length == 0 || number < least || number > most) m_failed = true;
    return number;
  }

  // [+-]hh[:mm[:ss]]
  seconds Time(int mostHours) {
    const bool negative = Take('-');
    if (!negative) Take('+');
    seconds time = hours(Number(0, mostHours));
    if (Take(':')) {
      time += minutes(Number(0, 59));
      if (Take(':')) time += seconds(Number(0, 59));
    }
    return negative ? -time : time;
  }

  // Three letters or more; between "<" and ">" digits and signs too.
  std::string Name() {
    const bool quoted = Take('<');
    const auto end = std::find_if_not(m_rest.begin(), m_rest.end(), [quoted](char c) {
      return IsLetter(c) || (quoted && (IsDigit(c) || c == '+' || c == '-'));
    });
    std::string name(m_rest.begin(), end);
    m_rest.remove_prefix(name.size());
    if (name.size() < 3) m_failed = true;
    if (quoted) Expect('>');
    return name;
  }

  ZonePeriod Period() {
    ZonePeriod period;
    period.name = Name();
    period.offset = -Time(kHoursOfOffset);
    return period;
  }

  ZoneDate Date() {
    ZoneDate date;
    if (Take('M')) {
      date.month = Number(1, 12);
      Expect('.');
      date.week = Number(1, kLastWeek);
      Expect('.');
      date.weekday = Number(0, 6);
    } else if (Take('J')) {
      date.form = ZoneDate::Form::DayOfCommonYear;
      date.day = Number(1, 365);
    } else {
      date.form = ZoneDate::Form::DayOfYear;
      date.day = Number(0, 365);
    }
    date.time = Take('/') ? Time(kHoursOfChange) : kDefaultTime;
    return date;
  }

  ZoneDaylight Daylight(const ZonePeriod& standard) {
    ZoneDaylight daylight;
    daylight.period.name = Name();
    daylight.period.offset = standard.offset + hours(1);
    if (!AtEnd() && !Next(',')) daylight.period.offset = -Time(kHoursOfOffset);
    Reader defaults(kDefaultDates);
    Reader& dates = AtEnd() ? defaults : *this;
    dates.Expect(',');
    daylight.begin = dates.Date();
    dates.Expect(',');
    daylight.end = dates.Date();
    return daylight;
  }

 private:
  std::string_view m_rest;
  bool m_failed = false;
};

sys_seconds MomentOf(const ZoneDate& date, year y, const ZonePeriod& before) {
  return date.DayIn(y) + date.time - before.offset;
}

year YearOf(sys_seconds moment) {
  return std::chrono::year_month_day(std::chrono::floor<days>(moment)).year();
}

// As "LMT3EDT4,0/0,J365/23" is written: the end of a year's is the begin of the next one's.
bool NeverEnds(const ZoneRule& rule) {
  constexpr year kAny(2001);
  return rule.EndIn(kAny) >= rule.BeginIn(kAny + std::chrono::years(1));
}

}  // namespace

sys_days ZoneDate::DayIn(year y) const {
  if (form == Form::DayOfYear) return sys_days(y / 1 / 1) + days(day);
  if (form == Form::DayOfCommonYear) {
    const int leapDay = y.is_leap() && day >= 60 ? 1 : 0;
    return sys_days(y / 1 / 1) + days(day - 1 + leapDay);
  }
  const std::chrono::weekday dayOfWeek(weekday);
  if (week == kLastWeek) return y / static_cast<int>(month) / dayOfWeek[std::chrono::last];
  return y / static_cast<int>(month) / dayOfWeek[week];
}

sys_seconds ZoneRule::BeginIn(year y) const {
  return MomentOf(daylight->begin, y, standard);
}

sys_seconds ZoneRule::EndIn(year y) const {
  return MomentOf(daylight->end, y, daylight->period);
}

bool ZoneRule::IsDaylight(sys_seconds moment) const {
  if (!daylight) return false;
  const year y = YearOf(moment + standard.offset);
  const sys_seconds begin = BeginIn(y);
  const sys_seconds end = EndIn(y);
  if (begin < end) return begin <= moment && moment < end;
  return begin <= moment || moment < end;
}

std::optional<ZoneRule> ParseZoneRule(std::string_view text) {
  Reader reader(text);
  ZoneRule rule;
  rule.standard = reader.Period();
  if (!reader.Failed() && !reader.AtEnd()) rule.daylight = reader.Daylight(rule.standard);
  if (reader.Failed() || !reader.AtEnd()) return std::nullopt;
  if (!rule.daylight) return rule;
  if (NeverEnds(rule)) {
    rule.standard = rule.daylight->period;
    rule.daylight.reset();
  } else if (rule.daylight->period.offset < rule.standard.offset) {
    std::swap(rule.daylight->period, rule.standard);
    std::swap(rule.daylight->begin, rule.daylight->end);
  }
  return rule;
}
