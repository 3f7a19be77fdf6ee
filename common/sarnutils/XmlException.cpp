#include "sarnutils/XmlException.h"

#include <cstddef>

#include "kelptext/Utf8.h"

namespace sarn {
namespace {

std::string ToUtf8(const sarn_text::CSarnStringT<WChar>& text) {
  const auto length = static_cast<std::size_t>(text.GetLength());
  std::string bytes(3 * length, 0);
  bytes.resize(kelp::detail::EncodeUtf8(text.c_str(), length, bytes.data(), bytes.size()));
  return bytes;
}

}  // namespace

XmlException::XmlException(const WChar* file, int line, int code, const WChar* text)
    : m_file(file),
      m_line(line),
      m_code(code),
      m_text(text),
      m_what(ToUtf8(m_file) + ':' + std::to_string(line) + ": " + ToUtf8(m_text)) {}

XmlException::~XmlException() = default;

}  // namespace sarn
