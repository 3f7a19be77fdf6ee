// Parts of a path's text; the disk isn't asked.
#pragma once

#include "kelptext/WideChar.h"
#include "sarnutils/Export.h"
#include "sarnutils/SarnString.h"

namespace sarn::file_names {

// What stands behind the last separator ("\", "/" or a drive's ":") and before the last dot behind
// it: "layout.old" of "C:\Ribbon/layout.old.xml".
SARNUTILS_API sarn_text::CSarnStringT<WChar> extractFileNameWithoutExtFromPathName(
    const sarn_text::CSarnStringT<WChar>& path);

}  // namespace sarn::file_names
