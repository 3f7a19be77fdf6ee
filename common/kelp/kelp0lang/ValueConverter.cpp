#include "kelp0lang/String.h"

#include <string>

namespace kelp {

WString WString::ValueOf(int value) {
  return ConvertFromUtf8(std::to_string(value).c_str());
}

}  // namespace kelp
