#include "kelp0lang/Exception.h"

namespace kelp {

IException::IException(const WString& msg) : m_msg(msg) {}

IException::IException(const WString& a, const WString& b) : m_msg(a.Concat(b)) {}

CExhaustedMemoryException::CExhaustedMemoryException()
    : IException(KTEXT("ExhaustedMemoryException")) {}

CIllegalThreadStateException::CIllegalThreadStateException()
    : IException(KTEXT("IllegalThreadStateException")) {}
CIllegalThreadStateException::CIllegalThreadStateException(const WString& msg)
    : IException(KTEXT("IllegalThreadStateException"), msg) {}

CIndexOutOfBoundsException::CIndexOutOfBoundsException()
    : IException(KTEXT("IndexOutOfBoundsException")) {}
CIndexOutOfBoundsException::CIndexOutOfBoundsException(const WString& msg)
    : IException(KTEXT("IndexOutOfBoundsException"), msg) {}

CStringIndexOutOfBoundsException::CStringIndexOutOfBoundsException()
    : IException(KTEXT("StringIndexOutOfBoundsException")) {}
CStringIndexOutOfBoundsException::CStringIndexOutOfBoundsException(const WString& msg)
    : IException(KTEXT("StringIndexOutOfBoundsException"), msg) {}
CStringIndexOutOfBoundsException::CStringIndexOutOfBoundsException(int index)
    : CStringIndexOutOfBoundsException(WString::ValueOf(index)) {}

CNotImplementedException::CNotImplementedException()
    : IException(KTEXT("NotImplementedException")) {}
CNotImplementedException::CNotImplementedException(const WString& msg)
    : IException(KTEXT("NotImplementedException: "), msg) {}

CNullPointerException::CNullPointerException() : IException(KTEXT("NullPointerException")) {}
CNullPointerException::CNullPointerException(const WString& msg)
    : IException(KTEXT("NullPointerException"), msg) {}

CVariableNotInitializedException::CVariableNotInitializedException()
    : IException(KTEXT("VariableNotInitializedException")) {}
CVariableNotInitializedException::CVariableNotInitializedException(const WString& msg)
    : IException(KTEXT("VariableNotInitializedException: "), msg) {}

IIOException::IIOException(const WString& msg) : IException(msg) {}
IIOException::~IIOException() = default;

CIOException::CIOException() : IIOException(KTEXT("IOException")) {}
CIOException::CIOException(const WString& msg)
    : IIOException(WString(KTEXT("IOException: ")).Concat(msg)) {}

CFileNotFoundException::CFileNotFoundException() : IIOException(KTEXT("FileNotFoundException")) {}
CFileNotFoundException::CFileNotFoundException(const WString& msg)
    : IIOException(WString(KTEXT("FileNotFoundException: ")).Concat(msg)) {}

}  // namespace kelp
