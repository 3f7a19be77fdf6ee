// The bytes of a points file, from wherever it stands.
//
//   const auto bytes = OpenBytes(file);
//   while (const std::size_t count = bytes->Read(buffer, sizeof buffer)) ...
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "console/Console.h"
#include "fieldbook/values/Text.h"

namespace fieldbook {

// Bytes that are read from the beginning as often as one likes.
class ByteSource {
 public:
  virtual ~ByteSource() = default;
  virtual void Rewind() = 0;
  // Fills the buffer as far as it can; 0 at the end. Throws Failure.
  virtual std::size_t Read(char* buffer, std::size_t size) = 0;
  // 0 where it isn't known.
  virtual std::uintmax_t Size() const = 0;
};

// A file, which stays open. It is mapped where it can be, see MappedBytes.h; what can't is read as a
// stream: a device, a file that is empty or whose size the system makes up, one that another
// program writes, and one that the library can't name. A pipe, which can be read only once, is kept
// in memory. Throws Failure where it can't be opened.
std::unique_ptr<ByteSource> OpenBytes(const Argument& file);
// Bytes in memory, which outlive the source.
std::unique_ptr<ByteSource> BytesOf(std::string_view bytes);

// What a source holds from its place on. Throws Failure.
std::string ReadRest(ByteSource& bytes);

}  // namespace fieldbook
