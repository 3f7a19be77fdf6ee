#include "fieldbook/console/Table.h"

#include <algorithm>
#include <utility>

namespace fieldbook {
namespace {

void Append(std::string& out, const WString& text) {
  const kelp::String utf8 = text.ToUtf8();
  out.append(utf8.c_str(), utf8.length());
}

void AppendCell(std::string& out, const WString& text, Align align, int width, bool isLast) {
  const auto pad = static_cast<std::size_t>(std::max(0, width - DisplayColumns(text)));
  if (align == Align::Right) out.append(pad, ' ');
  Append(out, text);
  if (align == Align::Left && !isLast) out.append(pad, ' ');
}

void EndLine(std::string& out) {
  out.erase(out.find_last_not_of(' ') + 1);
  out += '\n';
}

bool NeedsQuotes(WideView field, bool isFirst) {
  if (field.empty()) return false;
  if (isFirst && field.front() == KTEXT('#')) return true;  // a line with it would be a comment
  return IsBlank(field.front()) || IsBlank(field.back()) ||
         field.find_first_of(KTEXT(",;\"\t\r\n")) != WideView::npos;
}

void AppendField(std::string& out, const WString& field, bool isFirst) {
  if (!isFirst) out += ',';
  if (!NeedsQuotes(ViewOf(field), isFirst)) {
    Append(out, field);
    return;
  }
  WString doubled = field;
  doubled.ReplaceInPlace(KTEXT("\""), KTEXT("\"\""));
  out += '"';
  Append(out, doubled);
  out += '"';
}

}  // namespace

std::string CsvLine(const std::vector<WString>& fields) {
  std::string line;
  for (std::size_t i = 0; i < fields.size(); ++i) AppendField(line, fields[i], i == 0);
  return line;
}

Table::Table(std::vector<Column> columns) : m_columns(std::move(columns)) {}

void Table::AddRow(Row row) {
  m_rows.push_back(std::move(row));
}

std::string Table::Aligned(bool boldHeads) const {
  std::vector<Row> rows = m_rows;
  std::vector<int> widths;
  for (std::size_t i = 0; i < m_columns.size(); ++i) {
    int width = DisplayColumns(m_columns[i].head);
    for (Row& row : rows) {
      row[i] = Shown(row[i]);
      width = std::max(width, DisplayColumns(row[i]));
    }
    widths.push_back(width);
  }

  std::string out;
  const auto appendRow = [&](const auto& textOf) {
    std::string line;
    for (std::size_t i = 0; i < m_columns.size(); ++i) {
      if (i > 0) line += "  ";
      AppendCell(line, textOf(i), m_columns[i].align, widths[i], i + 1 == m_columns.size());
    }
    EndLine(line);
    out += line;
  };
  if (boldHeads) out += "\x1B[1m";
  appendRow([&](std::size_t i) { return m_columns[i].head; });
  if (boldHeads) out.insert(out.size() - 1, "\x1B[0m");
  for (const Row& row : rows) appendRow([&](std::size_t i) { return row[i]; });
  return out;
}

std::string Table::Csv() const {
  Row heads;
  for (const Column& column : m_columns) heads.push_back(column.head);
  std::string out = CsvLine(heads) + '\n';
  for (const Row& row : m_rows) out += CsvLine(row) + '\n';
  return out;
}

}  // namespace fieldbook
