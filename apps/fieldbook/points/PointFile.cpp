#include "fieldbook/points/PointFile.h"

#include <algorithm>
#include <iterator>
#include <optional>
#include <utility>

#include "fieldbook/console/Table.h"
#include "kelp0lang/Translate.h"

namespace fieldbook {
namespace {

constexpr WChar kQuote = KTEXT('"');
constexpr WChar kBlanks = KTEXT(' ');  // stands for runs of blanks and tabs
constexpr WChar kSeparators[] = {KTEXT('\t'), KTEXT(';'), KTEXT(','), kBlanks};
constexpr std::size_t kDescription = 4;  // fields before it
constexpr double kLinesShare = 0.3;      // of the work, for finding the lines

double Share(std::size_t part, std::size_t whole) {
  return static_cast<double>(part) / static_cast<double>(whole);
}

// The fields of a row, the description as the fifth.
struct Fields {
  std::vector<WString> texts;
  bool isQuoteOpen = false;
};

// Takes a row apart.
//
// The library's ConvDelRow isn't fit for it: it splits inside quotes as well, and takes the accents
// off what it reads.
class RowSplitter {
 public:
  // Where tabs separate, one at an end of the row stands for an empty field.
  RowSplitter(WideView row, WChar separator)
      : m_rest(separator == KTEXT('\t') ? row : Trimmed(row)), m_separator(separator) {}

  Fields Split() {
    Fields fields;
    while (fields.texts.size() < kDescription) {
      fields.texts.push_back(TakeField(fields.isQuoteOpen));
      if (!TakeSeparator()) return fields;
    }
    fields.texts.push_back(TakeDescription(fields.isQuoteOpen));
    return fields;
  }

 private:
  bool IsSeparator(WChar unit) const {
    return m_separator == kBlanks ? IsBlank(unit) : unit == m_separator;
  }
  void SkipBlanks() {
    while (!m_rest.empty() && IsBlank(m_rest.front()) && m_rest.front() != m_separator) {
      m_rest.remove_prefix(1);
    }
  }
  bool TakeSeparator() {
    if (m_rest.empty()) return false;
    m_rest.remove_prefix(1);
    if (m_separator == kBlanks) m_rest = Trimmed(m_rest);
    return m_separator != kBlanks || !m_rest.empty();
  }

  // Takes a field in quotes, up to the separator behind it. Takes nothing if the field doesn't
  // begin with a quote, or if more than blanks stand between the closing quote and the next
  // separator: then the quotes belong to the text.
  std::optional<WString> TakeQuoted(bool& isQuoteOpen) {
    if (m_rest.empty() || m_rest.front() != kQuote) return std::nullopt;
    std::basic_string<WChar> text;
    WideView rest = m_rest.substr(1);
    for (;; rest.remove_prefix(1)) {
      if (rest.empty()) {
        isQuoteOpen = true;
        return std::nullopt;
      }
      if (rest.front() == kQuote) {
        rest.remove_prefix(1);
        if (rest.empty() || rest.front() != kQuote) break;
      }
      text += rest.front();
    }
    while (!rest.empty() && IsBlank(rest.front()) && !IsSeparator(rest.front())) {
      rest.remove_prefix(1);
    }
    if (!rest.empty() && !IsSeparator(rest.front())) return std::nullopt;
    m_rest = rest;
    return ToWString(Trimmed(text));
  }

  WString TakeField(bool& isQuoteOpen) {
    SkipBlanks();
    if (const auto quoted = TakeQuoted(isQuoteOpen)) return *quoted;
    const auto end = std::find_if(m_rest.begin(), m_rest.end(),
                                  [this](WChar unit) { return IsSeparator(unit); });
    const WideView field = m_rest.substr(0, static_cast<std::size_t>(end - m_rest.begin()));
    m_rest.remove_prefix(field.size());
    return ToWString(Trimmed(field));
  }

  // All the rest. Separators at its end are those of empty fields and don't belong to it.
  WString TakeDescription(bool& isQuoteOpen) {
    m_rest = Trimmed(m_rest);
    const WString head = TakeQuoted(isQuoteOpen).value_or(WString());
    while (!m_rest.empty() && (IsSeparator(m_rest.back()) || IsBlank(m_rest.back()))) {
      m_rest.remove_suffix(1);
    }
    return head.Concat(ToWString(m_rest));
  }

