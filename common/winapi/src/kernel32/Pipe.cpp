#include "kernel32/Pipe.h"

#include <poll.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <string>
#include <utility>

#include "Fail.h"

namespace winapi {
namespace {

constexpr DWORD kRead = GENERIC_READ;
constexpr DWORD kWrite = GENERIC_WRITE;
constexpr DWORD kKnownOpenMode =
    PIPE_ACCESS_DUPLEX | FILE_FLAG_WRITE_THROUGH | FILE_FLAG_FIRST_PIPE_INSTANCE;
constexpr DWORD kKnownPipeMode = PIPE_TYPE_MESSAGE | PIPE_REJECT_REMOTE_CLIENTS;

bool HasPeerGone(int connection) {
  pollfd wanted = {connection, 0, 0};
  return poll(&wanted, 1, 0) == 1 && (wanted.revents & POLLHUP) != 0;
}

template <class Call>
ssize_t Retry(Call call) {
  ssize_t result;
  do {
    result = call();
  } while (result < 0 && errno == EINTR);
  return result;
}

void Give(DWORD* target, std::size_t value) {
  if (target != nullptr) *target = static_cast<DWORD>(value);
}

// The error of a transfer that failed, where a broken connection is told by the given one.
DWORD TransferError(DWORD broken) {
  if (errno == EFAULT) return ERROR_NOACCESS;
  return errno == EPIPE || errno == ECONNRESET ? broken : ERROR_GEN_FAILURE;
}

// The direction that the server has for what the client asks for.
DWORD ServerAccess(DWORD clientRights) {
  return ((clientRights & kRead) != 0 ? PIPE_ACCESS_OUTBOUND : 0) |
         ((clientRights & kWrite) != 0 ? PIPE_ACCESS_INBOUND : 0);
}

HANDLE AddPipe(std::shared_ptr<Pipe> pipe) {
  const HANDLE handle = KernelLock().Add(std::move(pipe));
  return handle != nullptr ? handle : INVALID_HANDLE_VALUE;
}

}  // namespace

Pipe::Pipe(std::unique_ptr<PipeInstance> instance, DWORD rights)
    : KernelObject(kType), m_instance(std::move(instance)), m_rights(rights) {}

Pipe::Pipe(Descriptor connection, DWORD rights)
    : KernelObject(kType),
      m_rights(rights),
      m_connection(std::make_shared<const Descriptor>(std::move(connection))) {}

bool Pipe::HasClient() {
  if (m_connection == nullptr && m_instance != nullptr) {
    Descriptor accepted = m_instance->Accept();
    if (accepted >= 0) m_connection = std::make_shared<const Descriptor>(std::move(accepted));
  }
  return m_connection != nullptr;
}

Pipe::Connection Pipe::Connected() {
  const std::lock_guard lock(m_mutex);
  if (HasClient()) return m_connection;
  const bool listens = m_instance->State() == PipeState::kListening;
  return Fail(listens ? ERROR_PIPE_LISTENING : ERROR_PIPE_NOT_CONNECTED, Connection());
}

BOOL Pipe::Connect() {
  if (m_instance == nullptr) return Fail(ERROR_INVALID_FUNCTION);
  {
    const std::lock_guard lock(m_mutex);
    if (HasClient()) return Fail(HasPeerGone(*m_connection) ? ERROR_NO_DATA : ERROR_PIPE_CONNECTED);
    m_instance->ListenAgain();
  }
  for (;;) {
    m_instance->AwaitClient();
    const std::lock_guard lock(m_mutex);
    if (HasClient()) return TRUE;
  }
}

BOOL Pipe::Disconnect() {
  if (m_instance == nullptr) return Fail(ERROR_INVALID_FUNCTION);
  const std::lock_guard lock(m_mutex);
  if (!HasClient()) {
    const bool listens = m_instance->State() == PipeState::kListening;
    return Fail(listens ? ERROR_PIPE_LISTENING : ERROR_PIPE_NOT_CONNECTED);
  }
  // Calls that use it come back.
  shutdown(*m_connection, SHUT_RDWR);
  m_connection.reset();
  m_instance->SetState(PipeState::kDisconnected);
  return TRUE;
}

BOOL Pipe::Read(void* buffer, DWORD size, DWORD* count) {
  if ((m_rights & kRead) == 0) return Fail(ERROR_ACCESS_DENIED);
  const Connection connection = Connected();
  if (connection == nullptr) return FALSE;
  const ssize_t got = Retry([&] { return recv(*connection, buffer, size, 0); });
  if (got < 0) return Fail(TransferError(ERROR_BROKEN_PIPE));
  if (got == 0 && size > 0) return Fail(ERROR_BROKEN_PIPE);
  Give(count, static_cast<std::size_t>(got));
  return TRUE;
}

BOOL Pipe::Write(const void* data, DWORD size, DWORD* count) {
  if ((m_rights & kWrite) == 0) return Fail(ERROR_ACCESS_DENIED);
  const Connection connection = Connected();
  if (connection == nullptr) return FALSE;
  const char* const bytes = static_cast<const char*>(data);
  for (DWORD done = 0; done < size;) {
    const ssize_t sent =
        Retry([&] { return send(*connection, bytes + done, size - done, MSG_NOSIGNAL); });
    if (sent < 0) return Fail(TransferError(ERROR_NO_DATA));
    done += static_cast<DWORD>(sent);
    Give(count, done);
  }
  return TRUE;
}

BOOL Pipe::Peek(void* buffer, DWORD size, DWORD* count, DWORD* available) {
  if ((m_rights & kRead) == 0) return Fail(ERROR_ACCESS_DENIED);
  const Connection connection = Connected();
  if (connection == nullptr) return Fail(ERROR_BAD_PIPE);
  // First whether it has gone: what it wrote before is there by then.
  const bool hasGone = HasPeerGone(*connection);
  int waiting = 0;
  if (ioctl(*connection, FIONREAD, &waiting) != 0) return Fail(ERROR_GEN_FAILURE);
  if (waiting == 0 && hasGone) return Fail(ERROR_BROKEN_PIPE);
  ssize_t got = 0;
  if (buffer != nullptr && size > 0 && waiting > 0) {
    got = Retry([&] { return recv(*connection, buffer, size, MSG_PEEK | MSG_DONTWAIT); });
    if (got < 0) return Fail(TransferError(ERROR_BROKEN_PIPE));
  }
  Give(count, static_cast<std::size_t>(got));
  Give(available, static_cast<std::size_t>(waiting));
  return TRUE;
}

BOOL Pipe::GetProcessId(bool ofServer, DWORD* id) {
  const bool isServer = m_instance != nullptr;
  if (ofServer == isServer) {
    *id = static_cast<DWORD>(getpid());
    return TRUE;
  }
  const Connection connection = Connected();
  if (connection == nullptr) return FALSE;
  const auto process = PeerProcess(*connection);
  if (!process) return Fail(ERROR_GEN_FAILURE);
  *id = *process;
  return TRUE;
}

std::shared_ptr<Pipe> FindPipe(HANDLE handle) {
  const DWORD error = GetLastError();
  const KernelLock lock;
  Pipe* const pipe = lock.Find<Pipe>(handle);
  SetLastError(error);
  return pipe == nullptr ? nullptr : std::static_pointer_cast<Pipe>(pipe->shared_from_this());
}

bool IsPipePath(const char16_t* path) {
  const DWORD error = GetLastError();
  const bool isPipe = !PipeFileName(path).empty();
  SetLastError(error);
  return isPipe;
}

HANDLE OpenPipe(const char16_t* path, DWORD access, DWORD disposition) {
  if (disposition != OPEN_EXISTING) return Fail(ERROR_INVALID_PARAMETER, INVALID_HANDLE_VALUE);
  Descriptor connection = ConnectToPipe(PipeFileName(path), ServerAccess(access));
  if (connection < 0) return INVALID_HANDLE_VALUE;
  return AddPipe(std::make_shared<Pipe>(std::move(connection), access));
}

}  // namespace winapi

