// Elsewhere than on Windows the layer is told of the test program's string table.
#include <windows.h>

#include <iterator>

#include "winapi_host.h"

namespace {

constexpr WINAPI_STRING kStrings[] = {
#define WINAPI_TEST_STRING(id, text) {id, u##text},
#include "Strings.inc"
};
constexpr WORD kItalian = 1040;

[[maybe_unused]] const bool told = [] {
  WinapiSetStrings(nullptr, kItalian, kStrings, std::size(kStrings));
  return true;
}();

}  // namespace
