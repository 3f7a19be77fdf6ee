// The UTF-8 conversions against a plain reading of their rules, one unit at a time. The library's
// own go by blocks, so what this looks for are faults at their borders, reads and writes past a
// buffer among them: the buffers of String and WString have no spare room.
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>

#include "kelp0lang/String.h"

using kelp::String;
using kelp::WString;

namespace {

void Require(bool holds) {
  if (!holds) std::abort();
}

std::u16string Decoded(const std::string& bytes) {
  std::u16string units;
  for (std::size_t i = 0; i < bytes.size();) {
    const unsigned lead = static_cast<unsigned char>(bytes[i++]);
    const int more = lead >= 0xF8 || lead < 0xC0 ? 0 : lead >= 0xF0 ? 3 : lead >= 0xE0 ? 2 : 1;
    unsigned value = more == 0 ? lead : lead & (0x3Fu >> more);
    for (int k = 0; k < more; ++k) {
      value <<= 6;
      if (i < bytes.size()) value |= static_cast<unsigned char>(bytes[i++]) & 0x3Fu;
    }
    if (value >= 0x10000) {
      units += static_cast<char16_t>((value >> 10) + 0xD7C0);
      value = (value & 0x3FF) + 0xDC00;
    }
    units += static_cast<char16_t>(value);
  }
  return units;
}

std::string Encoded(const std::u16string& units) {
  std::string bytes;
  for (std::size_t i = 0; i < units.size();) {
    unsigned value = units[i++];
    if (value >= 0xD800 && value <= 0xDBFF && i < units.size()) {
      value = (value << 10) + units[i++] - 0x035FDC00;
    }
    const int more = value < 0x80 ? 0 : value < 0x800 ? 1 : value < 0x10000 ? 2 : 3;
    constexpr unsigned kLead[] = {0, 0xC0, 0xE0, 0xF0};
    bytes += static_cast<char>(kLead[more] | value >> 6 * more);
    for (int k = more - 1; k >= 0; --k) bytes += static_cast<char>(0x80 | (value >> 6 * k & 0x3F));
  }
  return bytes;
}

template <class Text, class Units>
void RequireExact(const Text& text, const Units& units) {
  Require(text.length() == units.size() && text.Capacity() == text.Length());
  Require(std::memcmp(text.c_str(), units.data(), text.sizeInBytes()) == 0);
  Require(text.c_str()[text.Length()] == 0);
}

template <class Text, class Units>
Text Filled(const Units& units) {
  Text text;
  if (!units.empty()) {
    std::memcpy(text.GetBufferSetLength(static_cast<int>(units.size())), units.data(),
                units.size() * sizeof(units[0]));
  }
  return text;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string bytes(data, data + size);
  RequireExact(Filled<String>(bytes).FromUtf8(), Decoded(bytes));
  const String terminated(bytes.c_str());
  RequireExact(WString::ConvertFromUtf8(terminated.c_str()), Decoded(bytes.c_str()));

  std::u16string units(size / 2, u'\0');
  if (!units.empty()) std::memcpy(units.data(), data, units.size() * 2);
  RequireExact(Filled<WString>(units).ToUtf8(), Encoded(units));
  // Text as it is met, mostly in the first rows of the code: what the bytes decode to.
  const std::u16string met = Decoded(bytes);
  RequireExact(Filled<WString>(met).ToUtf8(), Encoded(met));
  RequireExact(String::ConvertToUtf8(Filled<WString>(met).c_str()), Encoded(met.c_str()));
  return 0;
}
