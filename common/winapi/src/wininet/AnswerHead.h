// The head of an answer, as it comes line by line; internal to the layer.
#pragma once

#include <windows.h>

#include <string>
#include <string_view>
#include <vector>

namespace winapi::internet {

class AnswerHead {
 public:
  struct Header {
    std::string name;
    std::string value;
  };

  // Takes a line with its end. A status line begins a new head: redirects and interim answers have
  // their own. False where it would become larger than any server's is, and the transfer ends.
  bool AddLine(std::string_view line);
  void Clear() { *this = {}; }

  // The empty line has come.
  bool IsComplete() const { return m_complete; }
  int Status() const { return m_status; }
  const std::string& Version() const { return m_version; }
  const std::string& StatusText() const { return m_statusText; }
  const std::string& Raw() const { return m_raw; }
  // Null where there are no more than index headers of that name, which is in any case.
  const std::string* Find(std::string_view name, DWORD index) const;

 private:
  void AddStatusLine(std::string_view line);
  void AddHeader(std::string_view line);

  std::string m_raw;  // lines that end in CR LF, the empty one too
  std::string m_version;
  std::string m_statusText;
  std::vector<Header> m_headers;
  int m_status = 0;
  bool m_complete = false;
};

}  // namespace winapi::internet
