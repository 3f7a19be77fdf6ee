// Where the XML parser and the file writer tell what went wrong, beside their results.
#pragma once

#include "kelptext/WideChar.h"
#include "sarnutils/Export.h"

namespace sarn {

class SARNUTILS_API IXmlLogger {
 public:
  virtual ~IXmlLogger();
  // A line without its end, in English: "C:\Ribbon\layout.xml:12: mismatched tag".
  virtual void Log(const WChar* message) = 0;
};

}  // namespace sarn
