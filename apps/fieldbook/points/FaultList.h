// What is wrong with the rows of a file, kind by kind: of each the first ten are told, the others
// counted.
#pragma once

#include <cstddef>
#include <vector>

#include "fieldbook/values/Text.h"

namespace fieldbook {

// A row that can't be read.
struct RowFault {
  int line;
  Message message;
};

class FaultList {
 public:
  void Add(int line, const Message& message);

  bool IsEmpty() const { return m_kinds.empty(); }
  std::size_t Count() const { return m_count; }
  // Those that are told, in the order of their lines.
  std::vector<RowFault> Told() const;
  // The kinds of which more were found: how many, and the last that is told.
  struct Rest {
    std::size_t count;
    int likeLine;
  };
  std::vector<Rest> Rests() const;

 private:
  struct Kind {
    std::vector<RowFault> told;
    std::size_t count = 0;
  };
  std::vector<Kind> m_kinds;
  std::size_t m_count = 0;
};

}  // namespace fieldbook
