// libcups, bound at the first call; internal to the layer. The headers give only types.
#pragma once

#include <cups/cups.h>

namespace winapi {

#define WINAPI_CUPS_CALLS(CALL) \
  CALL(cupsAddOption)           \
  CALL(cupsCheckDestSupported)  \
  CALL(cupsCopyDestInfo)        \
  CALL(cupsDoRequest)           \
  CALL(cupsEncryption)          \
  CALL(cupsFindDestDefault)     \
  CALL(cupsFindDestSupported)   \
  CALL(cupsFreeDestInfo)        \
  CALL(cupsFreeDests)           \
  CALL(cupsFreeOptions)         \
  CALL(cupsGetNamedDest)        \
  CALL(cupsGetOption)           \
  CALL(cupsLastError)           \
  CALL(cupsParseOptions)        \
  CALL(cupsServer)              \
  CALL(httpClose)               \
  CALL(httpConnect2)            \
  CALL(httpInitialize)          \
  CALL(httpSetTimeout)          \
  CALL(ippDelete)               \
  CALL(ippGetCount)             \
  CALL(ippGetInteger)           \
  CALL(ippGetString)            \
  CALL(ippNewRequest)           \
  CALL(ippPort)                 \
  CALL(pwgFormatSizeName)       \
  CALL(pwgMediaForLegacy)       \
  CALL(pwgMediaForPPD)          \
  CALL(pwgMediaForPWG)

// Its functions under their own names.
struct CupsCalls {
#define WINAPI_DECLARE(name) decltype(&::name) name;
  WINAPI_CUPS_CALLS(WINAPI_DECLARE)
#undef WINAPI_DECLARE
};

// Null where it isn't there.
const CupsCalls* Cups();

}  // namespace winapi
