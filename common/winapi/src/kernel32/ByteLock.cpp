#include "kernel32/ByteLock.h"

#include <cerrno>

namespace winapi {

bool LockByte(int file, int command, short type, off_t place) {
  struct flock lock = {};
  lock.l_type = type;
  lock.l_whence = SEEK_SET;
  lock.l_start = place;
  lock.l_len = 1;
  int result;
  do {
    result = fcntl(file, command, &lock);
  } while (result != 0 && errno == EINTR);
  return result == 0 && (command != F_OFD_GETLK || lock.l_type == F_UNLCK);
}

}  // namespace winapi
