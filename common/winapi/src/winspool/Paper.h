// Papers: the numbers that Windows has for them, and the names of PWG 5101.1 that CUPS uses.
#pragma once

#include <windows.h>

#include <string>
#include <vector>

namespace winapi {

// In hundredths of a millimetre, as the sheet is named; turning it is the orientation's.
struct Paper {
  std::string name;
  int width = 0;
  int length = 0;
};

// By a name of any kind that CUPS knows: of PWG, of a PPD, or an old one. No width where it isn't
// a paper's.
Paper PaperOfName(const std::string& name);
// By its number; no width for one that has no name here.
Paper PaperOfNumber(int number);
// The number of a paper of this size, 0 where it has none.
int NumberOf(const Paper& paper);

// What a queue takes: its papers, and any between two that it names as smallest and largest.
class PaperList {
 public:
  explicit PaperList(const std::vector<std::string>& names);
  bool IsEmpty() const { return m_papers.empty() && m_largest.width == 0; }
  // The queue's own paper of a size, within what PPDs round to, or a custom one; also where it lies
  // on its side. False where the queue has none.
  bool Find(int width, int length, Paper& paper) const;

 private:
  bool FindUpright(int width, int length, Paper& paper) const;

  std::vector<Paper> m_papers;
  Paper m_smallest;
  Paper m_largest;
};

}  // namespace winapi
