// What ends the reading of an XML file.
#pragma once

#include <exception>
#include <string>

#include "kelptext/WideChar.h"
#include "sarnutils/Export.h"
#include "sarnutils/SarnString.h"

namespace sarn {

// Codes of errors that the reading itself finds. Those of its callers begin at 10.
enum EXmlError {
  eXmlMalformed = 1,  // against the rules of XML, or in an encoding that isn't known
  eXmlMissing = 2,    // a required attribute or element
  eXmlLimit = 3,      // elements too deep, or entities that are too many or external
};

class SARNUTILS_API XmlException : public std::exception {
 public:
  XmlException(const WChar* file, int line, int code, const WChar* text);
  ~XmlException() override;

  // The XML file, or the source file of the caller that raised the error. Empty where nobody has
  // said.
  const sarn_text::CSarnStringT<WChar>& getFile() const noexcept { return m_file; }
  // From 1; 0 for the file as a whole.
  int getLine() const noexcept { return m_line; }
  int getCode() const noexcept { return m_code; }
  // In English; may be empty.
  const sarn_text::CSarnStringT<WChar>& getText() const noexcept { return m_text; }
  // "path:line: text" in UTF-8.
  const char* what() const noexcept override { return m_what.c_str(); }

 private:
  sarn_text::CSarnStringT<WChar> m_file;
  int m_line;
  int m_code;
  sarn_text::CSarnStringT<WChar> m_text;
  std::string m_what;
};

}  // namespace sarn
