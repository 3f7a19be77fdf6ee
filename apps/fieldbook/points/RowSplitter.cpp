#include "fieldbook/points/RowSplitter.h"

#include <utility>

#include "fieldbook/values/Text.h"

namespace fieldbook {
namespace {

constexpr char kQuote = '"';
constexpr char kBlanks = ' ';

}  // namespace

std::string_view TrimmedBytes(std::string_view bytes) {
  while (!bytes.empty() && IsBlank(bytes.front())) bytes.remove_prefix(1);
  while (!bytes.empty() && IsBlank(bytes.back())) bytes.remove_suffix(1);
  return bytes;
}

const std::vector<std::string_view>& RowSplitter::Split(std::string_view row) {
  // Where tabs separate, one at an end of the row stands for an empty field.
  m_rest = m_separator == '\t' ? row : TrimmedBytes(row);
  m_isQuoteOpen = false;
  m_fields.clear();
  m_unquoted.clear();
  for (;;) {
    if (static_cast<int>(m_fields.size()) == m_last) {
      m_fields.push_back(TakeRest());
      return m_fields;
    }
    m_fields.push_back(TakeField());
    if (!TakeSeparator()) return m_fields;
  }
}

bool RowSplitter::IsSeparator(char byte) const {
  return m_separator == kBlanks ? IsBlank(byte) : byte == m_separator;
}

bool RowSplitter::TakeSeparator() {
  if (m_rest.empty()) return false;
  m_rest.remove_prefix(1);
  if (m_separator == kBlanks) m_rest = TrimmedBytes(m_rest);
  return m_separator != kBlanks || !m_rest.empty();
}

void RowSplitter::SkipBlanks() {
  while (!m_rest.empty() && IsBlank(m_rest.front()) && m_rest.front() != m_separator) {
    m_rest.remove_prefix(1);
  }
}

// Takes a field in quotes, up to the separator behind it. Takes nothing if the field doesn't begin
// with a quote, or if more than blanks stand between the closing quote and the next separator: then
// the quotes belong to the text.
bool RowSplitter::TakeQuoted(std::string_view& field) {
  if (m_rest.empty() || m_rest.front() != kQuote) return false;
  std::string text;
  std::string_view rest = m_rest.substr(1);
  for (;;) {
    const std::size_t quote = rest.find(kQuote);
    if (quote == rest.npos) {
      m_isQuoteOpen = true;
      return false;
    }
    text += rest.substr(0, quote);
    rest.remove_prefix(quote + 1);
    if (rest.empty() || rest.front() != kQuote) break;
    text += kQuote;
    rest.remove_prefix(1);
  }
  while (!rest.empty() && IsBlank(rest.front()) && !IsSeparator(rest.front())) {
    rest.remove_prefix(1);
  }
  if (!rest.empty() && !IsSeparator(rest.front())) return false;
  m_rest = rest;
  field = TrimmedBytes(m_unquoted.emplace_back(std::move(text)));
  return true;
}

std::string_view RowSplitter::TakeField() {
  SkipBlanks();
  std::string_view field;
  if (TakeQuoted(field)) return field;
  std::size_t end = 0;
  while (end < m_rest.size() && !IsSeparator(m_rest[end])) ++end;
  field = m_rest.substr(0, end);
  m_rest.remove_prefix(end);
  return TrimmedBytes(field);
}

// All the rest. Separators at its end are those of empty fields and don't belong to it.
std::string_view RowSplitter::TakeRest() {
  m_rest = TrimmedBytes(m_rest);
  std::string_view quoted;
  const bool isQuoted = TakeQuoted(quoted);
  while (!m_rest.empty() && (IsSeparator(m_rest.back()) || IsBlank(m_rest.back()))) {
    m_rest.remove_suffix(1);
  }
  if (!isQuoted) return m_rest;
  if (m_rest.empty()) return quoted;
  return m_unquoted.emplace_back(std::string(quoted).append(m_rest));
}

}  // namespace fieldbook
