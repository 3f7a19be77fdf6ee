#include "fieldbook/points/PointScan.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <iterator>

#include "fieldbook/console/Table.h"
#include "kelp0lang/Translate.h"

namespace fieldbook {
namespace {

constexpr char kSeparators[] = {'\t', ';', ',', ' '};

bool IsRow(std::string_view line) {
  const std::string_view trimmed = TrimmedBytes(line);
  return !trimmed.empty() && trimmed.front() != '#';
}

int PlaceOf(const ColumnOrder& columns, Column wanted) {
  const auto found = std::find(columns.begin(), columns.end(), wanted);
  return found == columns.end() ? -1 : static_cast<int>(found - columns.begin());
}

// What stands behind the last column is description, where no column is that.
void AddRest(ColumnOrder& columns) {
  if (PlaceOf(columns, Column::Description) < 0) columns.push_back(Column::Description);
}

// The place of the field that takes the rest of a row.
int RestOf(const ColumnOrder& columns) {
  const bool isLast = !columns.empty() && columns.back() == Column::Description;
  return isLast ? static_cast<int>(columns.size()) - 1 : -1;
}

std::vector<WString> Decoded(const std::vector<std::string_view>& fields) {
  std::vector<WString> texts;
  for (const std::string_view field : fields) texts.push_back(Decode(field, true));
  return texts;
}

// A plain decimal number, as nearly all are; nothing where a closer look is needed.
std::optional<double> PlainNumber(std::string_view text) {
  if (!text.empty() && text.front() == '+') text.remove_prefix(1);
  if (text.empty() || !(IsDigit(text.back()) || text.back() == '.')) return std::nullopt;
  double value = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
  if (error != std::errc() || end != text.data() + text.size()) return std::nullopt;
  return value;
}

bool IsWhole(std::string_view text) {
  if (!text.empty() && (text.front() == '-' || text.front() == '+')) text.remove_prefix(1);
  return !text.empty() && std::all_of(text.begin(), text.end(), IsDigit<char>);
}

// Whether the fields behind the first look like numbers that decimal commas have cut: at least two
// pairs of whole numbers, the second of each without a sign, and no decimal point in any.
bool LooksCutByCommas(std::string_view row) {
  RowSplitter splitter(',', -1);
  const std::vector<std::string_view>& fields = splitter.Split(row);
  std::size_t whole = 0;
  while (whole + 1 < fields.size() && IsWhole(fields[whole + 1])) ++whole;
  if (whole < 4) return false;
  for (std::size_t i = 2; i <= whole; i += 2) {
    if (!IsDigit(fields[i].front())) return false;
  }
  return true;
}

// What the first lines tell of a separator.
struct Trial {
  PointLayout layout;
  int readable = 0;
};

}  // namespace

// The first lines of a file, looked at with each separator.
class LayoutFinder {
 public:
  LayoutFinder(TextSource& source, const LayoutWishes& wishes)
      : m_source(source), m_wishes(wishes) {}

  // With the line of heads, 0 for none.
  PointLayout Find(int& headsLine, std::string& heads) {
    m_source.Rewind();
    TryAll();
    m_source.Rewind();
    const auto best =
        std::max_element(std::begin(m_trials), std::end(m_trials),
                         [](const Trial& a, const Trial& b) { return a.readable < b.readable; });
    PointLayout layout =
        best->readable > 0 ? best->layout : LayoutOf(SeparatorIn(m_first), m_first);
    headsLine = 0;
    const std::vector<WString> texts = TextsOf(layout.separator, m_first);
    if (m_firstLine == 0 || !MayBeHeads(texts)) return layout;
    const Heads told = ReadHeads(texts, m_wishes);
    layout.columns = told.columns;
    if (!m_wishes.columns) layout.columnsBy = Decider::Heads;
    if (told.unit != nullptr) {
      layout.unit = told.unit;
      layout.unitBy = Decider::Heads;
    }
    headsLine = m_firstLine;
    AddRest(layout.columns);
    heads = layout.separator == ',' ? m_first : CsvLine(texts);
    return layout;
  }

