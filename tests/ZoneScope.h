// The zone of the process for a scope, where TZ sets it.
#pragma once

#include <ctime>

#include "tests/winapi/Variable.h"

// What TZ is to say; null unsets it.
class ZoneScope {
 public:
  explicit ZoneScope(const char* zone) : m_zone("TZ", zone) { tzset(); }

 private:
  Variable m_zone;
};
