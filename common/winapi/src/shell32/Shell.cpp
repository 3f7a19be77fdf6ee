#include <malloc.h>
#include <shlobj.h>
#include <tchar.h>
#include <winapi_host.h>
#include <windows.h>

#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <iterator>
#include <string>

#include "kernel32/PathName.h"
#include "kernel32/UserFolders.h"

namespace {

struct SpecialFolder {
  int id;
  std::string (*path)();
};

constexpr SpecialFolder kFolders[] = {
    {CSIDL_DESKTOP, [] { return winapi::DesktopFolder("XDG_DESKTOP_DIR", "/Desktop"); }},
    {CSIDL_DESKTOPDIRECTORY, [] { return winapi::DesktopFolder("XDG_DESKTOP_DIR", "/Desktop"); }},
    {CSIDL_PERSONAL, [] { return winapi::DesktopFolder("XDG_DOCUMENTS_DIR"); }},
    {CSIDL_MYMUSIC, [] { return winapi::DesktopFolder("XDG_MUSIC_DIR"); }},
    {CSIDL_MYVIDEO, [] { return winapi::DesktopFolder("XDG_VIDEOS_DIR"); }},
    {CSIDL_MYPICTURES, [] { return winapi::DesktopFolder("XDG_PICTURES_DIR"); }},
    {CSIDL_TEMPLATES, [] { return winapi::DesktopFolder("XDG_TEMPLATES_DIR"); }},
    {CSIDL_APPDATA, [] { return winapi::BaseFolder("XDG_CONFIG_HOME", "/.config"); }},
    {CSIDL_LOCAL_APPDATA, winapi::DataFolder},
    {CSIDL_COMMON_APPDATA, [] { return std::string("/var/lib"); }},
    {CSIDL_WINDOWS, [] { return std::string(winapi::kSystemFolder); }},
    {CSIDL_PROFILE, winapi::HomeFolder},
};

bool IsFolder(const std::string& path) {
  std::error_code error;
  return std::filesystem::is_directory(path, error);
}

// Only the user may enter a folder that is made here.
bool MakeFolder(const std::string& path) {
  std::error_code error;
  if (!std::filesystem::create_directories(path, error)) return IsFolder(path);
  std::filesystem::permissions(path, std::filesystem::perms::owner_all, error);
  return true;
}

bool GivePath(const std::u16string& text, LPWSTR path) {
  if (text.size() >= MAX_PATH) return false;
  std::copy_n(text.c_str(), text.size() + 1, path);
  return true;
}

class Allocator : public IMalloc {
 public:
  HRESULT WINAPI QueryInterface(REFIID id, void** object) override {
    if (object == nullptr) return E_POINTER;
    const bool known = IsEqual(id, IID_IUnknown) || IsEqual(id, IID_IMalloc);
    *object = known ? this : nullptr;
    return known ? S_OK : E_NOINTERFACE;
  }
  // It lives as long as the process.
  ULONG WINAPI AddRef() override { return 1; }
  ULONG WINAPI Release() override { return 1; }

  void* WINAPI Alloc(SIZE_T size) override { return std::malloc(size); }
  void* WINAPI Realloc(void* block, SIZE_T size) override {
    if (block != nullptr && size == 0) {
      std::free(block);
      return nullptr;
    }
    return std::realloc(block, size);
  }
  void WINAPI Free(void* block) override { std::free(block); }
  SIZE_T WINAPI GetSize(void* block) override {
    return block == nullptr ? static_cast<SIZE_T>(-1) : malloc_usable_size(block);
  }
  int WINAPI DidAlloc(void*) override { return -1; }
  void WINAPI HeapMinimize() override { malloc_trim(0); }

 private:
  static bool IsEqual(const IID& a, const IID& b) { return std::memcmp(&a, &b, sizeof a) == 0; }
};

constinit Allocator allocatorOfShell;

std::atomic<WINAPI_FOLDER_CHOOSER> folderChooser = nullptr;

constexpr const WCHAR* kDialogClass = u"WinapiFolderDialog";

// Keeps the folder that a program selects in the dialog.
LRESULT CALLBACK DialogProcedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
  if (message != BFFM_SETSELECTIONW || wParam == FALSE) {
    return DefWindowProcW(window, message, wParam, lParam);
  }
  auto* selected = reinterpret_cast<std::u16string*>(GetWindowLongPtrW(window, GWLP_USERDATA));
  *selected = reinterpret_cast<LPCWSTR>(lParam);
  return 0;
}

