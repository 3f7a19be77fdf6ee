#include "kernel32/PipeRecord.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <string_view>
#include <utility>

#include "Fail.h"
#include "kernel32/ByteLock.h"
#include "kernel32/PathName.h"

namespace winapi {
namespace {

// A path of a socket has 107 bytes, with that of the folder and the number of the instance.
constexpr std::size_t kLongestName = 70;

// The two locks of the file, by the byte that they are on.
constexpr off_t kOwnerLock = 0;
constexpr off_t kTermsLock = 1;

// The user's own folder; whoever could write into another one could stand in for the server.
Descriptor OpenFolder() {
  const char* const base = std::getenv("XDG_RUNTIME_DIR");
  const std::string path = base != nullptr && *base == '/'
                               ? std::string(base) + "/winapi-pipes"
                               : "/tmp/winapi-pipes-" + std::to_string(geteuid());
  if (mkdir(path.c_str(), 0700) != 0 && errno != EEXIST) {
    return Fail(ERROR_PATH_NOT_FOUND, Descriptor());
  }
  Descriptor folder(open(path.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
  struct stat status;
  if (folder < 0 || fstat(folder, &status) != 0 || status.st_uid != geteuid() ||
      (status.st_mode & 077) != 0) {
    return Fail(ERROR_ACCESS_DENIED, Descriptor());
  }
  return folder;
}

std::string RecordName(const std::string& name) {
  return name + ".pipe";
}

std::string SocketName(const std::string& name, std::size_t instance) {
  return name + '.' + std::to_string(instance) + ".socket";
}

}  // namespace

std::string PipeFileName(const char16_t* path) {
  constexpr std::u16string_view kRoot = u"//./PIPE/";
  // Most paths that are asked about are those of files.
  const bool mayBe = path != nullptr && IsSeparator(path[0]) && IsSeparator(path[1]);
  std::u16string name = mayBe ? FoldedName(path) : u"";
  for (char16_t& unit : name) {
    if (unit == '\\') unit = '/';
  }
  if (name.size() <= kRoot.size() || !name.starts_with(kRoot))
    return Fail(ERROR_INVALID_NAME, std::string());
  // A separator can't be in the name of a file.
  std::string file;
  for (const char unit : ToUtf8(name.substr(kRoot.size()))) {
    if (unit == '/') {
      file += "%_";
    } else {
      file += unit;
      if (unit == '%') file += '%';
    }
  }
  return file.size() <= kLongestName ? file : Fail(ERROR_INVALID_NAME, std::string());
}

PipeRecord::PipeRecord(Descriptor folder, Descriptor file, const std::string& name)
    : m_folder(std::move(folder)), m_file(std::move(file)), m_name(name) {}

std::unique_ptr<PipeRecord> PipeRecord::Own(const std::string& name) {
  for (;;) {
    Descriptor folder = OpenFolder();
    if (folder < 0) return nullptr;
    Descriptor file(
        openat(folder, RecordName(name).c_str(), O_RDWR | O_CREAT | O_NOFOLLOW | O_CLOEXEC, 0600));
    std::unique_ptr<PipeRecord> record(new PipeRecord(std::move(folder), std::move(file), name));
    if (record->m_file < 0 || !LockByte(record->m_file, F_OFD_SETLK, F_WRLCK, kOwnerLock)) {
      return Fail(ERROR_ACCESS_DENIED, nullptr);
    }
    // The one before may have taken it away between the two steps.
    if (!record->IsThere()) continue;
    record->m_isOwn = true;
    // What one that was killed has left.
    for (std::size_t i = 0; i < PIPE_UNLIMITED_INSTANCES; ++i) {
      unlinkat(record->m_folder, SocketName(name, i).c_str(), 0);
    }
    Locked(*record).terms = {};
    return record;
  }
}

std::unique_ptr<PipeRecord> PipeRecord::Find(const std::string& name) {
  Descriptor folder = OpenFolder();
  if (folder < 0) return nullptr;
  Descriptor file(openat(folder, RecordName(name).c_str(), O_RDWR | O_NOFOLLOW | O_CLOEXEC));
  if (file < 0) return Fail(ERROR_FILE_NOT_FOUND, nullptr);
  return std::unique_ptr<PipeRecord>(new PipeRecord(std::move(folder), std::move(file), name));
}

PipeRecord::~PipeRecord() {
  if (m_isOwn) unlinkat(m_folder, RecordName(m_name).c_str(), 0);
}

std::string PipeRecord::SocketPath(std::size_t instance) const {
  return "/proc/self/fd/" + std::to_string(m_folder) + '/' + SocketName(m_name, instance);
}

bool PipeRecord::HasOwner() const {
  return m_isOwn || !LockByte(m_file, F_OFD_GETLK, F_WRLCK, kOwnerLock);
}

bool PipeRecord::IsThere() const {
  struct stat mine, there;
  return fstat(m_file, &mine) == 0 &&
         fstatat(m_folder, RecordName(m_name).c_str(), &there, AT_SYMLINK_NOFOLLOW) == 0 &&
         mine.st_dev == there.st_dev && mine.st_ino == there.st_ino;
}

PipeRecord::Locked::Locked(PipeRecord& record) : m_record(record), m_own(record.m_mutex) {
  LockByte(record.m_file, F_OFD_SETLKW, F_WRLCK, kTermsLock);
  // A file that isn't whole has no instances.
  if (pread(record.m_file, &terms, sizeof terms, 0) != sizeof terms) terms = {};
  m_before = terms;
}

PipeRecord::Locked::~Locked() {
  if (std::memcmp(&terms, &m_before, sizeof terms) != 0) {
    // A file of the user's memory; where that is full nobody finds the instance.
    [[maybe_unused]] const ssize_t written = pwrite(m_record.m_file, &terms, sizeof terms, 0);
  }
  LockByte(m_record.m_file, F_OFD_SETLK, F_UNLCK, kTermsLock);
}

}  // namespace winapi
