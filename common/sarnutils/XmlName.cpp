#include "sarnutils/XmlName.h"

#include <expat.h>

#include <array>
#include <cstddef>
#include <string>

namespace sarn::detail {
namespace {

enum : unsigned char { kNever = 0, kFurther = 1, kFirst = 2 };

constexpr auto kAscii = [] {
  std::array<unsigned char, 128> kinds{};
  for (char letter = 'a'; letter <= 'z'; ++letter) {
    kinds[letter] = kinds[letter - 'a' + 'A'] = kFirst;
  }
  kinds[':'] = kinds['_'] = kFirst;
  for (char digit = '0'; digit <= '9'; ++digit) kinds[digit] = kFurther;
  kinds['-'] = kinds['.'] = kFurther;
  return kinds;
}();

bool IsAscii(char byte) {
  return static_cast<unsigned char>(byte) < kAscii.size();
}

// Takes the text for the tag of a document. No character of it may end the tag.
bool IsTag(std::string_view name) {
  const std::string document = '<' + std::string(name) + "/>";
  const XML_Parser parser = XML_ParserCreate("UTF-8");
  if (parser == nullptr) return false;
  const XML_Status status =
      XML_Parse(parser, document.data(), static_cast<int>(document.size()), XML_TRUE);
  XML_ParserFree(parser);
  return status == XML_STATUS_OK;
}

}  // namespace

bool IsXmlName(std::string_view utf8) {
  if (utf8.empty()) return false;
  if (IsAscii(utf8[0]) && kAscii[static_cast<std::size_t>(utf8[0])] != kFirst) return false;
  bool isAscii = true;
  for (const char byte : utf8) {
    if (!IsAscii(byte)) {
      isAscii = false;
    } else if (kAscii[static_cast<std::size_t>(byte)] == kNever) {
      return false;
    }
  }
  return isAscii || IsTag(utf8);
}

}  // namespace sarn::detail
