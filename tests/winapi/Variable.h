// A variable of the environment that a test sets; for tests of what only the layer has.
#pragma once

#include <stdlib.h>

#include <optional>
#include <string>

// Sets a variable of the environment for a scope; null takes it away.
class Variable {
 public:
  Variable(const char* name, const char* value) : m_name(name) {
    if (const char* old = getenv(name)) m_old = old;
    Set(value);
  }
  ~Variable() { Set(m_old ? m_old->c_str() : nullptr); }
  Variable(const Variable&) = delete;
  Variable& operator=(const Variable&) = delete;

 private:
  void Set(const char* value) {
    if (value == nullptr) {
      unsetenv(m_name);
    } else {
      setenv(m_name, value, 1);
    }
  }
  const char* m_name;
  std::optional<std::string> m_old;
};
