#include "wininet/CurlBinding.h"

#include <curl/curl.h>
#include <dlfcn.h>

#include <cstdarg>

namespace {

void* Library() {
  // Never given back: others may have bound it too, and it keeps what belongs to threads.
  static void* const library = dlopen("libcurl.so.4", RTLD_NOW | RTLD_LOCAL);
  return library;
}

template <class Function>
Function* Bound(const char* name) {
  return reinterpret_cast<Function*>(dlsym(Library(), name));
}

}  // namespace

bool winapi::internet::IsCurlThere() {
  return Library() != nullptr;
}

// A function with fixed parameters; and one whose last is a long, a curl_off_t or a pointer, which
// are passed alike.
#define BIND(result, name, parameters, arguments)               \
  result name parameters {                                      \
    static auto* const bound = Bound<result parameters>(#name); \
    return bound arguments;                                     \
  }
#define BIND_OPTION(result, name, Handle, Option)                          \
  result(name)(Handle * handle, Option option, ...) {                      \
    static auto* const bound = Bound<result(Handle*, Option, ...)>(#name); \
    std::va_list list;                                                     \
    va_start(list, option);                                                \
    void* const value = va_arg(list, void*);                               \
    va_end(list);                                                          \
    return bound(handle, option, value);                                   \
  }
#ifdef __clang__
// The enumerations are as wide as int, and libcurl's own functions read on from them too.
#pragma clang diagnostic ignored "-Wvarargs"
#endif
static_assert(sizeof(CURLoption) == sizeof(int) && sizeof(CURLINFO) == sizeof(int));
static_assert(sizeof(long) == sizeof(void*) && sizeof(curl_off_t) == sizeof(void*));

extern "C" {
BIND(CURLcode, curl_global_init, (long flags), (flags))
BIND(curl_version_info_data*, curl_version_info, (CURLversion version), (version))

BIND(CURL*, curl_easy_init, (), ())
BIND(void, curl_easy_cleanup, (CURL * easy), (easy))
BIND(void, curl_easy_reset, (CURL * easy), (easy))
BIND(CURLcode, curl_easy_pause, (CURL * easy, int what), (easy, what))
BIND_OPTION(CURLcode, curl_easy_setopt, CURL, CURLoption)
BIND_OPTION(CURLcode, curl_easy_getinfo, CURL, CURLINFO)

BIND(CURLM*, curl_multi_init, (), ())
BIND(CURLMcode, curl_multi_cleanup, (CURLM * multi), (multi))
BIND(CURLMcode, curl_multi_add_handle, (CURLM * multi, CURL* easy), (multi, easy))
BIND(CURLMcode, curl_multi_remove_handle, (CURLM * multi, CURL* easy), (multi, easy))
BIND(CURLMcode, curl_multi_perform, (CURLM * multi, int* running), (multi, running))
BIND(CURLMcode, curl_multi_poll,
     (CURLM * multi, curl_waitfd* more, unsigned int count, int timeOut, int* moved),
     (multi, more, count, timeOut, moved))
BIND(CURLMcode, curl_multi_wakeup, (CURLM * multi), (multi))
BIND(CURLMsg*, curl_multi_info_read, (CURLM * multi, int* left), (multi, left))
BIND_OPTION(CURLMcode, curl_multi_setopt, CURLM, CURLMoption)

BIND(CURLSH*, curl_share_init, (), ())
BIND_OPTION(CURLSHcode, curl_share_setopt, CURLSH, CURLSHoption)

BIND(curl_slist*, curl_slist_append, (curl_slist * list, const char* text), (list, text))
BIND(void, curl_slist_free_all, (curl_slist * list), (list))
}
