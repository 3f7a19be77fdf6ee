#include "kelp0lang/FilePath.h"

#include <windows.h>

#include <string>
#include <system_error>

#ifndef _WIN32
#include "winapi_host.h"
#endif

namespace fs = std::filesystem;

namespace kelp {
namespace {

// A length that doesn't fit at first is asked for again; the disk may have another by then.
template <class Text, class Ask>
Text Asked(Ask ask) {
  Text text(MAX_PATH, 0);
  for (;;) {
    const DWORD length = ask(static_cast<DWORD>(text.size()), text.data());
    const bool fits = length < text.size();
    text.resize(length);
    if (fits) return text;
  }
}

}  // namespace

fs::path FileToPath(const CFile& file) {
  if (file.GetPath().empty()) return {};
#ifdef _WIN32
  if (file.GetName().IndexOf(KTEXT('*')) >= 0 || file.GetName().IndexOf(KTEXT('?')) >= 0) return {};
  return fs::path(file.GetAbsolutePath().c_str());
#else
  return Asked<std::string>([&file](DWORD size, char* buffer) {
    return WinapiToHostPath(file.GetPath().c_str(), size, buffer);
  });
#endif
}

CFile PathToFile(const fs::path& path) {
  if (path.empty()) return {};
  std::error_code error;
  const fs::path absolute = fs::absolute(path, error);
  if (error) return {};
#ifdef _WIN32
  return CFile(WString(absolute.c_str()));
#else
  const auto text = Asked<std::u16string>([&absolute](DWORD size, WCHAR* buffer) {
    return WinapiFromHostPath(absolute.c_str(), size, buffer);
  });
  return CFile(WString(text.c_str()));
#endif
}

}  // namespace kelp