 private:
  static std::vector<WString> TextsOf(char separator, std::string_view line) {
    RowSplitter splitter(separator, -1);
    return Decoded(splitter.Split(line));
  }

  static char SeparatorIn(std::string_view line) {
    const auto* present = std::find_if(std::begin(kSeparators), std::end(kSeparators),
                                       [line](char s) { return line.find(s) != line.npos; });
    return present == std::end(kSeparators) ? ' ' : *present;
  }

  // The layout under a separator, where the first row may be one of heads.
  PointLayout LayoutOf(char separator, std::string_view first) const {
    PointLayout layout;
    layout.separator = separator;
    layout.columns = m_wishes.columns ? *m_wishes.columns : UsualColumns(m_wishes.isEastFirst);
    AddRest(layout.columns);
    layout.columnsBy = m_wishes.columns ? Decider::Option : Decider::Setting;
    layout.unit = m_wishes.from != nullptr ? m_wishes.from : m_wishes.fileUnit;
    layout.unitBy = m_wishes.from != nullptr ? Decider::Option : Decider::Setting;
    const std::vector<WString> texts = TextsOf(separator, first);
    if (!m_wishes.columns && MayBeHeads(texts) && TellColumns(texts)) {
      layout.columns = ReadHeads(texts, {}).columns;
      AddRest(layout.columns);
    }
    return layout;
  }

  // Counts the rows that each separator makes readable, up to so many that one of them has won.
  void TryAll() {
    constexpr int kEnough = 100;
    std::string_view line;
    while (m_source.Next(line)) {
      if (!IsRow(line)) continue;
      if (m_firstLine == 0) {
        m_firstLine = m_source.LineNumber();
        m_first = line;
        for (std::size_t i = 0; i < std::size(kSeparators); ++i) {
          m_trials[i].layout = LayoutOf(kSeparators[i], m_first);
        }
      }
      bool isEnough = false;
      for (Trial& trial : m_trials) {
        if (IsReadable(trial.layout, line)) isEnough = ++trial.readable >= kEnough || isEnough;
      }
      if (isEnough) return;
    }
  }

  static bool IsReadable(const PointLayout& layout, std::string_view line) {
    RowSplitter splitter(layout.separator, RestOf(layout.columns));
    const std::vector<std::string_view>& fields = splitter.Split(line);
    if (splitter.IsQuoteOpen()) return false;
    for (const Column column : {Column::Easting, Column::Northing}) {
      const auto place = static_cast<std::size_t>(PlaceOf(layout.columns, column));
      if (place >= fields.size() || !IsLength(layout, fields[place])) return false;
    }
    const auto elevation = static_cast<std::size_t>(PlaceOf(layout.columns, Column::Elevation));
    return elevation >= fields.size() || fields[elevation].empty() ||
           IsLength(layout, fields[elevation]);
  }

  static bool IsLength(const PointLayout& layout, std::string_view text) {
    return PlainNumber(text) || !ReadLength(Decode(text, true), *layout.unit, layout.Mark()).fault;
  }

