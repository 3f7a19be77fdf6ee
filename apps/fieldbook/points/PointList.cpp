#include "fieldbook/points/PointList.h"

#include <algorithm>
#include <functional>
#include <utility>

#include "console/Console.h"
#include "fieldbook/console/Table.h"

namespace fieldbook {

// Keeps the other state of a row: that before the change, or the one after it once it is undone.
//
// The library undoes the changes of a transaction in the order in which they were made. So a
// transaction has at most one of these for a row, from the row's first state to its last; those of
// different rows may run in any order.
class PointList::RowChange final : public kelp::ICmdExecuted {
 public:
  RowChange(PointList& list, std::size_t row, const WString& step)
      : m_list(list), m_row(row), m_state(list.m_rows[row]), m_step(step) {}

  void Undo() override { m_list.Exchange(m_row, m_state, m_step); }
  void Redo() override { m_list.Exchange(m_row, m_state, m_step); }
  unsigned int GetMemSize() override { return sizeof *this; }

 private:
  PointList& m_list;
  std::size_t m_row;
  Row m_state;
  WString m_step;
};

namespace {

std::size_t HashOf(const WString& name) {
  return std::hash<WideView>()(ViewOf(name));
}

}  // namespace

PointList::PointList(kelp::CChangeTransactionManager* manager, std::string_view bytes,
                     const LayoutWishes& wishes, const Watch& watch)
    : CSourceEvent(manager) {
  const auto source = BytesOf(bytes);
  PointFile file = ReadPoints(*source, wishes, watch);
  m_layout = file.layout;
  m_faults = file.faults;
  m_rows = RowsOf(std::move(file));
  m_named.Reserve(m_rows.size());
  for (std::size_t row = 0; row < m_rows.size(); ++row) Enlist(row);
  const TextSource text(*source);
  // Zero characters come as other ones out of the reading.
  m_isWhole = m_faults.IsEmpty() && !text.HoldsZeros();
  m_hasMark = text.Encoding() == TextEncoding::Utf8WithMark;
  m_hasCrLf = text.EndsLinesInCrLf();
}

std::vector<PointList::Row> PointList::RowsOf(PointFile file) {
  std::vector<Row> rows;
  rows.reserve(file.points.size() + file.others.size());
  auto other = file.others.begin();
  const auto takeOthers = [&](auto isWanted) {
    for (; other != file.others.end() && isWanted(other->line); ++other) {
      rows.push_back({false, false, std::move(other->text), {}});
    }
  };
  for (Point& point : file.points) {
    takeOthers([&point](int line) { return line < point.line; });
    rows.push_back({true, false, WString(), std::move(point)});
  }
  takeOthers([](int) { return true; });
  return rows;
}

void PointList::Enlist(std::size_t row) {
  if (!IsThere(m_rows[row])) return;
  m_named.Add(HashOf(m_rows[row].point.name), row);
  ++m_countPoints;
}

void PointList::Delist(std::size_t row) {
  if (!IsThere(m_rows[row])) return;
  m_named.Remove(row);
  --m_countPoints;
}

std::vector<Point> PointList::Points() const {
  std::vector<Point> points;
  points.reserve(m_countPoints);
  for (const Row& row : m_rows) {
    if (IsThere(row)) points.push_back(row.point);
  }
  return points;
}

std::vector<std::size_t> PointList::RowsOfPoints() const {
  std::vector<std::size_t> rows;
  rows.reserve(m_countPoints);
  for (std::size_t row = 0; row < m_rows.size(); ++row) {
    if (IsThere(m_rows[row])) rows.push_back(row);
  }
  return rows;
}

bool PointList::HasPoint(const WString& name) const {
  std::size_t row = m_named.First(HashOf(name));
  while (row != RowIndex::kNone && m_rows[row].point.name != name) row = m_named.Next(row);
  return row != RowIndex::kNone;
}

std::size_t PointList::RequirePoint(const WString& name) const {
  std::vector<std::size_t> found;
  for (std::size_t row = m_named.First(HashOf(name)); row != RowIndex::kNone;
       row = m_named.Next(row)) {
    if (m_rows[row].point.name == name) found.push_back(row);
  }
  if (found.empty()) throw Failure({KTEXT("there is no point \"{1}\""), {Quoted(name)}});
  if (found.size() == 1) return found.front();
  std::sort(found.begin(), found.end());
  throw Failure({KTEXT("there are several points \"{1}\", in lines {2} and {3}"),
                 {Quoted(name), WString::ValueOf(m_rows[found[0]].point.line),
                  WString::ValueOf(m_rows[found[1]].point.line)}});
}

// A new row is one that has been removed up to now, so that undoing it takes no row away.
void PointList::Add(const Point& point, const WString& step) {
  m_rows.push_back({true, true, WString(), point});
  Change(m_rows.size() - 1, {true, false, WString(), point}, step);
}

void PointList::Replace(std::size_t row, const Point& point, const WString& step) {
  Row state = m_rows[row];
  state.point = point;
  Change(row, state, step);
}

void PointList::Remove(std::size_t row, const WString& step) {
  Row state = m_rows[row];
  state.isRemoved = true;
  Change(row, state, step);
}

void PointList::Change(std::size_t row, const Row& state, const WString& step) {
  const kelp::CSourceEventScope transaction(this);
  if (m_changedRows.insert(row).second) {
    GetChangeTransactionManager()->Add(new RowChange(*this, row, step));
  }
  SetRow(row, state);
  m_step = step;
}

void PointList::Exchange(std::size_t row, Row& state, const WString& step) {
  const kelp::CSourceEventScope transaction(this);
  m_changedRows.insert(row);
  const Row before = m_rows[row];
  SetRow(row, state);
  state = before;
  m_step = step;
}

void PointList::SetRow(std::size_t row, const Row& state) {
  m_unsaved.emplace(row, m_rows[row]);
  Delist(row);
  m_rows[row] = state;
  Enlist(row);
}

std::string PointList::Bytes() const {
  std::string bytes = m_hasMark ? "\xEF\xBB\xBF" : "";
  for (const Row& row : m_rows) {
    if (row.isRemoved) continue;
    if (row.isPoint) {
      AppendPoint(bytes, row.point);
    } else {
      AppendUtf8(bytes, row.text);
    }
    bytes += m_hasCrLf ? "\r\n" : "\n";
  }
  if (ReadsBack(bytes)) return bytes;
  throw Failure({KTEXT("the points can't be written so that they are read back the same"), {}});
}

void PointList::AppendPoint(std::string& bytes, const Point& point) const {
  bool isFirst = true;
  auto other = point.others.begin();
  const auto appendOther = [&] {
    if (other != point.others.end()) AppendCsvField(bytes, *other++, isFirst);
  };
  for (const Column column : m_layout.columns) {
    if (!isFirst) bytes += ',';
    switch (column) {
      case Column::Point:
        AppendCsvField(bytes, point.name, isFirst);
        break;
      case Column::Easting:
        AppendExactly(bytes, point.easting, Unit().decimals);
        break;
      case Column::Northing:
        AppendExactly(bytes, point.northing, Unit().decimals);
        break;
      case Column::Elevation:
        AppendExactly(bytes, point.elevation, Unit().decimals);
        break;
      case Column::Description:
        AppendCsvField(bytes, point.description, isFirst);
        break;
      case Column::Other:
        appendOther();
        break;
    }
    isFirst = false;
  }
  while (other != point.others.end()) {
    bytes += ',';
    appendOther();
  }
}

// As the file was read, whatever its heads say.
LayoutWishes PointList::OwnWishes() const {
  return {m_layout.columns, m_layout.unit, true, m_layout.unit};
}

// A description can look like the row of another separator, and then the reading takes that one.
bool PointList::ReadsBack(const std::string& bytes) const {
  const auto source = BytesOf(bytes);
  TextSource text(*source);
  PointScan scan(text, OwnWishes());
  std::size_t row = 0;
  const auto skipRemoved = [&] {
    while (row < m_rows.size() && m_rows[row].isRemoved) ++row;
  };
  for (skipRemoved(); const auto kind = scan.Next(); skipRemoved()) {
    if (*kind == LineKind::Fault || row == m_rows.size()) return false;
    Row read;
    read.isPoint = *kind == LineKind::Point;
    if (read.isPoint) {
      read.point = ToPoint(scan);
    } else {
      read.text = Decode(scan.Line(), true);
    }
    if (!AreEqual(read, m_rows[row++])) return false;
  }
  return row == m_rows.size();
}

bool PointList::AreEqual(const Row& a, const Row& b) {
  const Point& p = a.point;
  const Point& q = b.point;
  if (a.isPoint != b.isPoint || a.isRemoved != b.isRemoved) return false;
  if (!a.isPoint) return a.text == b.text;
  return p.name == q.name && p.northing == q.northing && p.easting == q.easting &&
         p.elevation == q.elevation && p.description == q.description && p.others == q.others;
}

bool PointList::IsChanged() const {
  return std::any_of(m_unsaved.begin(), m_unsaved.end(), [this](const auto& entry) {
    const Row& now = m_rows[entry.first];
    const bool wasAndIsGone = entry.second.isRemoved && now.isRemoved;
    return !wasAndIsGone && !AreEqual(entry.second, now);
  });
}

}  // namespace fieldbook
