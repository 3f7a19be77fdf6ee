// The client of the library, as the program's requests use it.
#pragma once

#include "kelp0lang/HttpClient.h"

namespace fieldbook {

using WebClient = Dovek::CHttpClientT<Dovek::CHttpToolW, Dovek::CHttpEncoderW>;
using WebResponse = WebClient::Response;

}  // namespace fieldbook
