#include "advapi32/ServiceState.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>
#include <windows.h>

#include <cerrno>
#include <cstring>

#include "kernel32/ByteLock.h"

namespace winapi {
namespace {

constexpr char kMark[8] = {'w', 's', 't', 'a', 't', 'e', '0', '1'};

// The bytes of the three locks.
constexpr off_t kSupervisorLock = 0;
constexpr off_t kProgramLock = 1;
constexpr off_t kRecordLock = 2;

class RecordLock {
 public:
  RecordLock(int file, short type) : m_file(file) {
    LockByte(file, F_OFD_SETLKW, type, kRecordLock);
  }
  ~RecordLock() { LockByte(m_file, F_OFD_SETLK, F_UNLCK, kRecordLock); }
  RecordLock(const RecordLock&) = delete;
  RecordLock& operator=(const RecordLock&) = delete;

 private:
  const int m_file;
};

bool IsHeld(int file, off_t place) {
  return !LockByte(file, F_OFD_GETLK, F_WRLCK, place);
}

ServiceRecord ReadRecord(int file) {
  ServiceRecord record;
  if (pread(file, &record, sizeof record, 0) != sizeof record ||
      std::memcmp(record.mark, kMark, sizeof kMark) != 0 ||
      record.status.dwCurrentState < SERVICE_STOPPED ||
      record.status.dwCurrentState > SERVICE_PAUSED) {
    return StoppedRecord(ERROR_SERVICE_NEVER_STARTED);
  }
  record.address[sizeof record.address - 1] = 0;
  return record;
}

bool WriteRecord(int file, ServiceRecord record) {
  std::memcpy(record.mark, kMark, sizeof kMark);
  return pwrite(file, &record, sizeof record, 0) == sizeof record;
}

// Whether it's still the file of its name.
bool IsAt(int file, const std::string& path) {
  struct stat mine, there;
  return fstat(file, &mine) == 0 && lstat(path.c_str(), &there) == 0 &&
         mine.st_dev == there.st_dev && mine.st_ino == there.st_ino;
}

Descriptor OpenKept(const std::string& path, int flags) {
  Descriptor file(open(path.c_str(), flags | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC, 0644));
  if (file < 0) return file;
  while (flock(file, LOCK_SH) != 0 && errno == EINTR) {
  }
  return file;
}

}  // namespace

ServiceRecord StoppedRecord(DWORD exitCode) {
  ServiceRecord record = {};
  record.status.dwServiceType = SERVICE_WIN32_OWN_PROCESS;
  record.status.dwCurrentState = SERVICE_STOPPED;
  record.status.dwWin32ExitCode = exitCode;
  return record;
}

DWORD ServiceState::Open(const ServicePlace& place, bool forWriting,
                         std::optional<ServiceState>& state) {
  const std::string path = place.StatePath();
  for (;;) {
    Descriptor file = OpenKept(path, forWriting ? O_RDWR | O_CREAT : O_RDONLY);
    if (file < 0 && errno == ENOENT) file = OpenKept(path, O_RDWR | O_CREAT);
    struct stat status;
    if (file < 0 || fstat(file, &status) != 0) return ServiceFileError(errno);
    if (!S_ISREG(status.st_mode)) return ERROR_BADDB;
    // It may have been taken away, and another put in its place, between the two steps.
    if (!IsAt(file, path)) continue;
    state.emplace(ServiceState(std::move(file)));
    return ERROR_SUCCESS;
  }
}

Descriptor ServiceState::OpenForProgram(const ServicePlace& place) {
  Descriptor file = OpenKept(place.StatePath(), O_RDWR);
  if (file >= 0) LockByte(file, F_OFD_SETLK, F_WRLCK, kProgramLock);
  return file;
}

bool ServiceState::HasSupervisor() const {
  return IsHeld(m_file, kSupervisorLock);
}

ServiceRecord ServiceState::Read() const {
  const RecordLock lock(m_file, F_RDLCK);
  return ReadRecord(m_file);
}

SERVICE_STATUS_PROCESS ServiceState::Status() const {
  ServiceRecord record;
  {
    const RecordLock lock(m_file, F_RDLCK);
    record = ReadRecord(m_file);
    if (record.status.dwCurrentState != SERVICE_STOPPED && !HasSupervisor()) {
      if (IsHeld(m_file, kProgramLock)) {
        record.status.dwCurrentState = SERVICE_STOP_PENDING;
        record.status.dwControlsAccepted = 0;
      } else {
        record = StoppedRecord(ERROR_PROCESS_ABORTED);
      }
    }
  }
  const SERVICE_STATUS& status = record.status;
  return {status.dwServiceType,
          status.dwCurrentState,
          status.dwControlsAccepted,
          status.dwWin32ExitCode,
          status.dwServiceSpecificExitCode,
          status.dwCheckPoint,
          status.dwWaitHint,
          status.dwCurrentState == SERVICE_STOPPED ? 0 : record.process,
          0};
}

DWORD ServiceState::LetOthersStart(bool may) const {
  return fchmod(m_file, may ? 0666 : 0644) == 0 ? ERROR_SUCCESS : ServiceFileError(errno);
}

bool ServiceState::Claim(const ServiceRecord& record) const {
  const RecordLock lock(m_file, F_WRLCK);
  return !IsHeld(m_file, kProgramLock) && LockByte(m_file, F_OFD_SETLK, F_WRLCK, kSupervisorLock) &&
         WriteRecord(m_file, record);
}

void ServiceState::Write(const ServiceRecord& record) const {
  const RecordLock lock(m_file, F_WRLCK);
  WriteRecord(m_file, record);
}

}  // namespace winapi
