// Reads a text from the left, one piece at a time.
#pragma once

#include <algorithm>
#include <optional>

#include "fieldbook/values/Text.h"

namespace fieldbook {

class Scanner {
 public:
  explicit Scanner(WideView text) : m_rest(Trimmed(text)) {}

  bool AtEnd() const { return m_rest.empty(); }
  // The unit ahead, 0 at the end.
  WChar Ahead() const { return m_rest.empty() ? WChar{0} : m_rest.front(); }

  bool Take(WChar unit) {
    if (m_rest.empty() || m_rest.front() != unit) return false;
    m_rest.remove_prefix(1);
    return true;
  }
  bool TakeOneOf(WideView units) {
    if (m_rest.empty() || units.find(m_rest.front()) == WideView::npos) return false;
    m_rest.remove_prefix(1);
    return true;
  }
  // Whatever unit stands ahead, 0 at the end.
  WChar TakeAny() {
    const WChar unit = Ahead();
    if (!m_rest.empty()) m_rest.remove_prefix(1);
    return unit;
  }
  // True for a minus sign; a plus sign goes too.
  bool TakeSign() {
    if (Take(KTEXT('-'))) return true;
    Take(KTEXT('+'));
    return false;
  }
  WideView TakeDigits() {
    const auto end = std::find_if_not(m_rest.begin(), m_rest.end(), IsDigit<WChar>);
    const WideView digits = m_rest.substr(0, static_cast<std::size_t>(end - m_rest.begin()));
    m_rest.remove_prefix(digits.size());
    return digits;
  }
  // A whole number without sign; nothing where there is none or it has more than nine digits.
  std::optional<int> TakeWhole() {
    const WideView digits = TakeDigits();
    if (digits.empty() || digits.size() > 9) return std::nullopt;
    int value = 0;
    for (const WChar digit : digits) value = value * 10 + (digit - KTEXT('0'));
    return value;
  }
  // Whether there was one.
  bool TakeBlanks() {
    const WideView before = m_rest;
    while (!m_rest.empty() && IsBlank(m_rest.front())) m_rest.remove_prefix(1);
    return m_rest.size() != before.size();
  }

 private:
  WideView m_rest;
};

}  // namespace fieldbook
