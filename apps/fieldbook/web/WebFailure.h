// What a user hears of a request that came to nothing.
#pragma once

#include <cstdint>

#include "fieldbook/values/Text.h"

namespace fieldbook {

// In the user's language, by the id and the error of an httpclientexceptionW.
WString WebErrorText(std::uint32_t errorId, std::uint32_t win32Error);
// Whether it is about the file that was to be sent, not about its server.
bool IsWebFileError(std::uint32_t errorId);
// "the server answers 404: there is no such file".
WString WebStatusText(std::uint32_t status);
// Whether the server has done what it was asked for.
bool IsWebSuccess(std::uint32_t status);

}  // namespace fieldbook
