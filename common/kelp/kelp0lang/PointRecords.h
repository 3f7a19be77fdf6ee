// Two small containers of records: points with their name and code, and 64-bit references.
//
// An index that is negative or not below the count throws std::out_of_range.
#pragma once

#include <cstdint>
#include <vector>

#include "kelp0lang/Export.h"
#include "kelp0lang/String.h"

namespace kelp {

// Points: coordinates in the caller's system and unit, name and code.
class KELP0LANG_API CPoint3dVector {
 public:
  CPoint3dVector() = default;
  CPoint3dVector(const CPoint3dVector&) = default;
  CPoint3dVector& operator=(const CPoint3dVector&) = default;
  virtual ~CPoint3dVector();

  void AddPoint(double x, double y, double z, const WString& name, const WString& code);
  // With empty name and code.
  void AddPointUnnamed(double x, double y, double z);
  // Leaves none.
  void DeleteAllPoints();

  unsigned GetNoPoints() const;
  double GetXcoordAt(int index) const;
  double GetYcoordAt(int index) const;
  double GetZcoordAt(int index) const;
  // Valid until the points change.
  const WString& GetNameAt(int index) const;
  const WString& GetCodeAt(int index) const;

 private:
  struct TPoint {
    double x;
    double y;
    double z;
    WString name;
    WString code;
  };
  const TPoint& At(int index) const;

  std::vector<TPoint> m_points;
};

// References to objects, as numbers.
class KELP0LANG_API CPointerRef {
 public:
  CPointerRef() = default;
  CPointerRef(const CPointerRef&) = default;
  CPointerRef& operator=(const CPointerRef&) = default;
  virtual ~CPointerRef();

  void AddPtRef(std::int64_t reference);
  void DeleteAllPtRef();
  unsigned GetNoPtRef() const;
  std::int64_t GetPtRefAt(int index) const;

 private:
  std::vector<std::int64_t> m_references;
};

}  // namespace kelp
