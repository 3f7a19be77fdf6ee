// The names of pipes, as the processes of a user share them; internal to the layer.
//
// Each name has a file in a folder that only the user can enter. Its process holds a lock on it, so
// that it is known to live; a second lock guards what the file says of each instance. Beside it
// each instance has a socket, and who finds it listening, under the lock, connects to it.
#pragma once

#include <windows.h>

#include <cstddef>
#include <memory>
#include <mutex>
#include <string>

#include "kernel32/Descriptor.h"

namespace winapi {

// The file of a pipe's name; empty, and ERROR_INVALID_NAME, where the path can't be one.
std::string PipeFileName(const char16_t* path);

enum class PipeState : char { kUnused, kListening, kConnected, kDisconnected };

// The content of the file.
struct PipeTerms {
  DWORD access;   // PIPE_ACCESS_INBOUND, PIPE_ACCESS_OUTBOUND or both
  DWORD timeout;  // milliseconds
  DWORD maxInstances;
  PipeState instances[PIPE_UNLIMITED_INSTANCES];
};

class PipeRecord {
 public:
  // Takes the name for this process. Null, and the last error, where another has it.
  static std::unique_ptr<PipeRecord> Own(const std::string& name);
  // The name that a process has. Null, and ERROR_FILE_NOT_FOUND, where none does.
  static std::unique_ptr<PipeRecord> Find(const std::string& name);
  // Gives back a name that this process has.
  ~PipeRecord();

  // Where the socket of an instance is, for bind and connect.
  std::string SocketPath(std::size_t instance) const;

  // Nobody else reads or changes the terms while this lives. Changes are for all to see at its end.
  class Locked {
   public:
    explicit Locked(PipeRecord& record);
    ~Locked();
    Locked(const Locked&) = delete;
    Locked& operator=(const Locked&) = delete;
    PipeTerms terms = {};

   private:
    PipeRecord& m_record;
    std::unique_lock<std::mutex> m_own;
    PipeTerms m_before = {};
  };

  // Whether its process lives.
  bool HasOwner() const;

 private:
  PipeRecord(Descriptor folder, Descriptor file, const std::string& name);
  bool IsThere() const;  // still the file of its name

  const Descriptor m_folder;
  const Descriptor m_file;
  const std::string m_name;
  bool m_isOwn = false;
  std::mutex m_mutex;  // the lock of the file is between processes
};

}  // namespace winapi
