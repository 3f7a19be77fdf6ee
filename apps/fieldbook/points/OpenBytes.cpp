#include "fieldbook/points/OpenBytes.h"

#include <cerrno>
#include <fstream>
#include <string>
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

// What can be read only once, and so is kept.
class KeptBytes final : public ByteSource {
 public:
  explicit KeptBytes(std::string bytes) : m_bytes(std::move(bytes)), m_source(BytesOf(m_bytes)) {}

  void Rewind() override { m_source->Rewind(); }
  std::size_t Read(char* buffer, std::size_t size) override { return m_source->Read(buffer, size); }
  std::uintmax_t Size() const override { return m_source->Size(); }

 private:
  const std::string m_bytes;
  const std::unique_ptr<ByteSource> m_source;
};

}  // namespace

std::unique_ptr<ByteSource> OpenBytes(const Argument& file) {
  if (auto mapped = MapBytes(file)) return mapped;
  std::error_code error;
  if (std::filesystem::is_fifo(file.path, error)) return std::make_unique<KeptBytes>(ReadAll(file));
  return std::make_unique<FileBytes>(file);
}

}  // namespace fieldbook
