// Files on the web.
#pragma once

#include <string>

#include "console/CommandLine.h"
#include "fieldbook/web/WebAddress.h"
#include "fieldbook/web/WebSession.h"

namespace fieldbook {

// All of the file at an address. The watch hears how far it is; where the server doesn't say how
// long the file is it hears 0. Throws Failure, also where the end is missing.
std::string FetchFromWeb(WebSession& session, const Argument& address, const Watch& watch);

}  // namespace fieldbook
