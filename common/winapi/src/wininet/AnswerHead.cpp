#include "wininet/AnswerHead.h"

#include <tchar.h>

#include <cstdlib>

namespace winapi::internet {
namespace {

constexpr std::size_t kLargest = 1024 * 1024;

std::string_view Trimmed(std::string_view text) {
  const std::size_t first = text.find_first_not_of(" \t");
  if (first == std::string_view::npos) return {};
  return text.substr(first, text.find_last_not_of(" \t") - first + 1);
}

}  // namespace

bool AnswerHead::AddLine(std::string_view line) {
  while (!line.empty() && (line.back() == '\n' || line.back() == '\r')) line.remove_suffix(1);
  const bool begins = line.starts_with("HTTP/");
  if (begins) Clear();
  if (m_raw.size() + line.size() > kLargest) return false;
  m_raw.append(line).append("\r\n");
  if (begins) {
    AddStatusLine(line);
  } else if (line.empty()) {
    m_complete = true;
  } else {
    AddHeader(line);
  }
  return true;
}

void AnswerHead::AddStatusLine(std::string_view line) {
  const std::size_t status = line.find(' ');
  m_version = line.substr(0, status);
  if (status == std::string_view::npos) return;
  line = Trimmed(line.substr(status));
  m_status = std::atoi(std::string(line).c_str());
  const std::size_t text = line.find(' ');
  if (text != std::string_view::npos) m_statusText = Trimmed(line.substr(text));
}

void AnswerHead::AddHeader(std::string_view line) {
  // A line that begins with a blank goes on with the one before.
  if ((line.front() == ' ' || line.front() == '\t') && !m_headers.empty()) {
    m_headers.back().value.append(" ").append(Trimmed(line));
    return;
  }
  const std::size_t colon = line.find(':');
  if (colon == std::string_view::npos) return;
  m_headers.push_back(
      {std::string(Trimmed(line.substr(0, colon))), std::string(Trimmed(line.substr(colon + 1)))});
}

const std::string* AnswerHead::Find(std::string_view name, DWORD index) const {
  for (const Header& header : m_headers) {
    const bool same = header.name.size() == name.size() &&
                      _strnicmp(header.name.c_str(), name.data(), name.size()) == 0;
    if (same && index-- == 0) return &header.value;
  }
  return nullptr;
}

}  // namespace winapi::internet
