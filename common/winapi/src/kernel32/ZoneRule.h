// The rule of a time zone as POSIX writes it: "CET-1CEST,M3.5.0,M10.5.0/3".
#pragma once

#include <chrono>
#include <optional>
#include <string>
#include <string_view>

inline constexpr unsigned kLastWeek = 5;

// A day of every year, and a time on its clock.
struct ZoneDate {
  enum class Form {
    WeekOfMonth,      // "M3.5.0"
    DayOfCommonYear,  // "J60": 1 to 365, and 29 February never counts
    DayOfYear,        // "59": from 0
  };
  Form form = Form::WeekOfMonth;
  unsigned month = 0;
  unsigned week = 0;             // from 1; kLastWeek is the last of the month
  unsigned weekday = 0;          // Sunday is 0
  int day = 0;                   // in the other forms
  std::chrono::seconds time{0};  // up to a week before the day or behind it

  std::chrono::sys_days DayIn(std::chrono::year year) const;
};

struct ZonePeriod {
  std::string name;
  std::chrono::seconds offset{0};  // East of Greenwich is positive
};

struct ZoneDaylight {
  ZonePeriod period;
  // On the clock as it reads before the change.
  ZoneDate begin;
  ZoneDate end;
};

struct ZoneRule {
  ZonePeriod standard;
  std::optional<ZoneDaylight> daylight;

  // The moments at which daylight saving, which there is, begins and ends in a year.
  std::chrono::sys_seconds BeginIn(std::chrono::year year) const;
  std::chrono::sys_seconds EndIn(std::chrono::year year) const;
  // Whether daylight saving is in force, by the rules of the year that the moment falls into.
  bool IsDaylight(std::chrono::sys_seconds moment) const;
};

// Nothing for a text that isn't a rule. Daylight saving without dates has those of the United
// States. Of the two offsets the lesser is standard time, whatever the rule calls it, and daylight
// saving that never ends is standard time.
std::optional<ZoneRule> ParseZoneRule(std::string_view text);
