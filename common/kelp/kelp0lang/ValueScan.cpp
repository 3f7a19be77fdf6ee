#include "kelp0lang/ValueScan.h"

#include <algorithm>
#include <cmath>
#include <iterator>

#include "kelptext/DecimalText.h"
#include "kelptext/Digits.h"

namespace kelp::detail {
namespace {

// Those of the keyboard, an end of line, and those that typesetting programs put between number and
// unit.
constexpr WideView kBlanks = KTEXT(" \t\r\n\u00A0\u2009\u202F");
// Hyphen and minus, the hyphens of typesetting, the en dash.
constexpr WideView kDashes = KTEXT("-\u2010\u2011\u2012\u2013\u2212");
constexpr WideView kDecimalMarks = KTEXT(".,");

struct FractionSign {
  WChar unit;
  int numerator;
  int denominator;
};

constexpr FractionSign kFractionSigns[] = {
    {KTEXT('\u00BD'), 1, 2}, {KTEXT('\u00BC'), 1, 4}, {KTEXT('\u00BE'), 3, 4},
    {KTEXT('\u2153'), 1, 3}, {KTEXT('\u2154'), 2, 3}, {KTEXT('\u215B'), 1, 8},
    {KTEXT('\u215C'), 3, 8}, {KTEXT('\u215D'), 5, 8}, {KTEXT('\u215E'), 7, 8},
};

bool Contains(WideView units, WChar unit) {
  return unit != 0 && units.find(unit) != WideView::npos;
}

WChar Lower(WChar unit) {
  return unit >= KTEXT('A') && unit <= KTEXT('Z') ? static_cast<WChar>(unit + 0x20) : unit;
}

bool IsLetter(WChar unit) {
  return Lower(unit) >= KTEXT('a') && Lower(unit) <= KTEXT('z');
}

bool IsSlash(WChar unit) {
  return unit == KTEXT('/') || unit == KTEXT('\u2044');
}

const FractionSign* FindFraction(WChar unit) {
  const auto* found = std::find_if(std::begin(kFractionSigns), std::end(kFractionSigns),
                                   [unit](const FractionSign& sign) { return sign.unit == unit; });
  return found == std::end(kFractionSigns) ? nullptr : found;
}

}  // namespace

ValueScan::ValueScan(const WString& text)
    : m_begin(text.c_str()), m_start(m_begin), m_end(m_begin + text.Length()) {
  while (m_start != m_end && Contains(kBlanks, *m_start)) ++m_start;
  while (m_end != m_start && Contains(kBlanks, m_end[-1])) --m_end;
  m_at = m_start;
  if (AtEnd()) Fail(kNoValueFault);
}

bool ValueScan::IsDigitAhead() const {
  return IsDigit(Ahead());
}

bool ValueScan::IsAmountAhead() const {
  return IsDigitAhead() || FindFraction(Ahead()) != nullptr;
}

bool ValueScan::TakeBlanks() {
  const WChar* const before = m_at;
  while (Contains(kBlanks, Ahead())) ++m_at;
  return m_at != before;
}

bool ValueScan::Take(WChar unit) {
  if (AtEnd() || Ahead() != unit) return false;
  ++m_at;
  return true;
}

bool ValueScan::TakeOneOf(WideView units) {
  if (!Contains(units, Ahead())) return false;
  ++m_at;
  return true;
}

bool ValueScan::TakeWord(WideView word) {
  const auto size = static_cast<int>(word.size());
  if (m_end - m_at < size || IsLetter(Ahead(size))) return false;
  const bool same = std::equal(word.begin(), word.end(), m_at,
                               [](WChar wanted, WChar unit) { return wanted == Lower(unit); });
  if (same) m_at += size;
  return same;
}

bool ValueScan::TakeDash() {
  return TakeOneOf(kDashes);
}

bool ValueScan::TakeSign(bool& negative, bool& hasSign) {
  negative = TakeDash();
  hasSign = negative || Take(KTEXT('+'));
  if (!hasSign) return true;
  TakeBlanks();
  return Contains(kDashes, Ahead()) || Ahead() == KTEXT('+') ? Fail(kSignFault) : true;
}

double ValueScan::Read(const WChar* begin, const WChar* end) const {
  // The parser takes an exponent for one where the letter of a hemisphere stands.
  constexpr std::ptrdiff_t kRoom = 64;
  WChar room[kRoom];
  const bool comma = std::find(begin, end, KTEXT(',')) != end;
  const WChar point = comma ? KTEXT(',') : KTEXT('.');
  if (end - begin >= kRoom) {
    return ParseDecimal(WString(begin, 0, static_cast<int>(end - begin)).c_str(), point);
  }
  *std::copy(begin, end, room) = 0;
  return ParseDecimal(room, point);
}

bool ValueScan::TakeNumber(Amount& amount, bool allowExponent) {
  const auto digits = [this] {
    const WChar* const begin = m_at;
    m_at = std::find_if_not(m_at, m_end, IsDigit<WChar>);
    return WideView(begin, static_cast<std::size_t>(m_at - begin));
  };
  const WChar* const begin = m_at;
  amount.whole = digits();
  const bool marked = TakeOneOf(kDecimalMarks);
  amount.decimals = marked ? digits() : WideView();
  amount.isWhole = !marked;
  if (amount.whole.empty() && amount.decimals.empty()) return Fail(kNumberFault, begin);
  if (Contains(kDecimalMarks, Ahead())) return Fail(kGroupFault);

  const int sign = Contains(KTEXT("+-"), Ahead(1)) ? 1 : 0;
  if (allowExponent && Lower(Ahead()) == KTEXT('e') && IsDigit(Ahead(1 + sign))) {
    m_at += 1 + sign;
    digits();
    amount.isWhole = false;
  }
  amount.value = Read(begin, m_at);
  return true;
}

bool ValueScan::IsFractionAhead() const {
  if (FindFraction(Ahead()) != nullptr) return true;
  const WChar* const slash = std::find_if_not(m_at, m_end, IsDigit<WChar>);
  return slash != m_at && slash != m_end && IsSlash(*slash);
}

bool ValueScan::TakeFraction(double& value) {
  const FractionSign* const sign = FindFraction(Ahead());
  if (sign != nullptr) {
    ++m_at;
    value = static_cast<double>(sign->numerator) / sign->denominator;
    return true;
  }
  const WChar* const begin = m_at;
  const WChar* const slash = std::find_if_not(m_at, m_end, IsDigit<WChar>);
  if (slash == begin || slash == m_end || !IsSlash(*slash)) return Fail(kNumberFault);
  m_at = std::find_if_not(slash + 1, m_end, IsDigit<WChar>);
  if (m_at == slash + 1) return Fail(kNumberFault);
  const double denominator = Read(slash + 1, m_at);
  if (denominator == 0) return Fail(kDenominatorFault, slash + 1);
  value = Read(begin, slash) / denominator;
  // Two numbers beyond all reach have no ratio.
  return std::isnan(value) ? Fail(kRangeFault, begin) : true;
}

bool ValueScan::TakeAmount(Amount& amount, bool allowExponent) {
  if (IsFractionAhead()) {
    amount.hasFraction = true;
    amount.isWhole = false;
    return TakeFraction(amount.value);
  }
  if (!TakeNumber(amount, allowExponent)) return false;
  const WChar* const behind = m_at;
  TakeBlanks();
  const WChar* const begin = m_at;
  // Digits directly behind the number are part of it.
  if (!amount.isWhole || !IsFractionAhead()) {
    m_at = behind;
    return true;
  }
  double fraction = 0;
  if (!TakeFraction(fraction)) return false;
  if (fraction >= 1) return Fail(kFractionFault, begin);
  amount.value += fraction;
  amount.hasFraction = true;
  amount.isWhole = false;
  return true;
}

bool ValueScan::Fail(const WChar* source, const WChar* place) {
  if (!m_fault.IsValue()) return false;
  m_fault.source = source;
  m_fault.position = static_cast<int>(place - m_begin);
  return false;
}

bool ValueScan::FailWith(const WChar* source, const WChar* place, const WString& first,
                         const WString& second) {
  if (!m_fault.IsValue()) return false;
  m_fault.first = first;
  m_fault.second = second;
  return Fail(source, place);
}

bool ValueScan::Ends() {
  if (!m_fault.IsValue()) return false;
  TakeBlanks();
  return AtEnd() || Fail(kUnexpectedFault);
}

WString ValueScan::TextSince(const WChar* place) const {
  return WString(place, 0, static_cast<int>(m_at - place));
}

TValueCheck ValueScan::Finish(double value) {
  if (m_fault.IsValue() && !(std::fabs(value) <= kNotSetThreshold)) Fail(kRangeFault, m_start);
  if (m_fault.IsValue()) m_fault.value = value;
  return m_fault;
}

}  // namespace kelp::detail
