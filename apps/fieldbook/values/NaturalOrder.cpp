#include "fieldbook/values/NaturalOrder.h"

#include <algorithm>

#include "fieldbook/values/Text.h"

namespace fieldbook {
namespace {

unsigned char Folded(char byte) {
  return static_cast<unsigned char>(byte >= 'A' && byte <= 'Z' ? byte + 0x20 : byte);
}

// Takes a run of digits, without the zeros in front.
std::string_view TakeNumber(std::string_view& rest) {
  const auto end = std::find_if_not(rest.begin(), rest.end(), IsDigit<char>);
  std::string_view digits = rest.substr(0, static_cast<std::size_t>(end - rest.begin()));
  rest.remove_prefix(digits.size());
  digits.remove_prefix(std::min(digits.find_first_not_of('0'), digits.size()));
  return digits;
}

// Negative, 0 or positive.
int CompareNaturally(std::string_view a, std::string_view b) {
  while (!a.empty() && !b.empty()) {
    if (IsDigit(a.front()) && IsDigit(b.front())) {
      const std::string_view x = TakeNumber(a);
      const std::string_view y = TakeNumber(b);
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

}  // namespace

bool IsNaturallyLess(std::string_view a, std::string_view b) {
  const int order = CompareNaturally(a, b);
  return order != 0 ? order < 0 : a < b;
}

}  // namespace fieldbook
