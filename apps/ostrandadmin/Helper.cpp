#include "ostrandadmin/Helper.h"

#include <windows.h>
// It needs the one before.
#include <tlhelp32.h>

#include "kelp0lang/PipeManager.h"
#include "kelptext/WideChar.h"
#include "ostrandadmin/Commands.h"

namespace ostrandadmin {
namespace {

// 0 where it can't be told.
DWORD ParentProcess() {
  const HANDLE snapshot = CreateToolhelp32Snapshot(TH32CS_SNAPPROCESS, 0);
  if (snapshot == INVALID_HANDLE_VALUE) return 0;
  DWORD parent = 0;
  PROCESSENTRY32W entry = {};
  entry.dwSize = sizeof entry;
  for (BOOL there = Process32FirstW(snapshot, &entry); there && parent == 0;
       there = Process32NextW(snapshot, &entry)) {
    if (entry.th32ProcessID == GetCurrentProcessId()) parent = entry.th32ParentProcessID;
  }
  CloseHandle(snapshot);
  return parent;
}

bool IsServedBy(HANDLE pipe, DWORD process) {
  ULONG server = 0;
  return process != 0 && GetNamedPipeServerProcessId(pipe, &server) && server == process;
}

// The other ends of the program's pipes: what it writes is read here.
class Pipes final : public CPipeManager {
 public:
  Pipes() {
    m_hRead = Open(KTEXT("//./pipe/runas_server"), GENERIC_READ);
    m_hWrite = Open(KTEXT("//./pipe/runas_client"), GENERIC_WRITE);
  }
  ~Pipes() {
    for (const HANDLE pipe : {m_hRead, m_hWrite}) {
      if (pipe != INVALID_HANDLE_VALUE) CloseHandle(pipe);
    }
  }

  HANDLE GetWriteHandle() override { return m_hWrite; }
  HANDLE GetReadHandle() override { return m_hRead; }
  // It waits for commands as long as the program lives.
  int GetReadTimeout() override { return 0; }

 private:
  static HANDLE Open(const WChar* name, DWORD access) {
    return CreateFileW(name, access, 0, nullptr, OPEN_EXISTING, 0, nullptr);
  }
};

// Answers each command with one result.
class Server final : public IStubAdminListener {
 public:
  explicit Server(Pipes& pipes) : m_pipes(pipes) { m_pipes.AddListener(this); }
  ~Server() { m_pipes.RemoveListener(this); }
  Server(const Server&) = delete;
  Server& operator=(const Server&) = delete;

  void OnMessage(const TStubMessage& message) override {
    SendResponse({stubResult, {Execute(message)}});
  }
  void SendResponse(const TStubMessage& message) override { m_pipes.WriteMessage(message, false); }

 private:
  Pipes& m_pipes;
};

}  // namespace

Status Serve() {
  Pipes pipes;
  if (pipes.GetReadHandle() == INVALID_HANDLE_VALUE ||
      pipes.GetWriteHandle() == INVALID_HANDLE_VALUE) {
    return kNoPipes;
  }
  const DWORD parent = ParentProcess();
  if (!IsServedBy(pipes.GetReadHandle(), parent) || !IsServedBy(pipes.GetWriteHandle(), parent)) {
    return kRefused;
  }
  const Server server(pipes);
  pipes.StartRead();
  return kDone;
}

}  // namespace ostrandadmin
