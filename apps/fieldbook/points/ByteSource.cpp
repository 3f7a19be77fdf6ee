#include "fieldbook/points/ByteSource.h"

namespace fieldbook {
namespace {

class MemoryBytes final : public ByteSource {
 public:
  explicit MemoryBytes(std::string_view bytes) : m_bytes(bytes), m_rest(bytes) {}

  void Rewind() override { m_rest = m_bytes; }
  std::size_t Read(char* buffer, std::size_t size) override {
    const std::size_t taken = m_rest.copy(buffer, size);
    m_rest.remove_prefix(taken);
    return taken;
  }
  std::uintmax_t Size() const override { return m_bytes.size(); }

 private:
  std::string_view m_bytes;
  std::string_view m_rest;
};

}  // namespace

std::unique_ptr<ByteSource> BytesOf(std::string_view bytes) {
  return std::make_unique<MemoryBytes>(bytes);
}

std::string ReadRest(ByteSource& bytes) {
  constexpr std::size_t kBlock = 1 << 20;
  std::string all;
  all.reserve(static_cast<std::size_t>(bytes.Size()));
  for (;;) {
    const std::size_t before = all.size();
    all.resize(before + kBlock);
    const std::size_t count = bytes.Read(all.data() + before, kBlock);
    all.resize(before + count);
    if (count == 0) return all;
  }
}

}  // namespace fieldbook
