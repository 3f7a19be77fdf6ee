#include "kernel32/Process.h"

#include <poll.h>
#include <sys/syscall.h>
#include <sys/uio.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>
#include <memory>
#include <string>
#include <system_error>
#include <thread>
#include <utility>

#include "Fail.h"

namespace winapi {
namespace {

constexpr DWORD kKnownAccess = PROCESS_VM_READ | PROCESS_QUERY_INFORMATION;
constexpr DWORD kKilled = 128;  // and the signal, as a shell has it

void AwaitChild(const std::shared_ptr<Process>& child) {
  int status = 0;
  while (waitpid(child->id, &status, 0) < 0 && errno == EINTR) {
  }
  KernelLock lock;
  child->ended = true;
  child->exitCode = static_cast<DWORD>(
      WIFSIGNALED(status) ? static_cast<int>(kKilled) + WTERMSIG(status) : WEXITSTATUS(status));
  lock.EndWaits(*child);
}

// Whether this user may see what a process has loaded. Kernel threads have nothing there.
bool MayLookInto(DWORD id) {
  char target[1];
  const std::string link = "/proc/" + std::to_string(id) + "/exe";
  return readlink(link.c_str(), target, sizeof target) >= 0 || errno == ENOENT;
}

// By the kernel, which sees beforehand what isn't there. Gives the bytes; fewer than wanted with
// the reason in errno.
std::size_t CopyMemory(pid_t process, const void* address, void* buffer, std::size_t size) {
  std::size_t copied = 0;
  errno = 0;
  while (copied < size) {
    const iovec to = {static_cast<char*>(buffer) + copied, size - copied};
    // Of another process the address is a number here.
    const iovec from = {reinterpret_cast<void*>(reinterpret_cast<std::uintptr_t>(address) + copied),
                        size - copied};
    const ssize_t count = process_vm_readv(process, &to, 1, &from, 1, 0);
    if (count <= 0) break;
    copied += static_cast<std::size_t>(count);
  }
  return copied;
}

}  // namespace

bool Process::HasEnded() const {
  if (other < 0) return ended;
  pollfd wanted = {other, POLLIN, 0};
  return poll(&wanted, 1, 0) == 1;
}

HANDLE AddChild(pid_t id) {
  const auto child = std::make_shared<Process>(id);
  try {
    std::thread(AwaitChild, child).detach();
  } catch (const std::system_error&) {
    return Fail<HANDLE>(ERROR_NOT_ENOUGH_MEMORY);
  }
  return KernelLock().Add(child);
}

}  // namespace winapi

using winapi::KernelLock;
using winapi::Process;

HANDLE WINAPI OpenProcess(DWORD access, BOOL, DWORD processId) {
  if ((access & ~winapi::kKnownAccess) != 0) return Fail<HANDLE>(ERROR_NOT_SUPPORTED);
  if (processId == 0) return Fail<HANDLE>(ERROR_INVALID_PARAMETER);
  const auto id = static_cast<pid_t>(processId);
  winapi::Descriptor descriptor(static_cast<int>(syscall(SYS_pidfd_open, id, 0)));
  if (descriptor < 0) {
    // The number of a thread, or of nothing; other reasons tell nothing of the process.
    const bool isNone = errno == ESRCH || errno == EINVAL || errno == ENOENT;
    return Fail<HANDLE>(isNone ? ERROR_INVALID_PARAMETER : ERROR_NOT_ENOUGH_MEMORY);
  }
  if (!winapi::MayLookInto(processId)) return Fail<HANDLE>(ERROR_ACCESS_DENIED);
  return KernelLock().Add(std::make_shared<Process>(id, std::move(descriptor)));
}

BOOL WINAPI GetExitCodeProcess(HANDLE handle, LPDWORD exitCode) {
  const KernelLock lock;
  const auto* const process = lock.Find<Process>(handle);
  if (process == nullptr) return FALSE;
  const bool hasEnded = process->HasEnded();
  if (hasEnded && process->other >= 0) return Fail(ERROR_NOT_SUPPORTED);
  *exitCode = hasEnded ? process->exitCode : STILL_ACTIVE;
  return TRUE;
}

DWORD WINAPI GetProcessId(HANDLE handle) {
  const KernelLock lock;
  const auto* const process = lock.Find<Process>(handle);
  return process == nullptr ? 0 : static_cast<DWORD>(process->id);
}

BOOL WINAPI ReadProcessMemory(HANDLE handle, LPCVOID address, LPVOID buffer, SIZE_T size,
                              SIZE_T* read) {
  const DWORD id = GetProcessId(handle);
  if (id == 0) return FALSE;
  const std::size_t copied = winapi::CopyMemory(static_cast<pid_t>(id), address, buffer, size);
  if (read != nullptr) *read = copied;
  if (copied == size) return TRUE;
  return Fail(errno == EPERM || errno == ENOSYS ? ERROR_ACCESS_DENIED : ERROR_PARTIAL_COPY);
}
