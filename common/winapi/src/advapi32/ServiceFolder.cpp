#include "advapi32/ServiceFolder.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>
#include <winapi_host.h>
#include <windows.h>

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <mutex>
#include <system_error>

#include "Fail.h"
#include "kernel32/Descriptor.h"
#include "kernel32/PathName.h"
#include "kernel32/ProfileFile.h"
#include "kernel32/UserFolders.h"

namespace winapi {
namespace {

constexpr const char* kSystemServices = "/var/lib/winapi/services";
constexpr std::string_view kTermsSuffix = ".service";
constexpr std::size_t kLongestName = 256;
constexpr std::size_t kLongestStem = 240;  // a name on the disk has 255 bytes, with the suffix

std::mutex folderMutex;
std::string& SetFolder() {
  static std::string& folder = *new std::string;
  return folder;
}

// That of new services comes first.
std::vector<std::string> Folders() {
  const std::lock_guard lock(folderMutex);
  if (!SetFolder().empty()) return {SetFolder()};
  if (geteuid() == 0) return {kSystemServices};
  return {DataFolder() + "/winapi/services", kSystemServices};
}

// Empty for what can't be a name.
std::string StemOf(std::u16string_view name) {
  if (name.empty() || name.size() > kLongestName) return {};
  if (std::any_of(name.begin(), name.end(), IsSeparator)) return {};
  std::string stem;
  for (const char unit : ToUtf8(FoldedName(name))) {
    // A point at the begin hides a file, and leads out of the folder.
    if (unit == '%' || (unit == '.' && stem.empty())) stem += '%';
    stem += unit;
  }
  return stem.size() <= kLongestStem ? stem : std::string();
}

}  // namespace

DWORD ServiceFileError(int error) {
  switch (error) {
    case ENOENT:
    case ENOTDIR:
      return ERROR_SERVICE_DOES_NOT_EXIST;
    case EACCES:
    case EPERM:
    case EROFS:
      return ERROR_ACCESS_DENIED;
    case ENOSPC:
    case EDQUOT:
      return ERROR_DISK_FULL;
    default:
      return ERROR_BADDB;
  }
}

std::optional<ServicePlace> NewPlace(std::u16string_view name) {
  const std::string stem = StemOf(name);
  if (stem.empty()) return Fail<std::optional<ServicePlace>>(ERROR_INVALID_NAME);
  return ServicePlace{Folders().front(), stem};
}

// Others ask about services, too, so they may enter each folder that is made, whatever the mask of
// the process.
DWORD MakeServiceFolder(const std::string& folder) {
  std::error_code error;
  if (std::filesystem::is_directory(folder, error)) return ERROR_SUCCESS;
  const std::string above = std::filesystem::path(folder).parent_path().string();
  if (above == folder) return ERROR_ACCESS_DENIED;
  const DWORD failed = MakeServiceFolder(above);
  if (failed != ERROR_SUCCESS) return failed;
  if (mkdir(folder.c_str(), 0755) != 0) {
    return errno == EEXIST ? ERROR_SUCCESS : ServiceFileError(errno);
  }
  return chmod(folder.c_str(), 0755) == 0 ? ERROR_SUCCESS : ServiceFileError(errno);
}

DWORD ReadService(const ServicePlace& place, InstalledService& service) {
  struct stat status;
  std::string text;
  const std::string path = place.TermsPath();
  if (stat(path.c_str(), &status) != 0 || !ReadWholeFile(path, text)) {
    return ServiceFileError(errno);
  }
  auto terms = ParseTerms(text);
  if (!terms) return ERROR_BADDB;
  service = {place, std::move(*terms), status.st_uid};
  return ERROR_SUCCESS;
}

DWORD FindService(std::u16string_view name, InstalledService& service) {
  const std::string stem = StemOf(name);
  if (stem.empty()) return ERROR_INVALID_NAME;
  for (const std::string& folder : Folders()) {
    const DWORD error = ReadService({folder, stem}, service);
    if (error != ERROR_SERVICE_DOES_NOT_EXIST) return error;
  }
  return ERROR_SERVICE_DOES_NOT_EXIST;
}

std::vector<InstalledService> AllServices() {
  std::vector<InstalledService> services;
  for (const std::string& folder : Folders()) {
    std::error_code error;
    for (std::filesystem::directory_iterator file(folder, error), end; !error && file != end;
         file.increment(error)) {
      const std::string name = file->path().filename().string();
      // Hidden are those that are being written.
      if (!name.ends_with(kTermsSuffix) || name.starts_with('.')) continue;
      InstalledService service;
      const ServicePlace place = {folder, name.substr(0, name.size() - kTermsSuffix.size())};
      if (ReadService(place, service) == ERROR_SUCCESS) services.push_back(std::move(service));
    }
  }
  return services;
}

DWORD WriteTerms(const ServicePlace& place, const ServiceTerms& terms) {
  const std::string path = place.TermsPath();
  if (!ReplaceWholeFile(path, FormatTerms(terms), 0644)) {
    return ServiceFileError(errno == ENOENT ? EACCES : errno);
  }
  return chmod(path.c_str(), 0644) == 0 ? ERROR_SUCCESS : ServiceFileError(errno);
}

bool RemoveIfUnused(const ServicePlace& place) {
  const ProfileLock lock(place.TermsPath());
  InstalledService service;
  if (!lock.IsHeld() || ReadService(place, service) != ERROR_SUCCESS) return false;
  if (!service.terms.isDeleted) return false;
  // Whoever opens the service meanwhile waits, and finds it gone.
  const Descriptor state(open(place.StatePath().c_str(), O_RDONLY | O_NOFOLLOW | O_CLOEXEC));
  if (state < 0 ? errno != ENOENT : flock(state, LOCK_EX | LOCK_NB) != 0) return false;
  // The terms are what makes a service.
  if (unlink(place.TermsPath().c_str()) != 0) return false;
  unlink(place.StatePath().c_str());
  return true;
}

}  // namespace winapi

void WinapiSetServiceFolder(LPCWSTR folder) {
  const std::string path = folder == nullptr || *folder == 0 ? "" : ToPosixPath(folder);
  const std::lock_guard lock(winapi::folderMutex);
  winapi::SetFolder() = path;
}
