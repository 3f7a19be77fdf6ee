#include "kelp0lang/PointRecords.h"

#include <cstddef>
#include <stdexcept>

namespace kelp {
namespace {

template <class T>
const T& RecordAt(const std::vector<T>& records, int index) {
  if (index < 0 || static_cast<std::size_t>(index) >= records.size()) {
    throw std::out_of_range("invalid vector<T> subscript");
  }
  return records[static_cast<std::size_t>(index)];
}

}  // namespace

CPoint3dVector::~CPoint3dVector() = default;

void CPoint3dVector::AddPoint(double x, double y, double z, const WString& name,
                              const WString& code) {
  m_points.push_back({x, y, z, name, code});
}

void CPoint3dVector::AddPointUnnamed(double x, double y, double z) {
  AddPoint(x, y, z, WString(), WString());
}

void CPoint3dVector::DeleteAllPoints() {
  m_points.clear();
}

unsigned CPoint3dVector::GetNoPoints() const {
  return static_cast<unsigned>(m_points.size());
}

double CPoint3dVector::GetXcoordAt(int index) const {
  return At(index).x;
}
double CPoint3dVector::GetYcoordAt(int index) const {
  return At(index).y;
}
double CPoint3dVector::GetZcoordAt(int index) const {
  return At(index).z;
}
const WString& CPoint3dVector::GetNameAt(int index) const {
  return At(index).name;
}
const WString& CPoint3dVector::GetCodeAt(int index) const {
  return At(index).code;
}

const CPoint3dVector::TPoint& CPoint3dVector::At(int index) const {
  return RecordAt(m_points, index);
}

CPointerRef::~CPointerRef() = default;

void CPointerRef::AddPtRef(std::int64_t reference) {
  m_references.push_back(reference);
}

void CPointerRef::DeleteAllPtRef() {
  m_references.clear();
}

unsigned CPointerRef::GetNoPtRef() const {
  return static_cast<unsigned>(m_references.size());
}

std::int64_t CPointerRef::GetPtRefAt(int index) const {
  return RecordAt(m_references, index);
}

}  // namespace kelp
