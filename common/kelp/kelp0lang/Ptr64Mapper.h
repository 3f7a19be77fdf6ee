// Small numbers for 64-bit pointers, so that a pointer takes 4 bytes in a file.
//
//   kelp::CPtr64Mapper mapper;
//   int number = mapper.GetPointer32(reinterpret_cast<std::int64_t>(layer));
//
// Nothing here is locked; the process-wide mapper is used by one thread at a time.
#pragma once

#include <cstdint>
#include <map>

#include "kelp0lang/Export.h"
#include "kelp0lang/Singleton.h"

namespace kelp {

// Numbers pointers 1, 2, 3... in the order in which it first sees them; null too. A pointer keeps
// its number as long as the mapper lives. A copy counts on for itself.
class KELP0LANG_API CPtr64Mapper {
 public:
  CPtr64Mapper() = default;
  CPtr64Mapper(const CPtr64Mapper&) = default;
  CPtr64Mapper& operator=(const CPtr64Mapper&) = default;
  // The source is empty afterwards and begins at 1.
  CPtr64Mapper(CPtr64Mapper&& other) noexcept;
  CPtr64Mapper& operator=(CPtr64Mapper&& other) noexcept;

  int GetPointer32(std::int64_t pointer);

 private:
  std::map<std::int64_t, int> m_numbers;
};

// The process-wide mapper. It grows over all that is saved through it; who wants numbers from 1
// uses a mapper of his own.
class KELP0LANG_API CPtr64TmpMapper : public ISingleton {
 public:
  static CPtr64TmpMapper* GetInstance();
  CPtr64Mapper* GetMapper() noexcept { return &m_mapper; }

 private:
  CPtr64TmpMapper() = default;
  ~CPtr64TmpMapper() override;

  CPtr64Mapper m_mapper;
};

// The mapper of CPtr64TmpMapper.
KELP0LANG_API CPtr64Mapper* GetPrt64TmpMapper();

}  // namespace kelp
