// The order in which people look for names: P2 before P10.
//
//   std::sort(names.begin(), names.end(), kelp::NaturalLess());
//   std::map<kelp::WString, Point, kelp::NaturalLess> points;
//
// Runs of the digits 0 to 9 count by their value, of any length; letters of ASCII without regard to
// case, all else by its units, whatever the locale is. Names that are alike by that (a1 and A01)
// are ordered by their units, so that only equal names are equal.
#pragma once

#include <string_view>

#include "kelp0lang/Export.h"
#include "kelptext/WideChar.h"

namespace kelp {

// Negative, 0 or positive. Narrow text may be UTF-8. Nothing is allocated.
KELP0LANG_API int CompareNaturally(std::string_view a, std::string_view b) noexcept;
KELP0LANG_API int CompareNaturally(std::basic_string_view<WChar> a,
                                   std::basic_string_view<WChar> b) noexcept;

// The comparison for the standard library's containers and algorithms, of texts and views alike.
struct NaturalLess {
  using is_transparent = void;
  template <class A, class B>
  bool operator()(const A& a, const B& b) const noexcept {
    return CompareNaturally(a, b) < 0;
  }
};

}  // namespace kelp
