#include "ribbon/rules/Json.h"

namespace ribbon {

void Json::Key(std::string_view name) {
  Separate();
  AppendString(name);
  m_text += ':';
}

void Json::Key(const WString& name) {
  const kelp::String utf8 = name.ToUtf8();
  Key({utf8.c_str(), utf8.length()});
}

void Json::Value(const WString& text) {
  Separate();
  const kelp::String utf8 = text.ToUtf8();
  AppendString({utf8.c_str(), utf8.length()});
}

void Json::Value(int number) {
  Separate();
  m_text += std::to_string(number);
}

void Json::Begin(char bracket) {
  Separate();
  m_text += bracket;
}

void Json::Separate() {
  constexpr std::string_view kOpen = "{[:";
  if (!m_text.empty() && kOpen.find(m_text.back()) == kOpen.npos) m_text += ',';
}

// As RFC 8259 has it, section 7.
void Json::AppendString(std::string_view utf8) {
  constexpr char kDigits[] = "0123456789abcdef";
  m_text += '"';
  for (const char byte : utf8) {
    const auto code = static_cast<unsigned char>(byte);
    if (byte == '"' || byte == '\\') {
      m_text += '\\';
      m_text += byte;
    } else if (code < 0x20) {
      m_text += "\\u00";
      m_text += kDigits[code >> 4];
      m_text += kDigits[code & 15];
    } else {
      m_text += byte;
    }
  }
  m_text += '"';
}

}  // namespace ribbon