  TextSource& m_source;
  const LayoutWishes& m_wishes;
  int m_firstLine = 0;  // the first row
  std::string m_first;
  Trial m_trials[std::size(kSeparators)];
};

PointScan::PointScan(TextSource& source, const LayoutWishes& wishes)
    : m_source(source),
      m_layout(LayoutFinder(source, wishes).Find(m_headsLine, m_heads)),
      m_splitter(m_layout.separator, RestOf(m_layout.columns)) {}

std::optional<LineKind> PointScan::Next() {
  if (!m_source.Next(m_line)) return std::nullopt;
  return Read();
}

std::optional<LineKind> PointScan::NextNamed(const std::vector<std::string>& names) {
  while (m_source.Next(m_line)) {
    if (!MayHold(names) || !IsRow(m_line) || m_source.LineNumber() == m_headsLine) continue;
    const LineKind kind = Read();
    if (std::find(names.begin(), names.end(), FieldOf(Column::Point)) != names.end()) return kind;
  }
  return std::nullopt;
}

// Most lines don't hold a name at all. A quote in a name is two in the line.
bool PointScan::MayHold(const std::vector<std::string>& names) const {
  return std::any_of(names.begin(), names.end(), [this](const std::string& name) {
    return m_line.find(name) != m_line.npos || name.find('"') != name.npos;
  });
}

LineKind PointScan::Read() {
  m_fields = nullptr;
  m_fault = {};
  if (m_source.LineNumber() == m_headsLine) {
    m_line = m_heads;
    return LineKind::Other;
  }
  if (!IsRow(m_line)) return LineKind::Other;
  if (m_line.size() > kLongestLine) {
    m_fault = {KTEXT("the line is too long"), {}};
  } else {
    m_fields = &m_splitter.Split(m_line);
    m_fault = ReadFields();
  }
  return m_fault ? LineKind::Fault : LineKind::Point;
}

std::string_view PointScan::FieldOf(Column column) const {
  const int place = PlaceOf(m_layout.columns, column);
  const bool isThere =
      m_fields != nullptr && place >= 0 && static_cast<std::size_t>(place) < m_fields->size();
  return isThere ? (*m_fields)[static_cast<std::size_t>(place)] : std::string_view();
}

std::vector<std::string_view> PointScan::Others() const {
  std::vector<std::string_view> others;
  for (std::size_t at = 0; m_fields != nullptr && at < m_fields->size(); ++at) {
    const bool isRead = at < m_layout.columns.size() && m_layout.columns[at] != Column::Other;
    if (!isRead) others.push_back((*m_fields)[at]);
  }
  return others;
}

// What is wrong with the row, if anything.
Message PointScan::ReadFields() {
  if (m_splitter.IsQuoteOpen()) return {KTEXT("a quote isn't closed"), {}};
  constexpr std::size_t kLeast = 3;
  if (m_fields->size() < kLeast) {
    return {KTEXT("fewer than three fields; a row is {1}"), {ColumnNames(m_layout.columns)}};
  }
  m_row.name = FieldOf(Column::Point);
  m_row.description = FieldOf(Column::Description);
  m_row.elevation = kelp::kNotSet;
  for (const Column column : m_layout.columns) {
    if (Message fault = ReadCoordinate(column)) return fault;
  }
  const bool endsInDigits = !m_row.description.empty() && IsDigit(m_row.description.front());
  if (endsInDigits && m_layout.separator == ',' && LooksCutByCommas(m_line)) {
    return {KTEXT("the numbers seem to have decimal commas, and commas separate the fields"), {}};
  }
  return {};
}

// An elevation may be missing.
Message PointScan::ReadCoordinate(Column column) {
  if (!IsCoordinate(column)) return {};
  double& value = column == Column::Easting    ? m_row.easting
                  : column == Column::Northing ? m_row.northing
                                               : m_row.elevation;
  const std::string_view text = FieldOf(column);
  if (text.empty()) {
    if (column == Column::Elevation) return {};
    return {KTEXT("{1} is missing"), {ColumnNames({column})}};
  }
  if (const auto plain = PlainNumber(text); plain && IsWithinReach(*plain, *m_layout.unit)) {
    value = *plain;
    return {};
  }
  const WString wide = Decode(text, true);
  const Reading reading = ReadLength(wide, *m_layout.unit, m_layout.Mark());
  value = reading.value;
  if (!reading.fault) return {};
  return {KTEXT("{1} \"{2}\": {3}"), {ColumnNames({column}), Quoted(wide), reading.fault.Text()}};
}

}  // namespace fieldbook
