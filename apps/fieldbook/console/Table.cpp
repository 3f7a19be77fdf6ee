#include "fieldbook/console/Table.h"

#include <algorithm>
#include <cstring>
#include <utility>

namespace fieldbook {
namespace {

constexpr std::size_t kBlock = 1 << 20;
constexpr std::size_t kPiece = 1 << 16;  // of what goes to a sink

bool IsPlain(std::string_view text) {
  return std::all_of(text.begin(), text.end(), [](char c) { return c >= ' ' && c <= '~'; });
}

void EndLine(std::string& line) {
  line.erase(line.find_last_not_of(' ') + 1);
  line += '\n';
}

bool NeedsQuotes(std::string_view field, bool isFirst) {
  if (field.empty()) return false;
  if (isFirst && field.front() == '#') return true;  // a line with it would be a comment
  return IsBlank(field.front()) || IsBlank(field.back()) ||
         field.find_first_of(",;\"\t\r\n") != field.npos;
}

}  // namespace

void AppendCsvField(std::string& line, std::string_view field, bool isFirst) {
  if (!NeedsQuotes(field, isFirst)) {
    line += field;
    return;
  }
  line += '"';
  for (const char byte : field) {
    if (byte == '"') line += '"';
    line += byte;
  }
  line += '"';
}

void AppendCsvField(std::string& line, const WString& field, bool isFirst) {
  const kelp::String utf8 = field.ToUtf8();
  AppendCsvField(line, std::string_view(utf8.c_str(), utf8.length()), isFirst);
}

std::string CsvLine(const std::vector<WString>& fields) {
  std::string line;
  for (std::size_t i = 0; i < fields.size(); ++i) {
    if (i > 0) line += ',';
    AppendCsvField(line, fields[i], i == 0);
  }
  return line;
}

Table::Table(std::vector<Column> columns) : m_columns(std::move(columns)) {
  for (const Column& column : m_columns) m_widths.push_back(DisplayColumns(column.head));
}

void Table::AddRow(const Row& row) {
  for (const WString& text : row) {
    const WString shown = Shown(text);
    const kelp::String utf8 = shown.ToUtf8();
    Store({utf8.c_str(), utf8.length()}, DisplayColumns(shown));
  }
}

void Table::AddCell(std::string_view utf8) {
  if (IsPlain(utf8)) {
    Store(utf8, static_cast<int>(utf8.size()));
    return;
  }
  const WString shown = Shown(Decode(utf8, true));
  const kelp::String bytes = shown.ToUtf8();
  Store({bytes.c_str(), bytes.length()}, DisplayColumns(shown));
}

void Table::Store(std::string_view shown, int columns) {
  m_widths[m_next] = std::max(m_widths[m_next], columns);
  m_next = (m_next + 1) % m_columns.size();
  const CellHead head{static_cast<std::uint32_t>(shown.size()),
                      static_cast<std::uint32_t>(columns)};
  const std::size_t size = sizeof head + shown.size();
  if (m_blocks.empty() || m_blocks.back().capacity() - m_blocks.back().size() < size) {
    m_blocks.emplace_back().reserve(std::max(kBlock, size));
  }
  m_blocks.back().append(reinterpret_cast<const char*>(&head), sizeof head).append(shown);
}

void Table::AppendCell(std::string& line, std::size_t at, std::string_view text,
                       int columns) const {
  const auto pad = static_cast<std::size_t>(std::max(0, m_widths[at] - columns));
  const bool isLast = at + 1 == m_columns.size();
  if (at > 0) line += "  ";
  if (m_columns[at].align == Align::Right) line.append(pad, ' ');
  line += text;
  if (m_columns[at].align == Align::Left && !isLast) line.append(pad, ' ');
}

void Table::WriteAligned(bool boldHeads, const Sink& sink) const {
  std::string piece, line;
  for (std::size_t at = 0; at < m_columns.size(); ++at) {
    std::string head;
    AppendUtf8(head, m_columns[at].head);
    AppendCell(line, at, head, DisplayColumns(m_columns[at].head));
  }
  EndLine(line);
  if (boldHeads) line = "\x1B[1m" + line.substr(0, line.size() - 1) + "\x1B[0m\n";
  piece = line;
  line.clear();

  std::size_t at = 0;
  for (const std::string& block : m_blocks) {
    CellHead head;
    for (std::size_t place = 0; place < block.size(); place += sizeof head + head.size) {
      std::memcpy(&head, block.data() + place, sizeof head);
      const std::string_view text(block.data() + place + sizeof head, head.size);
      AppendCell(line, at, text, static_cast<int>(head.columns));
      if (++at < m_columns.size()) continue;
      at = 0;
      EndLine(line);
      piece += line;
      line.clear();
      if (piece.size() < kPiece) continue;
      sink(piece);
      piece.clear();
    }
  }
  sink(piece);
}

std::string Table::Aligned(bool boldHeads) const {
  std::string text;
  WriteAligned(boldHeads, [&text](std::string_view bytes) { text += bytes; });
  return text;
}

}  // namespace fieldbook
