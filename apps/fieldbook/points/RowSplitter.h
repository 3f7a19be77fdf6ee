// Takes a row of a points file apart, without a copy where it can.
#pragma once

#include <deque>
#include <string>
#include <string_view>
#include <vector>

namespace fieldbook {

// One splitter serves all rows of a file. The fields of a row are valid until the next one.
class RowSplitter {
 public:
  // A blank separates by runs of blanks and tabs. The field numbered last, from 0, takes all the
  // rest of a row; -1 for none.
  RowSplitter(char separator, int last) : m_separator(separator), m_last(last) {}

  const std::vector<std::string_view>& Split(std::string_view row);
  // Whether a quote of the row wasn't closed.
  bool IsQuoteOpen() const { return m_isQuoteOpen; }

 private:
  bool IsSeparator(char byte) const;
  bool TakeSeparator();
  void SkipBlanks();
  bool TakeQuoted(std::string_view& field);
  std::string_view TakeField();
  std::string_view TakeRest();

  char m_separator;
  int m_last;
  bool m_isQuoteOpen = false;
  std::string_view m_rest;
  std::vector<std::string_view> m_fields;
  std::deque<std::string> m_unquoted;  // the texts of fields that differ from what the row has
};

std::string_view TrimmedBytes(std::string_view bytes);

}  // namespace fieldbook
