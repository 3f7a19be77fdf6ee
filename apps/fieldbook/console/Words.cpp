#include "fieldbook/console/Words.h"

#include "console/Console.h"
#include "fieldbook/values/Scanner.h"

namespace fieldbook {
namespace {

constexpr WChar kQuote = KTEXT('"');

WString TakeQuoted(Scanner& scan) {
  std::basic_string<WChar> word;
  while (!scan.AtEnd()) {
    const WChar unit = scan.TakeAny();
    if (unit == kQuote && !scan.Take(kQuote)) return ToWString(word);
    word += unit;
  }
  throw Failure({KTEXT("a quote isn't closed"), {}});
}

WString TakePlain(Scanner& scan) {
  std::basic_string<WChar> word;
  while (!scan.AtEnd() && !IsBlank(scan.Ahead())) word += scan.TakeAny();
  return ToWString(word);
}

}  // namespace

std::vector<WString> SplitWords(const WString& line) {
  std::vector<WString> words;
  Scanner scan(ViewOf(line));
  while (!scan.AtEnd()) {
    words.push_back(scan.Take(kQuote) ? TakeQuoted(scan) : TakePlain(scan));
    scan.TakeBlanks();
  }
  return words;
}

}  // namespace fieldbook
