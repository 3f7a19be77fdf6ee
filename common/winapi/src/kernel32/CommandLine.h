// Arguments in the text of a command line; internal to the layer.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace winapi {

// By the rules of the Windows C runtime: blanks, quotes, backslashes in front of quotes.
std::vector<std::string> SplitArguments(std::string_view text);

}  // namespace winapi
