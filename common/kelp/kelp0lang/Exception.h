// The family of exceptions that carry one wide message.
//
//   throw kelp::CIOException(KTEXT("disk full"));             // "IOException: disk full"
//   catch (const kelp::IException& e) { show(e.GetMsg()); }   // catches every member
//
// It stands apart from the standard exceptions: no member derives from std::exception. The classes
// are vocabulary for programs; the library itself throws only CVariableNotInitializedException
// (TestValue). Copying costs one atomic increment.
#pragma once

#include "kelp0lang/Export.h"
#include "kelp0lang/String.h"

namespace kelp {

class KELP0LANG_API IException {
 public:
  IException(const WString& msg);
  const WString& GetMsg() const { return m_msg; }

 protected:
  // a followed by b.
  IException(const WString& a, const WString& b);

 private:
  WString m_msg;
};

// Where a class takes a message, its text is the class's name without the leading C and the message
// behind it; those that say ": " put it between the two, the others put nothing.

// "ExhaustedMemoryException"
class KELP0LANG_API CExhaustedMemoryException : public IException {
 public:
  CExhaustedMemoryException();
};

// "IllegalThreadStateException" + msg
class KELP0LANG_API CIllegalThreadStateException : public IException {
 public:
  CIllegalThreadStateException();
  CIllegalThreadStateException(const WString& msg);
};

// "IndexOutOfBoundsException" + msg
class KELP0LANG_API CIndexOutOfBoundsException : public IException {
 public:
  CIndexOutOfBoundsException();
  CIndexOutOfBoundsException(const WString& msg);
};

// "StringIndexOutOfBoundsException" + msg, or + the index in decimal
class KELP0LANG_API CStringIndexOutOfBoundsException : public IException {
 public:
  CStringIndexOutOfBoundsException();
  CStringIndexOutOfBoundsException(const WString& msg);
  CStringIndexOutOfBoundsException(int index);
};

// "NotImplementedException: " + msg
class KELP0LANG_API CNotImplementedException : public IException {
 public:
  CNotImplementedException();
  CNotImplementedException(const WString& msg);
};

// "NullPointerException" + msg
class KELP0LANG_API CNullPointerException : public IException {
 public:
  CNullPointerException();
  CNullPointerException(const WString& msg);
};

// "VariableNotInitializedException: " + msg
class KELP0LANG_API CVariableNotInitializedException : public IException {
 public:
  CVariableNotInitializedException();
  CVariableNotInitializedException(const WString& msg);
};

// The root of failures of input and output; not thrown itself.
class KELP0LANG_API IIOException : public IException {
 public:
  virtual ~IIOException();
  IIOException(const IIOException&) = default;
  IIOException& operator=(const IIOException&) = default;

 protected:
  IIOException(const WString& msg);
};

// "IOException: " + msg
class KELP0LANG_API CIOException : public IIOException {
 public:
  CIOException();
  CIOException(const WString& msg);
};

// "FileNotFoundException: " + msg
class KELP0LANG_API CFileNotFoundException : public IIOException {
 public:
  CFileNotFoundException();
  CFileNotFoundException(const WString& msg);
};

}  // namespace kelp
