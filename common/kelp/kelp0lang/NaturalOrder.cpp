#include "kelp0lang/NaturalOrder.h"

#include <algorithm>
#include <type_traits>

namespace kelp {
namespace {

template <class C>
bool IsDigit(C unit) {
  return unit >= C('0') && unit <= C('9');
}

template <class C>
int Folded(C unit) {
  const auto value = static_cast<std::make_unsigned_t<C>>(unit);
  return value >= 'A' && value <= 'Z' ? value + ('a' - 'A') : value;
}

// Takes a run of digits, without the zeros in front.
template <class C>
std::basic_string_view<C> TakeNumber(std::basic_string_view<C>& rest) {
  const auto end = std::find_if_not(rest.begin(), rest.end(), IsDigit<C>);
  std::basic_string_view<C> digits = rest.substr(0, static_cast<std::size_t>(end - rest.begin()));
  rest.remove_prefix(digits.size());
  digits.remove_prefix(std::min(digits.find_first_not_of(C('0')), digits.size()));
  return digits;
}

template <class C>
int CompareFolded(std::basic_string_view<C> a, std::basic_string_view<C> b) {
  while (!a.empty() && !b.empty()) {
    if (IsDigit(a.front()) && IsDigit(b.front())) {
      const std::basic_string_view<C> x = TakeNumber(a);
      const std::basic_string_view<C> y = TakeNumber(b);
      if (x.size() != y.size()) return x.size() < y.size() ? -1 : 1;
      if (const int order = x.compare(y)) return order;
      continue;
    }
    const int order = Folded(a.front()) - Folded(b.front());
    if (order != 0) return order;
    a.remove_prefix(1);
    b.remove_prefix(1);
  }
  return static_cast<int>(!a.empty()) - static_cast<int>(!b.empty());
}

template <class C>
int Compare(std::basic_string_view<C> a, std::basic_string_view<C> b) {
  const int order = CompareFolded(a, b);
  return order != 0 ? order : a.compare(b);
}

}  // namespace

int CompareNaturally(std::string_view a, std::string_view b) noexcept {
  return Compare(a, b);
}

int CompareNaturally(std::basic_string_view<WChar> a, std::basic_string_view<WChar> b) noexcept {
  return Compare(a, b);
}

}  // namespace kelp
