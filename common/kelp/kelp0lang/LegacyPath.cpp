#include "kelp0lang/LegacyPath.h"

#include <tchar.h>
#include <windows.h>

#include <algorithm>
#include <cstdio>
#include <cwchar>

using kelp::WString;

namespace {

int LastSlash(const WString& text) {
  return std::max(text.rfind(KTEXT('\\')), text.rfind(KTEXT('/')));
}

int LastSeparator(const WString& text) {
  const int slash = LastSlash(text);
  return slash >= 0 ? slash : text.rfind(KTEXT(':'));
}

bool IsFound(const WChar* path) {
  WIN32_FIND_DATAW data;
  const HANDLE search = FindFirstFileW(path, &data);
  if (search == INVALID_HANDLE_VALUE) return false;
  FindClose(search);
  return true;
}

bool IsFolder(const WChar* path) {
  const DWORD attributes = GetFileAttributesW(path);
  return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
}

bool MakeWithParents(const WString& path) {
  if (CreateDirectoryW(path.c_str(), nullptr)) return true;
  const int slash = LastSlash(path);
  return slash >= 0 && CheckSeDirExist(path.substr(0, slash)) &&
         CreateDirectoryW(path.c_str(), nullptr);
}

}  // namespace

void EstraiIlPathFile(WString& text) {
  text = text.substr(0, LastSeparator(text) + 1);
}

void EstraiNomeEdEstensFile(WString& text) {
  text = text.Substring(LastSeparator(text) + 1);
}

void EstraiIlNomeFile(WString& text) {
  EstraiNomeEdEstensFile(text);
  EliminaEstensioneFile(text);
}

void EstraiEstensFile(WString& text) {
  text = text.Substring(text.rfind(KTEXT('.')) + 1);
}

void EliminaEstensioneFile(WString& text) {
  const int point = text.rfind(KTEXT('.'));
  if (point >= 0) text = text.substr(0, point);
}

bool FEsisteIlFile(const WChar* name) {
  if (name == nullptr || *name == 0) return false;
  std::FILE* const file = _wfopen(name, KTEXT("rb"));
  if (file == nullptr) return false;
  std::fclose(file);
  return true;
}

bool FEsisteIlDir(const WChar* path) {
  return path != nullptr && *path != 0 && IsFound(path);
}

bool CheckSeDirExist(const WString& path) {
  // The last look is for a folder that another thread has made meanwhile, and for the name that
  // ends in a separator, which no search finds.
  return IsFound(path.c_str()) || MakeWithParents(path) || IsFolder(path.c_str());
}

WString ComposeFileFilterFromNameAndExts(const WString& name, const WString& exts) {
  if (exts.empty()) return name;
  return (name + KTEXT(" (")).Concat(exts) + KTEXT(")");
}
