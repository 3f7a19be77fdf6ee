// The bytes of a points file, from wherever it stands.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

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

// Bytes in memory, which outlive the source.
std::unique_ptr<ByteSource> BytesOf(std::string_view bytes);

// What a source holds from its place on. Throws Failure.
std::string ReadRest(ByteSource& bytes);

}  // namespace fieldbook
