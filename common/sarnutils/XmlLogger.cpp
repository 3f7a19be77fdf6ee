#include "sarnutils/XmlLogger.h"

namespace sarn {

IXmlLogger::~IXmlLogger() = default;

}  // namespace sarn
