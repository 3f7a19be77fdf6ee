// A small positional template for texts that translators may reorder.
//
//   kelp::WString text = kelp::detail::kelp_safefmt(KTEXT("{2} of {1}"), 2, total, current);
#pragma once

#include <cstdint>

#include "kelp0lang/Export.h"
#include "kelp0lang/String.h"

namespace kelp::detail {

// The template with "{1}", "{2}" and so on replaced by the arguments, which are count pointers to
// terminated wide text. "{{" is a literal brace, and so is "}" outside braces; a number that the
// template's end cuts short is dropped. A number outside 1 to count, or more than 100 arguments,
// gives the empty text.
KELP0LANG_API WString kelp_safefmt(const WChar* format, std::uint64_t count, ...);

}  // namespace kelp::detail