namespace {

// As FindPipe, but with the last error of a call that needs one.
std::shared_ptr<winapi::Pipe> PipeOf(HANDLE handle) {
  auto pipe = winapi::FindPipe(handle);
  if (pipe == nullptr) SetLastError(ERROR_INVALID_HANDLE);
  return pipe;
}

}  // namespace

HANDLE WINAPI CreateNamedPipeW(LPCWSTR name, DWORD openMode, DWORD pipeMode, DWORD maxInstances,
                               DWORD, DWORD, DWORD timeout, LPSECURITY_ATTRIBUTES) {
  const DWORD access = openMode & PIPE_ACCESS_DUPLEX;
  if (access == 0 || maxInstances == 0 || maxInstances > PIPE_UNLIMITED_INSTANCES) {
    return Fail(ERROR_INVALID_PARAMETER, INVALID_HANDLE_VALUE);
  }
  if ((openMode & ~winapi::kKnownOpenMode) != 0 || (pipeMode & ~winapi::kKnownPipeMode) != 0) {
    return Fail(ERROR_NOT_SUPPORTED, INVALID_HANDLE_VALUE);
  }
  const std::string file = winapi::PipeFileName(name);
  if (file.empty()) return INVALID_HANDLE_VALUE;
  const winapi::PipeTerms terms = {access, timeout, maxInstances, {}};
  auto instance =
      winapi::PipeInstance::Make(file, terms, (openMode & FILE_FLAG_FIRST_PIPE_INSTANCE) != 0);
  if (instance == nullptr) return INVALID_HANDLE_VALUE;
  const DWORD rights = ((access & PIPE_ACCESS_INBOUND) != 0 ? winapi::kRead : 0) |
                       ((access & PIPE_ACCESS_OUTBOUND) != 0 ? winapi::kWrite : 0);
  return winapi::AddPipe(std::make_shared<winapi::Pipe>(std::move(instance), rights));
}

BOOL WINAPI ConnectNamedPipe(HANDLE handle, LPOVERLAPPED overlapped) {
  if (overlapped != nullptr) return Fail(ERROR_NOT_SUPPORTED);
  const auto pipe = PipeOf(handle);
  return pipe != nullptr && pipe->Connect();
}

BOOL WINAPI DisconnectNamedPipe(HANDLE handle) {
  const auto pipe = PipeOf(handle);
  return pipe != nullptr && pipe->Disconnect();
}

BOOL WINAPI PeekNamedPipe(HANDLE handle, LPVOID buffer, DWORD size, LPDWORD count,
                          LPDWORD available, LPDWORD left) {
  if (left != nullptr) *left = 0;
  const auto pipe = PipeOf(handle);
  return pipe != nullptr && pipe->Peek(buffer, size, count, available);
}

BOOL WINAPI WaitNamedPipeW(LPCWSTR name, DWORD milliseconds) {
  const std::string file = winapi::PipeFileName(name);
  return !file.empty() && winapi::AwaitPipe(file, milliseconds);
}

BOOL WINAPI GetNamedPipeServerProcessId(HANDLE handle, ULONG* processId) {
  const auto pipe = PipeOf(handle);
  return pipe != nullptr && pipe->GetProcessId(true, processId);
}

BOOL WINAPI GetNamedPipeClientProcessId(HANDLE handle, ULONG* processId) {
  const auto pipe = PipeOf(handle);
  return pipe != nullptr && pipe->GetProcessId(false, processId);
}
