#include "fieldbook/commands/PointEdits.h"

#include <algorithm>
#include <iterator>

namespace fieldbook {
namespace {

const std::vector<const WChar*> kShiftNames = {KTEXT("dE"), KTEXT("dN"), KTEXT("dH")};

// Where blanks part the words, "1 1/2" is two of them, and nobody can tell what was meant.
void RequireNoPart(const WChar* name, const WString& before, const WString& word) {
  const WideView digits = ViewOf(before);
  if (!IsFraction(word) || digits.empty() || !IsDigit(digits.back()) ||
      digits.find_first_of(KTEXT(".,/")) != WideView::npos) {
    return;
  }
  throw Failure(
      {KTEXT("{1} \"{2}\": this could be a value of its own or part of \"{3}\", which then "
             "stands in quotes"),
       {name, Quoted(word), Quoted(before + KTEXT(' ') + word.c_str())}});
}

const LengthUnit* UnitNamed(const WString& word) {
  const auto* unit =
      std::find_if(std::begin(kLengthUnits), std::end(kLengthUnits),
                   [&word](const LengthUnit& u) { return word.Compare(u.name) == 0; });
  return unit == std::end(kLengthUnits) ? nullptr : unit;
}

}  // namespace

[[noreturn]] void FailOnOperands(const WString& command, const WChar* operands) {
  throw Failure({KTEXT("{1} takes {2}"), {command, operands}});
}

// In the unit of the file.
double PointEdits::ReadNumbered(const WChar* name, const WString& text,
                                const LengthUnit& unit) const {
  const Reading reading = ReadLength(text, unit, DecimalMark::PointOrComma);
  if (!reading.fault) return ConvertDist(reading.value, unit.unit, m_list.Unit().unit);
  throw Failure({KTEXT("{1} \"{2}\": {3}"), {name, Quoted(text), reading.fault.Text()}});
}

// As many lengths as there are names, each with a unit behind it or not; an empty one isn't set.
// next becomes the place of the word behind them.
std::vector<double> PointEdits::ReadLengths(const Words& words, std::size_t first,
                                            const std::vector<const WChar*>& names,
                                            std::size_t& next) const {
  std::vector<double> lengths;
  next = first;
  for (const WChar* name : names) {
    if (next >= words.size()) throw Failure({KTEXT("{1} is missing"), {name}});
    const WString& text = words[next++];
    if (next - 1 > first) RequireNoPart(name, words[next - 2], text);
    const LengthUnit* unit = next < words.size() ? UnitNamed(words[next]) : nullptr;
    if (unit != nullptr) ++next;
    lengths.push_back(text.empty()
                          ? kelp::kNotSet
                          : ReadNumbered(name, text, unit != nullptr ? *unit : m_list.Unit()));
  }
  return lengths;
}

void PointEdits::RequireWithinReach(const Point& point) const {
  for (const double value : {point.easting, point.northing, point.elevation}) {
    if (value < kelp::kNotSetThreshold && !IsWithinReach(value, m_list.Unit())) {
      throw Failure(OutOfRange());
    }
  }
}

void PointEdits::RequireNewName(const WString& name) const {
  if (name.empty()) throw Failure({KTEXT("a point can't be without a name"), {}});
  if (!m_list.HasPoint(name)) return;
  throw Failure({KTEXT("there is a point \"{1}\" already"), {Quoted(name)}});
}

void PointEdits::Add(const Words& words, const WString& step) {
  Point point{ToWString(Trimmed(ViewOf(words[0]))), 0, 0, kelp::kNotSet, WString(), 0, {}};
  RequireNewName(point.name);
  std::size_t next = 1;
  const std::vector<double> plane = ReadLengths(words, next, {KTEXT("E"), KTEXT("N")}, next);
  point.easting = plane[0];
  point.northing = plane[1];
  if (std::max(point.easting, point.northing) > kelp::kNotSetThreshold) {
    throw Failure(
        {KTEXT("{1} is missing"), {point.easting > point.northing ? KTEXT("E") : KTEXT("N")}});
  }
  if (next < words.size()) point.elevation = ReadLengths(words, next, {KTEXT("H")}, next)[0];
  if (next < words.size()) {
    RequireNoPart(KTEXT("CODE"), words[next - 1], words[next]);
    point.description = words[next++];
  }
  if (next < words.size()) FailOnOperands(KTEXT("add"), kAddOperands);
  RequireWithinReach(point);
  m_list.Add(point, step);
}

void PointEdits::Move(const Words& words, const WString& step) {
  std::size_t next = 0;
  const std::vector<double> shift = ReadLengths(words, 1, kShiftNames, next);
  if (next < words.size()) FailOnOperands(KTEXT("move"), kMoveOperands);
  MoveRow(m_list.RequirePoint(words[0]), shift, step);
}

// All or none: what moves out of reach is found before anything moves.
void PointEdits::Shift(const Words& words, const WString& step) {
  std::size_t next = 0;
  const std::vector<double> shift = ReadLengths(words, 0, kShiftNames, next);
  if (next < words.size()) FailOnOperands(KTEXT("shift"), kShiftOperands);
  const kelp::CSourceEventScope transaction(&m_list);
  for (const std::size_t row : m_list.RowsOfPoints()) RequireWithinReach(Moved(row, shift));
  for (const std::size_t row : m_list.RowsOfPoints()) m_list.Replace(row, Moved(row, shift), step);
}

Point PointEdits::Moved(std::size_t row, const std::vector<double>& shift) const {
  Point point = m_list.PointIn(row);
  point.easting += shift[0];
  point.northing += shift[1];
  if (point.elevation < kelp::kNotSetThreshold) point.elevation += shift[2];
  return point;
}

void PointEdits::MoveRow(std::size_t row, const std::vector<double>& shift, const WString& step) {
  const Point& point = m_list.PointIn(row);
  if (point.elevation > kelp::kNotSetThreshold && shift[2] != 0) {
    throw Failure({KTEXT("the point \"{1}\" has no elevation"), {Quoted(point.name)}});
  }
  const Point moved = Moved(row, shift);
  RequireWithinReach(moved);
  m_list.Replace(row, moved, step);
}

void PointEdits::Set(const Words& words, const WString& step) {
  const std::size_t row = m_list.RequirePoint(words[0]);
  const WString& what = words[1];
  Point point = m_list.PointIn(row);
  const auto length = [&](bool isRequired) {
    std::size_t next = 0;
    const double value = ReadLengths(words, 2, {what.c_str()}, next)[0];
    if (next < words.size()) {
      RequireNoPart(what.c_str(), words[next - 1], words[next]);
      FailOnOperands(KTEXT("set"), kSetOperands);
    }
    if (isRequired && value > kelp::kNotSetThreshold) {
      throw Failure({KTEXT("{1} is missing"), {what}});
    }
    return value;
  };
  const bool isText = what == KTEXT("code") || what == KTEXT("name");
  if (isText && words.size() > 3) FailOnOperands(KTEXT("set"), kSetOperands);
  if (what == KTEXT("east")) {
    point.easting = length(true);
  } else if (what == KTEXT("north")) {
    point.northing = length(true);
  } else if (what == KTEXT("up")) {
    point.elevation = length(false);
  } else if (what == KTEXT("code")) {
    point.description = words[2];
  } else if (what == KTEXT("name")) {
    return Rename({words[0], words[2]}, step);
  } else {
    throw Failure({KTEXT("set: \"{1}\" isn't one of {2}"),
                   {Quoted(what), KTEXT("east, north, up, name, code")}});
  }
  RequireWithinReach(point);
  m_list.Replace(row, point, step);
}

void PointEdits::Rename(const Words& words, const WString& step) {
  const std::size_t row = m_list.RequirePoint(words[0]);
  Point point = m_list.PointIn(row);
  point.name = ToWString(Trimmed(ViewOf(words[1])));
  RequireNewName(point.name);
  m_list.Replace(row, point, step);
}

void PointEdits::Delete(const Words& words, const WString& step) {
  m_list.Remove(m_list.RequirePoint(words[0]), step);
}

}  // namespace fieldbook
