// What the tests of the HTTP family share: readable failures, and the exception of a call.
#pragma once

#include <gtest/gtest.h>

#include <string>

#include "kelp0lang/HttpError.h"

using WideText = std::basic_string<WChar>;

// ASCII, for what is printed and compared.
inline std::string Narrow(const WChar* text) {
  std::string narrow;
  for (; text != nullptr && *text != 0; ++text) narrow += static_cast<char>(*text);
  return narrow;
}

// "id error: message" of what the call throws; empty where it throws nothing.
template <class Call>
std::string FailureOf(Call call) {
  try {
    call();
  } catch (const Dovek::httpclientexceptionW& error) {
    return std::to_string(error.ErrorId()) + " " + std::to_string(error.Win32Error()) + ": " +
           Narrow(error.GetMessage());
  }
  return "";
}
