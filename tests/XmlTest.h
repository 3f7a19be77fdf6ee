// What the tests of XML share: layouts as files of a test's own, and texts between the widths.
#pragma once

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "kelp0lang/String.h"
#include "kelptext/WideChar.h"
#include "tests/TempFolder.h"
#include "tests/TestText.h"

class XmlTest : public testing::Test {
 protected:
  kelp::WString Path(const std::string& name) const {
    return m_folder.Wide(std::basic_string<WCHAR>(name.begin(), name.end()).c_str()).c_str();
  }
  // The path of a file with these bytes.
  kelp::WString File(const std::string& name, const std::string& bytes) const {
    m_folder.Write(name, bytes);
    return Path(name);
  }
  std::string Read(const std::string& name) const { return m_folder.Read(name); }
  std::vector<std::string> Names() const {
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(m_folder.Path())) {
      names.push_back(entry.path().filename().string());
    }
    return names;
  }

  TempFolder m_folder;
};

inline std::string Utf8(const WChar* text) {
  return kelp::WString(text).ToUtf8().c_str();
}

// <a><a>... to a depth, closed again.
inline std::string Nested(const std::string& tag, int depth) {
  std::string text;
  for (int level = 0; level < depth; ++level) text += '<' + tag + '>';
  for (int level = 0; level < depth; ++level) text += "</" + tag + '>';
  return text;
}
