// Profile files, and the registry's, on the disk; internal to the layer.
#pragma once

#include <sys/stat.h>

#include <optional>
#include <string>

namespace winapi {

// What tells one state of a file from another.
class FileStamp {
 public:
  FileStamp() = default;
  explicit FileStamp(const struct stat& status);
  bool operator==(const FileStamp& other) const;
  // Whether the file has been at rest for so long that a later change has another time: two changes
  // within one tick of the file system's clock may have the same, and even the same inode.
  bool IsSettled() const;

 private:
  dev_t m_device = 0;
  ino_t m_inode = 0;
  off_t m_size = -1;
  timespec m_written{};
  timespec m_changed{};
};

// Not set, and the reason in errno, where the file can't be asked.
std::optional<FileStamp> StampOf(const std::string& path);

// The whole file. False, and the reason in errno, where it can't be read; a folder can't.
bool ReadWholeFile(const std::string& path, std::string& bytes, FileStamp* stamp = nullptr);

// The file behind all symbolic links, which needn't be there. Empty, and the reason in errno, where
// the links lead in a circle.
std::string BehindLinks(std::string path);

// Keeps other threads and processes from changing a file in the same way; as long as the object is.
class ProfileLock {
 public:
  explicit ProfileLock(const std::string& path);
  ~ProfileLock();
  ProfileLock(const ProfileLock&) = delete;
  ProfileLock& operator=(const ProfileLock&) = delete;
  // False with the reason in errno.
  bool IsHeld() const { return m_descriptor >= 0; }

 private:
  int m_descriptor;
};

// Puts new content in place of a file in one step, flushed to the disk, with the permissions of the
// old one, or those given, less the process' mask, for a file that wasn't there. The caller holds
// the lock of the file. False, and the reason in errno, leaves it as it was.
bool ReplaceWholeFile(const std::string& path, const std::string& bytes, mode_t ofNew = 0666);

}  // namespace winapi