  WideView m_rest;
  WChar m_separator;
};

DecimalMark MarkBeside(WChar separator) {
  return separator == KTEXT(',') ? DecimalMark::Point : DecimalMark::PointOrComma;
}

// Reads one coordinate into value; an empty text leaves it not set.
Message ReadCoordinate(const WString& text, const WChar* name, const LengthUnit& unit,
                       DecimalMark mark, bool isRequired, double& value) {
  if (text.empty()) {
    if (!isRequired) return {};
    return {KTEXT("{1} is missing"), {kelp::Xlate(name)}};
  }
  const Reading reading = ReadLength(text, unit, mark);
  value = reading.value;
  if (!reading.fault) return {};
  return {KTEXT("{1} \"{2}\": {3}"), {kelp::Xlate(name), Quoted(text), reading.fault.Text()}};
}

// What is wrong with the row, if anything; otherwise fills the point.
Message ReadRow(const Fields& fields, const LengthUnit& unit, DecimalMark mark, Point& point) {
  if (fields.isQuoteOpen) return {KTEXT("a quote isn't closed"), {}};
  if (fields.texts.size() < 3) {
    return {KTEXT("fewer than three fields; a row is point, northing, easting, elevation, "
                  "description"),
            {}};
  }
  const auto field = [&fields](std::size_t i) {
    return i < fields.texts.size() ? fields.texts[i] : WString();
  };
  point.name = field(0);
  point.northing = point.easting = point.elevation = kelp::kNotSet;
  point.description = field(kDescription);

  struct Coordinate {
    const WChar* name;
    bool isRequired;
    double& value;
  };
  const Coordinate coordinates[] = {{KTEXT("northing"), true, point.northing},
                                    {KTEXT("easting"), true, point.easting},
                                    {KTEXT("elevation"), false, point.elevation}};
  for (std::size_t i = 0; i < std::size(coordinates); ++i) {
    const Coordinate& c = coordinates[i];
    Message fault = ReadCoordinate(field(i + 1), c.name, unit, mark, c.isRequired, c.value);
    if (fault) return fault;
  }
  return {};
}

Message ReadRow(const WString& row, WChar separator, const LengthUnit& unit, Point& point) {
  const Fields fields = RowSplitter(ViewOf(row), separator).Split();
  return ReadRow(fields, unit, MarkBeside(separator), point);
}

bool HoldsDigit(const WString& text) {
  const WideView view = ViewOf(text);
  return std::any_of(view.begin(), view.end(), IsDigit);
}

// A line of heads has words where the coordinates would stand, and no digit before the description.
bool IsHeads(const std::vector<WString>& texts) {
  if (texts.size() < 3 || texts[1].empty() || texts[2].empty()) return false;
  const auto end =
      texts.begin() + static_cast<std::ptrdiff_t>(std::min(texts.size(), kDescription));
  return std::none_of(texts.begin(), end, HoldsDigit);
}

// The separator with which most rows can be read, judged by the first that can be read at all. A
// file in which none can takes the one that stands in its first row.
WChar FindSeparator(const std::vector<Line>& lines, const LengthUnit& unit) {
  constexpr int kEnough = 100;
  int readable[std::size(kSeparators)] = {};
  Point ignored;
  for (const Line& line : lines) {
    for (std::size_t i = 0; i < std::size(kSeparators); ++i) {
      if (!ReadRow(line.text, kSeparators[i], unit, ignored)) ++readable[i];
    }
    if (*std::max_element(std::begin(readable), std::end(readable)) >= kEnough) break;
  }
  const auto* most = std::max_element(std::begin(readable), std::end(readable));
  if (*most > 0) return kSeparators[most - readable];
  const auto* present =
      std::find_if(std::begin(kSeparators), std::end(kSeparators),
                   [&lines](WChar s) { return !lines.empty() && lines[0].text.find(s) >= 0; });
  return present == std::end(kSeparators) ? kBlanks : *present;
}

// Gives the lines that should be rows. Empty ones and comments join the others of the file, lines
// that are too long its faults.
std::vector<Line> SplitLines(std::string_view bytes, PointFile& file, const Watch& watch) {
  const bool utf8 = IsUtf8(bytes);
  if (utf8) bytes = WithoutMark(bytes);
  if (!bytes.empty() && bytes.back() == '\x1A') bytes.remove_suffix(1);  // end of file in DOS

  std::vector<Line> lines;
  const std::size_t size = bytes.size();
  for (int number = 1; !bytes.empty(); ++number) {
    if (watch && static_cast<std::size_t>(number) % kWatchedRows == 0) {
      watch(kLinesShare * Share(size - bytes.size(), size));
    }
    const std::string_view line = bytes.substr(0, bytes.find('\n'));
    bytes.remove_prefix(std::min(line.size() + 1, bytes.size()));
    if (line.size() > kLongestLine) {
      file.faults.push_back({number, {KTEXT("the line is too long"), {}}});
      continue;
    }
    const WString text = Decode(line, utf8).TrimRight(KTEXT('\r'));
    const WideView trimmed = Trimmed(ViewOf(text));
    const bool isRow = !trimmed.empty() && trimmed.front() != KTEXT('#');
    (isRow ? lines : file.others).push_back({number, text});
  }
  return lines;
}

void TakeHeads(std::vector<Line>& lines, WChar separator, PointFile& file) {
  if (lines.empty()) return;
  Line& first = lines.front();
  const std::vector<WString> texts = RowSplitter(ViewOf(first.text), separator).Split().texts;
  if (!IsHeads(texts)) return;
  if (separator != KTEXT(',')) first.text = Decode(CsvLine(texts), true);
  file.others.push_back(first);
  lines.erase(lines.begin());
}

template <class Entry>
void SortByLine(std::vector<Entry>& entries) {
  std::stable_sort(entries.begin(), entries.end(),
                   [](const Entry& a, const Entry& b) { return a.line < b.line; });
}

}  // namespace

PointFile ReadPoints(const std::string& bytes, const LengthUnit& unit, const Watch& watch) {
  PointFile file;
  std::vector<Line> lines = SplitLines(bytes, file, watch);
  const WChar separator = FindSeparator(lines, unit);
  TakeHeads(lines, separator, file);

  std::size_t row = 0;
  for (const Line& line : lines) {
    if (watch && row % kWatchedRows == 0) {
      watch(kLinesShare + (1 - kLinesShare) * Share(row, lines.size()));
    }
    ++row;
    Point point;
    point.line = line.line;
    if (Message fault = ReadRow(line.text, separator, unit, point)) {
      file.faults.push_back({line.line, std::move(fault)});
    } else {
      file.points.push_back(std::move(point));
    }
  }
  SortByLine(file.faults);
  SortByLine(file.others);
  return file;
}

}  // namespace fieldbook
