#include <dlfcn.h>
#include <link.h>
#include <windows.h>

#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <iterator>
#include <string>
#include <string_view>
#include <system_error>
#include <vector>

#include "CopyText.h"
#include "Fail.h"
#include "kernel32/PathName.h"
#include "kernel32/StaticCalls.h"

namespace {

struct Module {
  std::uintptr_t base;
  std::uintptr_t end;
  std::string name;     // as the loader has it; empty for the program
  std::u16string path;  // as Windows has it
};

int AddModule(dl_phdr_info* info, std::size_t, void* target) {
  auto& modules = *static_cast<std::vector<Module>*>(target);
  std::error_code error;
  // The program comes first, and has no name here.
  const std::filesystem::path path = modules.empty()
                                         ? std::filesystem::read_symlink("/proc/self/exe", error)
                                         : std::filesystem::absolute(info->dlpi_name, error);
  // The kernel's own page has a name without a folder and no file.
  if (!modules.empty() && std::string_view(info->dlpi_name).find('/') == std::string_view::npos) {
    return 0;
  }
  std::uintptr_t base = UINTPTR_MAX;
  std::uintptr_t end = 0;
  for (const auto* part = info->dlpi_phdr; part < info->dlpi_phdr + info->dlpi_phnum; ++part) {
    if (part->p_type != PT_LOAD) continue;
    const std::uintptr_t address = info->dlpi_addr + part->p_vaddr;
    base = std::min(base, address);
    end = std::max(end, address + part->p_memsz);
  }
  modules.push_back({base, end, info->dlpi_name, FromPosixPath(path.native())});
  return 0;
}

// The program first.
std::vector<Module> LoadedModules() {
  std::vector<Module> modules;
  dl_iterate_phdr(AddModule, &modules);
  return modules;
}

HMODULE HandleOf(const Module& module) {
  return reinterpret_cast<HMODULE>(module.base);
}

std::u16string_view FileNameOf(std::u16string_view path) {
  return path.substr(path.find_last_of(u"\\/") + 1);
}

// The name that a library "libname.so.1" has on Windows, without its extension; empty for others.
std::u16string_view LibraryNameOf(std::u16string_view fileName) {
  constexpr std::u16string_view kPrefix = u"lib";
  const std::size_t end = fileName.find(u".so");
  if (!fileName.starts_with(kPrefix) || end == std::u16string_view::npos) return {};
  return fileName.substr(kPrefix.size(), end - kPrefix.size());
}

// The libraries of Windows whose calls the layer has.
constexpr std::u16string_view kOwnNames[] = {u"advapi32.dll", u"gdi32.dll",    u"kernel32.dll",
                                             u"ole32.dll",    u"oleaut32.dll", u"psapi.dll",
                                             u"shell32.dll",  u"shlwapi.dll",  u"user32.dll",
                                             u"wininet.dll",  u"winspool.drv", u"ws2_32.dll"};

bool IsOwnName(const std::u16string& name) {
  const std::u16string wanted = FoldedName(name);
  return std::any_of(std::begin(kOwnNames), std::end(kOwnNames), [&](std::u16string_view own) {
    const std::u16string folded = FoldedName(own);
    return folded == wanted || folded == wanted + FoldedName(u".dll");
  });
}

bool HasName(const Module& module, const std::u16string& name) {
  const std::u16string path = FoldedName(module.path);
  if (std::any_of(name.begin(), name.end(), IsSeparator)) {
    return path == FoldedName(FullPath(name));
  }
  const std::u16string_view fileName = FileNameOf(module.path);
  const std::u16string wanted = FoldedName(name);
  if (FoldedName(fileName) == wanted) return true;
  const std::u16string library = FoldedName(LibraryNameOf(fileName));
  return !library.empty() && (library == wanted || library + FoldedName(u".dll") == wanted);
}

// The loader's own handle of a loaded module, with a reference that is the caller's.
void* AddReference(const Module& module, int flags) {
  return dlopen(module.name.empty() ? nullptr : module.name.c_str(),
                RTLD_LAZY | RTLD_NOLOAD | flags);
}

auto FindAddress(const std::vector<Module>& modules, const void* pointer) {
  const auto address = reinterpret_cast<std::uintptr_t>(pointer);
  return std::find_if(modules.begin(), modules.end(), [address](const Module& module) {
    return module.base <= address && address < module.end;
  });
}

auto FindName(const std::vector<Module>& modules, LPCWSTR name) {
  if (IsOwnName(name)) return FindAddress(modules, kOwnNames);
  return std::find_if(modules.begin(), modules.end(),
                      [name](const Module& module) { return HasName(module, name); });
}

auto FindHandle(const std::vector<Module>& modules, HMODULE handle) {
  return std::find_if(modules.begin(), modules.end(),
                      [handle](const Module& module) { return HandleOf(module) == handle; });
}

// The module that a call of GetModuleHandleExW means, none where it isn't loaded.
auto FindModule(const std::vector<Module>& modules, DWORD flags, LPCWSTR name) {
  if (name == nullptr) return modules.begin();
  const bool isAddress = (flags & GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS) != 0;
  return isAddress ? FindAddress(modules, name) : FindName(modules, name);
}

// Has the loader look for a library that isn't there yet, by its path or its name in the system;
// the loader's own handle.
void* LoadFile(const std::u16string& name) {
  if (std::any_of(name.begin(), name.end(), IsSeparator)) {
    const std::string file = ToPosixPath(name.c_str());
    return file.empty() ? nullptr : dlopen(file.c_str(), RTLD_NOW | RTLD_LOCAL);
  }
  const std::string file = ToUtf8(name);
  void* const loaded = dlopen(file.c_str(), RTLD_NOW | RTLD_LOCAL);
  return loaded != nullptr ? loaded : dlopen(("lib" + file + ".so").c_str(), RTLD_NOW | RTLD_LOCAL);
}

}  // namespace

