#include "fieldbook/points/PointList.h"

#include <algorithm>
#include <iterator>
#include <memory>
#include <utility>

#include "fieldbook/console/Console.h"
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

PointList::PointList(kelp::CChangeTransactionManager* manager, const std::string& bytes,
                     const LengthUnit& unit)
    : CSourceEvent(manager), m_unit(unit) {
  const PointFile file = ReadPoints(bytes, unit);
  m_rows = RowsOf(file);
  m_saved = m_rows;
  m_faults = file.faults;
  // Zero bytes come as other characters out of the reading.
  m_isWhole = m_faults.empty() && bytes.find('\0') == std::string::npos;
  m_hasMark = WithoutMark(bytes).size() != bytes.size();
  const std::size_t lineEnd = bytes.find('\n');
  m_hasCrLf = lineEnd != std::string::npos && lineEnd > 0 && bytes[lineEnd - 1] == '\r';
}

std::vector<PointList::Row> PointList::RowsOf(const PointFile& file) {
  std::vector<Row> rows;
  rows.reserve(file.points.size() + file.others.size());
  auto other = file.others.begin();
  const auto takeOthers = [&](auto isWanted) {
    for (; other != file.others.end() && isWanted(other->line); ++other) {
      rows.push_back({false, false, other->text, {}});
    }
  };
  for (const Point& point : file.points) {
    takeOthers([&point](int line) { return line < point.line; });
    rows.push_back({true, false, WString(), point});
  }
  takeOthers([](int) { return true; });
  return rows;
}

std::vector<Point> PointList::Points() const {
  std::vector<Point> points;
  for (const Row& row : m_rows) {
    if (row.isPoint && !row.isRemoved) points.push_back(row.point);
  }
  return points;
}

bool PointList::HasPoint(const WString& name) const {
  return std::any_of(m_rows.begin(), m_rows.end(), [&name](const Row& row) {
    return row.isPoint && !row.isRemoved && row.point.name == name;
  });
}

std::size_t PointList::RequirePoint(const WString& name) const {
  const Row* found = nullptr;
  for (const Row& row : m_rows) {
    if (!row.isPoint || row.isRemoved || row.point.name != name) continue;
    if (found != nullptr) {
      throw Failure(
          {KTEXT("there are several points \"{1}\", in lines {2} and {3}"),
           {Quoted(name), WString::ValueOf(found->point.line), WString::ValueOf(row.point.line)}});
    }
    found = &row;
  }
  if (found == nullptr) throw Failure({KTEXT("there is no point \"{1}\""), {Quoted(name)}});
  return static_cast<std::size_t>(found - m_rows.data());
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
  m_rows[row] = state;
  m_step = step;
}

void PointList::Exchange(std::size_t row, Row& state, const WString& step) {
  const kelp::CSourceEventScope transaction(this);
  m_changedRows.insert(row);
  std::swap(m_rows[row], state);
  m_step = step;
}

std::string PointList::Bytes() const {
  std::string bytes = m_hasMark ? "\xEF\xBB\xBF" : "";
  for (const Row& row : m_rows) {
    if (row.isRemoved) continue;
    if (row.isPoint) {
      const Point& point = row.point;
      bytes += CsvLine({point.name, WriteExactly(point.northing, m_unit.decimals),
                        WriteExactly(point.easting, m_unit.decimals),
                        WriteExactly(point.elevation, m_unit.decimals), point.description});
    } else {
      bytes += row.text.ToUtf8().c_str();
    }
    bytes += m_hasCrLf ? "\r\n" : "\n";
  }
  if (ReadsBack(bytes)) return bytes;
  throw Failure({KTEXT("the points can't be written so that they are read back the same"), {}});
}

// A description can look like the row of another separator, and then the reading takes that one.
bool PointList::ReadsBack(const std::string& bytes) const {
  std::vector<Row> kept;
  std::copy_if(m_rows.begin(), m_rows.end(), std::back_inserter(kept),
               [](const Row& row) { return !row.isRemoved; });
  const PointFile file = ReadPoints(bytes, m_unit);
  const std::vector<Row> read = RowsOf(file);
  return file.faults.empty() &&
         std::equal(read.begin(), read.end(), kept.begin(), kept.end(), AreEqual);
}

bool PointList::AreEqual(const Row& a, const Row& b) {
  const Point& p = a.point;
  const Point& q = b.point;
  if (a.isPoint != b.isPoint || a.isRemoved != b.isRemoved) return false;
  if (!a.isPoint) return a.text == b.text;
  return p.name == q.name && p.northing == q.northing && p.easting == q.easting &&
         p.elevation == q.elevation && p.description == q.description;
}

bool PointList::IsChanged() const {
  return !std::equal(m_rows.begin(), m_rows.end(), m_saved.begin(), m_saved.end(), AreEqual);
}

}  // namespace fieldbook
