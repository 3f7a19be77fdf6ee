// Which names stand for something on the web, and how such an address goes into a request.
#pragma once

#include "fieldbook/values/Text.h"

namespace fieldbook {

// Whether the text begins with "http://" or "https://", in any case.
bool IsWebAddress(const WString& text);
// As a request takes it: without a fragment, which is for who asks; blanks and what isn't ASCII as
// %XX of their UTF-8.
WString EncodedAddress(const WString& address);

}  // namespace fieldbook