BOOL WINAPI GetModuleHandleExW(DWORD flags, LPCWSTR name, HMODULE* module) {
  constexpr DWORD kOneOf =
      GET_MODULE_HANDLE_EX_FLAG_PIN | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT;
  constexpr DWORD kAll = kOneOf | GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS;
  if (module == nullptr) return Fail(ERROR_INVALID_PARAMETER);
  *module = nullptr;
  if ((flags & ~kAll) != 0 || (flags & kOneOf) == kOneOf) return Fail(ERROR_INVALID_PARAMETER);
  const std::vector<Module> modules = LoadedModules();
  const auto found = FindModule(modules, flags, name);
  if (found == modules.end()) return Fail(ERROR_MOD_NOT_FOUND);
  if ((flags & GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT) == 0) {
    const bool pins = (flags & GET_MODULE_HANDLE_EX_FLAG_PIN) != 0;
    if (AddReference(*found, pins ? RTLD_NODELETE : 0) == nullptr) return Fail(ERROR_MOD_NOT_FOUND);
  }
  *module = HandleOf(*found);
  return TRUE;
}

BOOL WINAPI FreeLibrary(HMODULE module) {
  const std::vector<Module> modules = LoadedModules();
  const auto found = FindHandle(modules, module);
  void* const loaded = found == modules.end() ? nullptr : AddReference(*found, 0);
  if (loaded == nullptr) return Fail(ERROR_MOD_NOT_FOUND);
  dlclose(loaded);
  dlclose(loaded);
  return TRUE;
}

HMODULE WINAPI LoadLibraryW(LPCWSTR name) {
  if (name == nullptr || *name == 0) return Fail<HMODULE>(ERROR_INVALID_PARAMETER);
  const std::vector<Module> before = LoadedModules();
  const auto there = FindName(before, name);
  if (there != before.end() && AddReference(*there, 0) != nullptr) return HandleOf(*there);
  void* const loaded = LoadFile(name);
  link_map* map = nullptr;
  if (loaded == nullptr || dlinfo(loaded, RTLD_DI_LINKMAP, &map) != 0) {
    return Fail<HMODULE>(ERROR_MOD_NOT_FOUND);
  }
  const std::vector<Module> modules = LoadedModules();
  const auto found = FindAddress(modules, map->l_ld);
  return found == modules.end() ? Fail<HMODULE>(ERROR_MOD_NOT_FOUND) : HandleOf(*found);
}

FARPROC WINAPI GetProcAddress(HMODULE module, LPCSTR name) {
  const std::vector<Module> modules = LoadedModules();
  const auto found = module == nullptr ? modules.begin() : FindHandle(modules, module);
  void* const loaded = found == modules.end() ? nullptr : AddReference(*found, 0);
  if (loaded == nullptr) return Fail<FARPROC>(ERROR_MOD_NOT_FOUND);
  const bool isOrdinal = reinterpret_cast<std::uintptr_t>(name) <= 0xFFFF;
  void* function = isOrdinal ? nullptr : dlsym(loaded, name);
  dlclose(loaded);
  if (function == nullptr && !isOrdinal && FindAddress(modules, kOwnNames) == found) {
    function = StaticCall(name);
  }
  // The loader looks on in what the module needs.
  if (FindAddress(modules, function) != found) return Fail<FARPROC>(ERROR_PROC_NOT_FOUND);
  return reinterpret_cast<FARPROC>(function);
}

HMODULE WINAPI GetModuleHandleW(LPCWSTR name) {
  const std::vector<Module> modules = LoadedModules();
  const auto found = FindModule(modules, 0, name);
  if (found != modules.end()) return HandleOf(*found);
  return Fail<HMODULE>(ERROR_MOD_NOT_FOUND);
}

DWORD WINAPI GetModuleFileNameW(HMODULE module, LPWSTR path, DWORD size) {
  const std::vector<Module> modules = LoadedModules();
  const auto found = module == nullptr ? modules.begin() : FindHandle(modules, module);
  if (found == modules.end()) {
    return Fail(ERROR_MOD_NOT_FOUND, DWORD{0});
  }
  const int length = CopyText(found->path, path, static_cast<int>(size));
  if (static_cast<std::size_t>(length) == found->path.size()) return static_cast<DWORD>(length);
  return Fail(ERROR_INSUFFICIENT_BUFFER, size);
}
