#include "console/Text.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <iterator>

#include "kelp0lang/Translate.h"

namespace console {
namespace {

constexpr WChar kReplacement = 0xFFFD;

struct CodeRange {
  char32_t first;
  char32_t last;
};

// The blocks of combining marks and format characters, which take no column of their own.
constexpr CodeRange kZeroWidth[] = {
    {0x0300, 0x036F}, {0x0483, 0x0489}, {0x0591, 0x05BD}, {0x064B, 0x065F}, {0x0E34, 0x0E3A},
    {0x0E47, 0x0E4E}, {0x1AB0, 0x1AFF}, {0x1DC0, 0x1DFF}, {0x200B, 0x200F}, {0x2060, 0x2064},
    {0x20D0, 0x20FF}, {0xFE00, 0xFE0F}, {0xFE20, 0xFE2F}, {0xFEFF, 0xFEFF}, {0xE0100, 0xE01EF},
};

// East Asian wide and full-width characters (Unicode Standard Annex 11) and the emoji blocks.
constexpr CodeRange kWide[] = {
    {0x1100, 0x115F},   {0x2E80, 0x303E},   {0x3041, 0xA4CF},   {0xAC00, 0xD7A3},
    {0xF900, 0xFAFF},   {0xFE30, 0xFE6F},   {0xFF00, 0xFF60},   {0xFFE0, 0xFFE6},
    {0x1F300, 0x1F64F}, {0x1F900, 0x1F9FF}, {0x20000, 0x3FFFD},
};

// The C0 and C1 controls, the line and paragraph separators and the marks of writing direction.
constexpr CodeRange kControls[] = {
    {0x0000, 0x001F},
    {0x007F, 0x009F},
    {0x2028, 0x202E},
    {0x2066, 0x2069},
};

template <std::size_t N>
bool IsIn(const CodeRange (&ranges)[N], char32_t code) {
  return std::any_of(std::begin(ranges), std::end(ranges), [code](const CodeRange& range) {
    return range.first <= code && code <= range.last;
  });
}

// Steps over one character; half a surrogate pair comes back as itself.
char32_t NextCode(WideView text, std::size_t& at) {
  const char32_t unit = text[at++];
  if (unit < 0xD800 || unit > 0xDBFF || at == text.size()) return unit;
  const char32_t low = text[at];
  if (low < 0xDC00 || low > 0xDFFF) return unit;
  ++at;
  return 0x10000 + ((unit - 0xD800) << 10) + (low - 0xDC00);
}

// Bytes of the UTF-8 sequence at the front, 0 where there is none (Unicode Standard, table 3-7).
std::size_t SequenceLength(std::string_view bytes) {
  const auto at = [bytes](std::size_t i) {
    return i < bytes.size() ? static_cast<std::uint8_t>(bytes[i]) : std::uint8_t{0};
  };
  const auto within = [at](std::size_t i, std::uint8_t low, std::uint8_t high) {
    return low <= at(i) && at(i) <= high;
  };
  const std::uint8_t lead = at(0);
  if (lead < 0x80) return 1;
  if (within(0, 0xC2, 0xDF)) return within(1, 0x80, 0xBF) ? 2 : 0;
  if (within(0, 0xE0, 0xEF)) {
    const std::uint8_t low = lead == 0xE0 ? 0xA0 : 0x80;
    const std::uint8_t high = lead == 0xED ? 0x9F : 0xBF;
    return within(1, low, high) && within(2, 0x80, 0xBF) ? 3 : 0;
  }
  if (!within(0, 0xF0, 0xF4)) return 0;
  const std::uint8_t low = lead == 0xF0 ? 0x90 : 0x80;
  const std::uint8_t high = lead == 0xF4 ? 0x8F : 0xBF;
  return within(1, low, high) && within(2, 0x80, 0xBF) && within(3, 0x80, 0xBF) ? 4 : 0;
}

WString DecodeLatin1(std::string_view bytes) {
  WString text;
  WChar* units = text.GetBufferSetLength(static_cast<int>(bytes.size()));
  std::transform(bytes.begin(), bytes.end(), units,
                 [](char byte) { return static_cast<WChar>(static_cast<std::uint8_t>(byte)); });
  return text;
}

WString DecodeUtf8(std::string_view bytes) {
  kelp::String narrow;
  std::copy(bytes.begin(), bytes.end(), narrow.GetBufferSetLength(static_cast<int>(bytes.size())));
  return narrow.FromUtf8();
}

}  // namespace

WString ToWString(WideView text) {
  WString result;
  if (text.empty()) return result;
  std::copy(text.begin(), text.end(), result.GetBufferSetLength(static_cast<int>(text.size())));
  return result;
}

void AppendUtf8(std::string& bytes, const WString& text) {
  const kelp::String utf8 = text.ToUtf8();
  bytes.append(utf8.c_str(), utf8.length());
}

WString Message::Text() const {
  return kelp::XlateFilled(source, values);
}

std::string_view WithoutMark(std::string_view bytes) {
  constexpr std::string_view kMark = "\xEF\xBB\xBF";
  return bytes.substr(0, kMark.size()) == kMark ? bytes.substr(kMark.size()) : bytes;
}

bool IsUtf8(std::string_view bytes) {
  return WholeUtf8(bytes) == bytes.size();
}

std::size_t WholeUtf8(std::string_view bytes) {
  std::size_t at = 0;
  for (;;) {
    // Eight ASCII bytes at a time.
    for (std::uint64_t word; bytes.size() - at >= sizeof word; at += sizeof word) {
      std::memcpy(&word, bytes.data() + at, sizeof word);
      if ((word & 0x8080808080808080) != 0) break;
    }
    if (at == bytes.size()) return at;
    const std::size_t length = SequenceLength(bytes.substr(at));
    if (length == 0) return at;
    at += length;
  }
}

WString Decode(std::string_view bytes, bool utf8) {
  if (bytes.empty()) return WString();
  return (utf8 ? DecodeUtf8(bytes) : DecodeLatin1(bytes)).Replace(0, kReplacement);
}

WString Decode(std::string_view bytes) {
  return Decode(bytes, IsUtf8(bytes));
}

WString Shown(const WString& text) {
  const WideView view = ViewOf(text);
  std::basic_string<WChar> shown;
  shown.reserve(view.size());
  for (std::size_t at = 0; at < view.size();) {
    const std::size_t begin = at;
    const char32_t code = NextCode(view, at);
    const bool halfPair = code >= 0xD800 && code <= 0xDFFF;
    if (code == KTEXT('\t')) {
      shown += KTEXT(' ');
    } else if (halfPair || IsIn(kControls, code)) {
      shown += kReplacement;
    } else {
      shown += view.substr(begin, at - begin);
    }
  }
  return ToWString(shown);
}

WString Quoted(const WString& text) {
  constexpr int kLongest = 40;
  if (text.Length() <= kLongest) return Shown(text);
  return Shown(text.Substring(0, kLongest)) + KTEXT("...");
}

int DisplayColumns(const WString& text) {
  const WideView view = ViewOf(text);
  int columns = 0;
  for (std::size_t at = 0; at < view.size();) {
    const char32_t code = NextCode(view, at);
    if (!IsIn(kZeroWidth, code)) columns += IsIn(kWide, code) ? 2 : 1;
  }
  return columns;
}

WideView Trimmed(WideView text) {
  while (!text.empty() && IsBlank(text.front())) text.remove_prefix(1);
  while (!text.empty() && IsBlank(text.back())) text.remove_suffix(1);
  return text;
}

}  // namespace console
