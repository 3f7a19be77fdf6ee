// A small positional template for texts that translators may reorder.
//
//   kelp::WString text = kelp::FillTemplate(KTEXT("{2} of {1}"), {total, current});
//
// A sentence that is translated first is filled by XlateFilled of Translate.h. All may run on any
// thread.
#pragma once

#include <cstdint>
#include <initializer_list>
#include <span>

#include "kelp0lang/Export.h"
#include "kelp0lang/String.h"

namespace kelp {

// The template with "{1}", "{2}" and so on replaced by the values, of which there may be any
// number; each is taken as it stands, braces too. "{{" is a literal brace, and so is "}" outside
// braces; a number that the template's end cuts short is dropped. A number that is none of 1 to the
// count of values gives the empty text. The template isn't null.
KELP0LANG_API WString FillTemplate(const WChar* format, std::span<const WString> values);
inline WString FillTemplate(const WChar* format, std::initializer_list<WString> values) {
  return FillTemplate(format, std::span(values.begin(), values.size()));
}

}  // namespace kelp

namespace kelp::detail {

// The same with count pointers to terminated wide text; more than 100 give the empty text.
KELP0LANG_API WString kelp_safefmt(const WChar* format, std::uint64_t count, ...);

}  // namespace kelp::detail
