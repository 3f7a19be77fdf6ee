#include "kelp0lang/FileStream.h"

#include "kelp0lang/Ptr64Mapper.h"

namespace kelp {

void SavePointerToFile(ofpstream& file, std::int64_t pointer, CPtr64Mapper* mapper) {
  file << mapper->GetPointer32(pointer);
}

std::int64_t LoadPointerFromFile(ifpstream& file) {
  int number = 0;
  file >> number;
  return number;
}

}  // namespace kelp