// What the program's callback selects.
std::u16string AskForSelection(const BROWSEINFOW& info) {
  std::u16string selected;
  if (info.lpfn == nullptr) return selected;
  WNDCLASSW dialogClass = {};
  dialogClass.lpfnWndProc = DialogProcedure;
  dialogClass.lpszClassName = kDialogClass;
  RegisterClassW(&dialogClass);  // or it is there from an earlier call
  const HWND dialog =
      CreateWindowExW(0, kDialogClass, u"", 0, 0, 0, 0, 0, HWND_MESSAGE, nullptr, nullptr, nullptr);
  if (dialog == nullptr) return selected;
  SetWindowLongPtrW(dialog, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(&selected));
  info.lpfn(dialog, BFFM_INITIALIZED, 0, info.lParam);
  DestroyWindow(dialog);
  return selected;
}

// An item of the terminated path, and the empty item that ends the list.
LPITEMIDLIST NewItemList(const std::u16string& path) {
  const std::size_t bytes = (path.size() + 1) * sizeof(WCHAR);
  const auto cb = static_cast<uint16_t>(sizeof(uint16_t) + bytes);
  auto* list = static_cast<unsigned char*>(std::calloc(1, cb + sizeof(uint16_t)));
  if (list == nullptr) return nullptr;
  std::memcpy(list, &cb, sizeof cb);
  std::memcpy(list + sizeof cb, path.c_str(), bytes);
  return reinterpret_cast<LPITEMIDLIST>(list);
}

}  // namespace

const IID IID_IUnknown = {0x00000000, 0, 0, {0xC0, 0, 0, 0, 0, 0, 0, 0x46}};
const IID IID_IMalloc = {0x00000002, 0, 0, {0xC0, 0, 0, 0, 0, 0, 0, 0x46}};

BOOL WINAPI SHGetSpecialFolderPathW(HWND, LPWSTR path, int id, BOOL create) {
  const auto found = std::find_if(std::begin(kFolders), std::end(kFolders),
                                  [id](const SpecialFolder& folder) { return folder.id == id; });
  if (path == nullptr || found == std::end(kFolders)) return FALSE;
  const std::string folder = found->path();
  if (create != FALSE ? !MakeFolder(folder) : !IsFolder(folder)) return FALSE;
  return GivePath(FromPosixPath(folder), path);
}

HRESULT WINAPI SHGetMalloc(LPMALLOC* allocator) {
  if (allocator == nullptr) return E_POINTER;
  *allocator = &allocatorOfShell;
  return S_OK;
}

LPITEMIDLIST WINAPI SHBrowseForFolderW(LPBROWSEINFOW info) {
  const WINAPI_FOLDER_CHOOSER chooser = folderChooser;
  if (info == nullptr || chooser == nullptr) return nullptr;
  const std::u16string selected = AskForSelection(*info);
  WCHAR path[MAX_PATH] = {};
  const LPCWSTR title = info->lpszTitle == nullptr ? u"" : info->lpszTitle;
  if (chooser(info->hwndOwner, title, selected.c_str(), path) == FALSE) return nullptr;
  path[MAX_PATH - 1] = 0;
  if (info->pszDisplayName != nullptr) {
    const std::u16string whole = path;
    GivePath(whole.substr(whole.find_last_of(u"\\/") + 1), info->pszDisplayName);
  }
  return NewItemList(path);
}

BOOL WINAPI SHGetPathFromIDListW(LPCITEMIDLIST list, LPWSTR path) {
  if (list == nullptr || path == nullptr) return FALSE;
  const std::size_t bytes = list->mkid.cb;
  if (bytes < sizeof(uint16_t) + 2 * sizeof(WCHAR)) return FALSE;
  std::u16string text((bytes - sizeof(uint16_t)) / sizeof(WCHAR), u'\0');
  std::memcpy(text.data(), list->mkid.abID, text.size() * sizeof(WCHAR));
  return text.back() == 0 && GivePath(text.c_str(), path);
}

void WinapiSetFolderChooser(WINAPI_FOLDER_CHOOSER chooser) {
  folderChooser = chooser;
}
