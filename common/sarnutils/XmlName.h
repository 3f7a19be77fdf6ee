// Whether text can be the name of an element or of an attribute; internal to the library.
#pragma once

#include <string_view>

namespace sarn::detail {

// For names of ASCII by the rule itself, for others by the parser that is to read them: which
// letters it takes differs between the editions of XML.
bool IsXmlName(std::string_view utf8);

}  // namespace sarn::detail
