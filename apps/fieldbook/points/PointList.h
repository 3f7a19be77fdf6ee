// The points of a file while they are edited.
//
//   kelp::CChangeTransactionManager manager;
//   PointList list(&manager, bytes, wishes);
//   list.Register(&view);                               // a kelp::CSourceEvent::IEvent
//   list.Remove(list.RequirePoint(KTEXT("T1")), step);  // the view hears it
//   manager.Undo();                                     // and this
//
// Each change is a transaction of its own, or part of the one that is open, and recorded for undo.
#pragma once

#include <cstdint>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "fieldbook/points/PointFile.h"
#include "fieldbook/points/RowIndex.h"
#include "kelp0lang/ChangeTransaction.h"

namespace fieldbook {

class PointList : public kelp::CSourceEvent {
 public:
  // Throws Failure as PointScan does.
  PointList(kelp::CChangeTransactionManager* manager, std::string_view bytes,
            const LayoutWishes& wishes, const Watch& watch = {});

  const PointLayout& Layout() const { return m_layout; }
  // The unit of the coordinates.
  const LengthUnit& Unit() const { return *m_layout.unit; }
  // What couldn't be read.
  const FaultList& Faults() const { return m_faults; }
  // Whether all of the file is in the list, so that writing the file again loses nothing.
  bool IsWhole() const { return m_isWhole; }

  std::vector<Point> Points() const;
  std::vector<std::size_t> RowsOfPoints() const;
  std::size_t CountPoints() const { return m_countPoints; }
  bool HasPoint(const WString& name) const;
  // The row of the one point of this name. Throws Failure if there is none, or several.
  std::size_t RequirePoint(const WString& name) const;
  const Point& PointIn(std::size_t row) const { return m_rows[row].point; }
  bool IsRemoved(std::size_t row) const { return m_rows[row].isRemoved; }

  // step is what the user calls the change, or the group of changes that it belongs to.
  void Add(const Point& point, const WString& step);
  void Replace(std::size_t row, const Point& point, const WString& step);
  void Remove(std::size_t row, const WString& step);

  // For listeners: the rows that this transaction has changed, and the step that it belongs to.
  const std::set<std::size_t>& ChangedRows() const { return m_changedRows; }
  const WString& Step() const { return m_step; }

  // The file's bytes, in UTF-8 and comma-separated: comments, empty lines and heads stand where
  // they stood. Throws Failure if they wouldn't be read back as this list.
  std::string Bytes() const;

  // Whether the list differs from what was read or marked last.
  bool IsChanged() const;
  void MarkSaved() { m_unsaved.clear(); }

 private:
  class RowChange;

  // A line of the file. A removed one keeps its place, so that the numbers of rows last.
  struct Row {
    bool isPoint = false;
    bool isRemoved = false;
    WString text;  // of a line that is no point
    Point point;
  };

  static std::vector<Row> RowsOf(PointFile file);
  static bool AreEqual(const Row& a, const Row& b);
  static bool IsThere(const Row& row) { return row.isPoint && !row.isRemoved; }
  LayoutWishes OwnWishes() const;
  bool ReadsBack(const std::string& bytes) const;
  void AppendPoint(std::string& bytes, const Point& point) const;
  void Change(std::size_t row, const Row& state, const WString& step);
  void Exchange(std::size_t row, Row& state, const WString& step);
  void SetRow(std::size_t row, const Row& state);
  void Enlist(std::size_t row);
  void Delist(std::size_t row);

  void OnBeforeBeginEvent() override { m_changedRows.clear(); }

  PointLayout m_layout;
  FaultList m_faults;
  bool m_isWhole = false;
  bool m_hasMark = false;
  bool m_hasCrLf = false;
  std::vector<Row> m_rows;
  std::size_t m_countPoints = 0;
  RowIndex m_named;  // of the points that are there, by their names
  // The rows that were changed since the list was read or saved, as they stood then.
  std::map<std::size_t, Row> m_unsaved;
  std::set<std::size_t> m_changedRows;
  WString m_step;
};

}  // namespace fieldbook
