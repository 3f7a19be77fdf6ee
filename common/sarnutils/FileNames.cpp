#include "sarnutils/FileNames.h"

#include <string_view>

namespace sarn::file_names {

using sarn_text::CSarnStringT;

CSarnStringT<WChar> extractFileNameWithoutExtFromPathName(const CSarnStringT<WChar>& path) {
  std::basic_string_view<WChar> name(path.c_str());
  name = name.substr(name.find_last_of(KTEXT("\\/:")) + 1);
  name = name.substr(0, name.rfind(KTEXT('.')));
  return CSarnStringT<WChar>(name.data(), static_cast<int>(name.size()));
}

}  // namespace sarn::file_names
