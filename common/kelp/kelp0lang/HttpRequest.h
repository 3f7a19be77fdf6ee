// An HTTP request in one call.
//
//   THttpParams params(KTEXT("job"), KTEXT("north"));
//   kelp::String text;
//   unsigned int size = 0;
//   if (ExecuteHttpRequest(true, KTEXT("https://example.com/jobs"), params, text, size))
//   Show(text);
//
// Programs that show progress, send files, or want to know why a request failed use HttpClient.h.
// Both calls return when all is done.
#pragma once

#include <utility>
#include <vector>

#include "kelp0lang/Export.h"
#include "kelp0lang/String.h"
#include "kelptext/WideChar.h"

// The parameters of a request, names and values.
struct KELP0LANG_API THttpParams {
  THttpParams() = default;
  THttpParams(const kelp::WString& name, const kelp::WString& value) { params = {{name, value}}; }

  std::vector<std::pair<kelp::WString, kelp::WString>> params;
};

// A GET with the parameters in the URL, or a post of them as a form, in the order of their names.
// The bytes of the content are counted in size; where the server says that they are text, they are
// put into text, which stays as it was otherwise. False for any failure, with text and size perhaps
// filled in part; the status of an answer is none.
KELP0LANG_API bool ExecuteHttpRequest(bool post, const kelp::WString& url,
                                      const THttpParams& params, kelp::String& text,
                                      unsigned int& size);

// A request by HTTP/1.0 on a socket of its own, which stays within the scheme "http". The body is
// sent as it is, by a post alone, as narrow text of the process locale. 0, and the head and the
// content of the answer, whatever its status; nothing in them is decoded but a content or head that
// begins with the mark of UTF-8. Otherwise empty texts and: -1 for another scheme, -2 where there
// is no socket, -3 where the host isn't known, -4 where it can't be reached. There is no time-out,
// and only memory bounds the answer (std::bad_alloc).
KELP0LANG_API int SendRequest(bool post, const WChar* url, const kelp::WString& body,
                              kelp::WString& headers, kelp::WString& content);
