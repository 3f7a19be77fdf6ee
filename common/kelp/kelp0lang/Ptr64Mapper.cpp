#include "kelp0lang/Ptr64Mapper.h"

#include <utility>

namespace kelp {

namespace {

constinit CPtr64TmpMapper* instance = nullptr;

}  // namespace

CPtr64Mapper::CPtr64Mapper(CPtr64Mapper&& other) noexcept {
  m_numbers.swap(other.m_numbers);
}

CPtr64Mapper& CPtr64Mapper::operator=(CPtr64Mapper&& other) noexcept {
  CPtr64Mapper taken(std::move(other));
  m_numbers.swap(taken.m_numbers);
  return *this;
}

int CPtr64Mapper::GetPointer32(std::int64_t pointer) {
  int& number = m_numbers[pointer];
  if (number == 0) number = static_cast<int>(m_numbers.size());
  return number;
}

CPtr64TmpMapper::~CPtr64TmpMapper() = default;

CPtr64TmpMapper* CPtr64TmpMapper::GetInstance() {
  if (instance == nullptr) instance = new CPtr64TmpMapper;
  return instance;
}

CPtr64Mapper* GetPrt64TmpMapper() {
  return CPtr64TmpMapper::GetInstance()->GetMapper();
}

}  // namespace kelp
