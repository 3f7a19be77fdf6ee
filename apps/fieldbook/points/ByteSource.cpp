#include "fieldbook/points/ByteSource.h"

#include <algorithm>
#include <cerrno>
#include <fstream>
#include <system_error>
#include <utility>

#include "fieldbook/points/MappedBytes.h"

namespace fieldbook {
namespace {

class FileBytes final : public ByteSource {
 public:
  explicit FileBytes(const Argument& file) : m_file(file), m_stream(OpenFile(file)) {
    std::error_code unknown;
    m_size = std::filesystem::file_size(file.path, unknown);
    if (unknown) m_size = 0;
  }

  void Rewind() override {
    m_stream.clear();
    m_stream.seekg(0);
  }
  std::size_t Read(char* buffer, std::size_t size) override {
    errno = 0;
    m_stream.read(buffer, static_cast<std::streamsize>(size));
    if (m_stream.bad()) FailOnFile(m_file, errno);
    return static_cast<std::size_t>(m_stream.gcount());
  }
  std::uintmax_t Size() const override { return m_size; }

 private:
  Argument m_file;
  std::ifstream m_stream;
  std::uintmax_t m_size;
};

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

// What can be read only once, and so is kept.
class KeptBytes final : public ByteSource {
 public:
  explicit KeptBytes(std::string bytes) : m_bytes(std::move(bytes)), m_source(m_bytes) {}

  void Rewind() override { m_source.Rewind(); }
  std::size_t Read(char* buffer, std::size_t size) override { return m_source.Read(buffer, size); }
  std::uintmax_t Size() const override { return m_source.Size(); }

 private:
  const std::string m_bytes;
  MemoryBytes m_source;
};

}  // namespace

std::unique_ptr<ByteSource> OpenBytes(const Argument& file) {
  if (auto mapped = MapBytes(file)) return mapped;
  std::error_code error;
  if (std::filesystem::is_fifo(file.path, error)) return std::make_unique<KeptBytes>(ReadAll(file));
  return std::make_unique<FileBytes>(file);
}

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
