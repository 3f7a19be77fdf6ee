// Files on their way to a server.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "console/CommandLine.h"
#include "fieldbook/web/WebAddress.h"
#include "fieldbook/web/WebSession.h"

namespace fieldbook {

struct WebField {
  WString name;
  WString value;
};

struct WebAnswer {
  std::uint32_t status = 0;
  std::string text;    // of an answer in text, else empty
  bool isCut = false;  // whether there was more text than a user would read
};

// Hears how many bytes of all have gone out. It may throw to end it.
using SentWatch = std::function<void(std::uint64_t sent, std::uint64_t all)>;

// Posts a file, as the part "file" of a form in multipart/form-data, with the fields before or
// behind it in the order of their names. Throws Failure, but not for what the server answers.
WebAnswer UploadToWeb(WebSession& session, const Argument& file, const Argument& address,
                      const std::vector<WebField>& fields, const SentWatch& watch);

}  // namespace fieldbook
