// The ends of named pipes behind handles; internal to the layer.
#pragma once

#include <windows.h>

#include <memory>
#include <mutex>

#include "kernel32/Descriptor.h"
#include "kernel32/KernelObject.h"
#include "kernel32/PipeInstance.h"

namespace winapi {

class Pipe : public KernelObject {
 public:
  static constexpr KernelType kType = KernelType::kPipe;

  // The server's end, and the client's; rights are GENERIC_READ and GENERIC_WRITE.
  Pipe(std::unique_ptr<PipeInstance> instance, DWORD rights);
  Pipe(Descriptor connection, DWORD rights);
  bool IsSignalled(const Thread&) const override { return true; }

  // What the calls of these names do. They set the last error.
  BOOL Connect();
  BOOL Disconnect();
  BOOL Read(void* buffer, DWORD size, DWORD* count);
  BOOL Write(const void* data, DWORD size, DWORD* count);
  BOOL Peek(void* buffer, DWORD size, DWORD* count, DWORD* available);
  // The process at the server's end or at the client's.
  BOOL GetProcessId(bool ofServer, DWORD* id);

 private:
  // A connection stays open while a call uses it, whoever disconnects meanwhile.
  using Connection = std::shared_ptr<const Descriptor>;

  // Null, and the last error, where there is none.
  Connection Connected();
  // Under the mutex: whether there is one, which may have come only now.
  bool HasClient();

  const std::unique_ptr<const PipeInstance> m_instance;  // null for a client
  const DWORD m_rights;
  std::mutex m_mutex;
  Connection m_connection;
};

// Null, and the last error as it was, for a handle of something else.
std::shared_ptr<Pipe> FindPipe(HANDLE handle);

bool IsPipePath(const char16_t* path);
// As CreateFileW.
HANDLE OpenPipe(const char16_t* path, DWORD access, DWORD disposition);

}  // namespace winapi
