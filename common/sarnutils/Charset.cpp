#include "sarnutils/Charset.h"

#include <algorithm>
#include <cctype>
#include <charconv>
#include <string>

namespace xlate::detail {
namespace {

constexpr unsigned char kLastAscii = 0x7F;

constexpr UINT kShiftJis = 932;
constexpr UINT kGbk = 936;
constexpr UINT kKorean = 949;
constexpr UINT kBig5 = 950;

struct Name {
  std::string_view name;
  Charset charset;
};

constexpr Name kNames[] = {
    {"utf8", {}},
    {"charset", {}},
    {"ascii", {CP_UTF8, kLastAscii}},
    {"usascii", {CP_UTF8, kLastAscii}},
    {"latin1", {28591}},
    {"latin2", {28592}},
    {"latin5", {28599}},
    {"latin9", {28605}},
    {"shiftjis", {kShiftJis}},
    {"sjis", {kShiftJis}},
    {"gb2312", {kGbk}},
    {"gbk", {kGbk}},
    {"euccn", {kGbk}},
    {"euckr", {kKorean}},
    {"uhc", {kKorean}},
    {"big5", {kBig5}},
    {"ibm437", {437}},
    {"ibm850", {850}},
};

// Names that end in a number, from first to last, whose code page is the number and some more.
struct Series {
  std::string_view prefix;
  UINT first;
  UINT last;
  UINT more;
};

constexpr Series kSeries[] = {
    {"iso8859", 1, 16, 28590}, {"windows", 1250, 1258, 0},
    {"cp", 1250, 1258, 0},     {"cp", kShiftJis, kShiftJis, 0},
    {"cp", kGbk, kGbk, 0},     {"cp", kKorean, kBig5, 0},
    {"cp", 437, 437, 0},       {"cp", 850, 850, 0},
};

std::optional<Charset> OfSeries(const Series& series, std::string_view name) {
  if (!name.starts_with(series.prefix)) return std::nullopt;
  name.remove_prefix(series.prefix.size());
  UINT number = 0;
  const char* const end = name.data() + name.size();
  if (std::from_chars(name.data(), end, number).ptr != end) return std::nullopt;
  if (number < series.first || number > series.last) return std::nullopt;
  return Charset{number + series.more};
}

std::optional<Charset> OfPlainName(std::string_view name) {
  const auto* const known = std::find_if(std::begin(kNames), std::end(kNames),
                                         [name](const Name& n) { return n.name == name; });
  if (known != std::end(kNames)) return known->charset;
  for (const Series& series : kSeries) {
    if (const auto charset = OfSeries(series, name)) return charset;
  }
  return std::nullopt;
}

bool IsOnMachine(const Charset& charset) {
  return MultiByteToWideChar(charset.codePage, 0, "a", 1, nullptr, 0) != 0;
}

}  // namespace

bool Charset::IsLead(char unit) const {
  const auto byte = static_cast<unsigned char>(unit);
  switch (codePage) {
    case kShiftJis:  // the gap has letters of one byte
      return (byte > 0x80 && byte < 0xA0) || (byte >= 0xE0 && byte <= 0xFC);
    case kGbk:
    case kKorean:
    case kBig5:
      return byte > 0x80 && byte < 0xFF;
    default:
      return false;
  }
}

std::string_view CharsetName(std::string_view header) {
  constexpr std::string_view kMark = "charset=";
  const std::size_t mark = header.find(kMark);
  if (mark == std::string_view::npos) return "UTF-8";
  header.remove_prefix(mark + kMark.size());
  return header.substr(0, header.find_first_of(" \t\r\n;"));
}

std::optional<Charset> FindCharset(std::string_view name) {
  std::string plain;
  for (const char letter : name) {
    const auto unit = static_cast<unsigned char>(letter);
    if (std::isalnum(unit) != 0) plain += static_cast<char>(std::tolower(unit));
  }
  const std::optional<Charset> charset = OfPlainName(plain);
  return charset && IsOnMachine(*charset) ? charset : std::nullopt;
}

}  // namespace xlate::detail
