// A file of compiled zone data ("TZif", RFC 9636); internal to the layer.
#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "kernel32/ZoneRule.h"

// From version 2 on the last line of a file is the rule for times behind its tables; it may be
// empty, as it is in older files. Nothing for what is no such file.
std::optional<std::string> LastLineOfZoneFile(const std::string& path);

// What a file has, so that its clock can be read without being that of the process.
class ZoneFile {
 public:
  // Nothing for what is no such file, or has tables that don't fit into it.
  static std::optional<ZoneFile> Read(const std::string& path);

  // What is in force at a moment. Before the first change it is the file's first period.
  ZonePeriod PeriodAt(std::chrono::sys_seconds moment) const;
  const std::string& LastLine() const { return m_lastLine; }

 private:
  struct Change {
    std::int64_t moment;  // seconds since 1970
    std::size_t period;
  };
  class Reader;

  std::vector<Change> m_changes;  // in their order
  std::vector<ZonePeriod> m_periods;
  std::string m_lastLine;
  std::optional<ZoneRule> m_rule;
};
