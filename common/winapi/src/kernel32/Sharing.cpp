#include "kernel32/Sharing.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <bit>
#include <cerrno>

#include "winnt.h"

namespace winapi {
namespace {

// The bytes of a file, as bits: a right in use, a right kept from others, a mapping.
constexpr off_t kFirstByte = 0x7FFF'FFFF'FFFF'FF00;
constexpr DWORD kRights = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;
constexpr int kKeptBit = 3;
constexpr DWORD kMapping = 0x40;

DWORD KeptBy(ShareClaim claim) {
  return claim.uses == 0 ? 0 : (kRights & ~claim.shares) << kKeptBit;
}

// Calls with a lock for each byte of the set, until one gives true.
template <class Call>
bool AnyByte(DWORD bytes, short type, Call call) {
  for (; bytes != 0; bytes &= bytes - 1) {
    struct flock lock {};
    lock.l_type = type;
    lock.l_whence = SEEK_SET;
    lock.l_start = kFirstByte + std::countr_zero(bytes);
    lock.l_len = 1;
    if (call(lock)) return true;
  }
  return false;
}

// A folder, a link or a device has no content that others hold.
int OpenRegular(const std::string& path) {
  struct stat status;
  if (lstat(path.c_str(), &status) != 0 || !S_ISREG(status.st_mode)) return -1;
  return open(path.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC);
}

// Nobody holds the gate for longer than a few system calls; who does is no program of ours.
bool IsBlocked(int descriptor) {
  constexpr int kMostTries = 10'000;
  constexpr useconds_t kPauseUs = 100;
  for (int tries = 0; tries < kMostTries; ++tries) {
    if (flock(descriptor, LOCK_EX | LOCK_NB) == 0) return false;
    if (errno != EWOULDBLOCK && errno != EINTR) return false;
    usleep(kPauseUs);
  }
  return true;
}

}  // namespace

ShareGate::ShareGate(int descriptor) : m_descriptor(descriptor), m_blocked(IsBlocked(descriptor)) {}

ShareGate::~ShareGate() {
  const int error = errno;
  flock(m_descriptor, LOCK_UN);
  errno = error;
}

bool ShareGate::Allows(ShareClaim claim) const {
  if (claim.uses == 0) return true;
  return !m_blocked && !IsHeldByAnother(claim.uses << kKeptBit | KeptBy(claim) >> kKeptBit);
}

bool ShareGate::IsMapped() const {
  return IsHeldByAnother(kMapping);
}

void ShareGate::Hold(ShareClaim claim) const {
  HoldBytes(claim.uses | KeptBy(claim));
}

void ShareGate::HoldMapping() const {
  HoldBytes(kMapping);
}

bool ShareGate::IsHeldByAnother(DWORD bytes) const {
  return AnyByte(bytes, F_WRLCK, [&](struct flock& lock) {
    return fcntl(m_descriptor, F_OFD_GETLK, &lock) == 0 && lock.l_type != F_UNLCK;
  });
}

void ShareGate::HoldBytes(DWORD bytes) const {
  AnyByte(bytes, F_RDLCK, [&](struct flock& lock) {
    fcntl(m_descriptor, F_OFD_SETLK, &lock);
    return false;
  });
}

DeletionGate::DeletionGate(const std::string& posixPath) : m_file(OpenRegular(posixPath)) {
  if (m_file >= 0) m_gate.emplace(m_file);
}

bool DeletionGate::Allows() const {
  constexpr ShareClaim kDeletes = {FILE_SHARE_DELETE, kRights};
  return !m_gate || m_gate->Allows(kDeletes);
}

}  // namespace winapi
