// The commands of fieldbook edit that change points: add, move, shift, set, rename and delete.
#pragma once

#include <vector>

#include "fieldbook/points/PointList.h"
#include "fieldbook/values/Length.h"

namespace fieldbook {

using Words = std::vector<WString>;

inline constexpr const WChar* kAddOperands = KTEXT("P E N [H [CODE]]");
inline constexpr const WChar* kMoveOperands = KTEXT("P dE dN dH");
inline constexpr const WChar* kShiftOperands = KTEXT("dE dN dH");
inline constexpr const WChar* kSetOperands = KTEXT("P WHAT VALUE");

// Throws Failure: what the command takes.
[[noreturn]] void FailOnOperands(const WString& command, const WChar* operands);

// Each takes the words behind the command and what the step is called in undo, and throws Failure
// where the words aren't what the command takes or the change can't be made; nothing is changed
// then. Lengths are in the unit of the file, unless one has a unit behind it.
class PointEdits {
 public:
  explicit PointEdits(PointList& list) : m_list(list) {}

  void Add(const Words& words, const WString& step);
  void Move(const Words& words, const WString& step);
  void Shift(const Words& words, const WString& step);
  void Set(const Words& words, const WString& step);
  void Rename(const Words& words, const WString& step);
  void Delete(const Words& words, const WString& step);

 private:
  double ReadNumbered(const WChar* name, const WString& text, const LengthUnit& unit) const;
  std::vector<double> ReadLengths(const Words& words, std::size_t first,
                                  const std::vector<const WChar*>& names, std::size_t& next) const;
  Point Moved(std::size_t row, const std::vector<double>& shift) const;
  void MoveRow(std::size_t row, const std::vector<double>& shift, const WString& step);
  void RequireWithinReach(const Point& point) const;
  void RequireNewName(const WString& name) const;

  PointList& m_list;
};

}  // namespace fieldbook
