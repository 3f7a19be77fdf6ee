// A program and its helper, at the two ends of a pair of pipes. Here the helper is a worker of the
// same process; in a program it is another one, with the rights that the program lacks.
#include <windows.h>

#include <kelp0lang/kelp0lang.h>

#include <cstdio>
#include <string>

namespace {

// Pipes of this example's own. CPipeManager_Talv has those of the family.
class Pipes : public CPipeManager {
 public:
  Pipes(HANDLE write, HANDLE read) {
    m_hWrite = write;
    m_hRead = read;
  }
  ~Pipes() {
    CloseHandle(m_hWrite);
    CloseHandle(m_hRead);
  }
  HANDLE GetWriteHandle() override { return m_hWrite; }
  HANDLE GetReadHandle() override { return m_hRead; }
  int GetReadTimeout() override { return 60'000; }
};

kelp::WString NameOf(const WChar* end) {
  return KTEXT("\\\\.\\pipe\\example_") + kelp::WString::ValueOf(GetCurrentProcessId()) + end;
}
HANDLE Serve(const WChar* end, DWORD direction) {
  return CreateNamedPipeW(NameOf(end).c_str(), direction, PIPE_TYPE_BYTE | PIPE_WAIT, 1, 4096, 4096,
                          0, nullptr);
}
HANDLE Open(const WChar* end, DWORD access) {
  return CreateFileW(NameOf(end).c_str(), access, 0, nullptr, OPEN_EXISTING, 0, nullptr);
}

// The helper does what it is told and reports how that went.
class Helper : public kelp::CThreadFactory::ITask, public IStubAdminListener {
  unsigned long Run() override {
    Pipes pipes(Open(KTEXT("answers"), GENERIC_WRITE), Open(KTEXT("orders"), GENERIC_READ));
    m_pipes = &pipes;
    pipes.AddListener(this);
    pipes.StartRead();
    pipes.RemoveListener(this);
    return 0;
  }
  void OnMessage(const TStubMessage& message) override {
    std::printf("helper: command %d for %s\n", message.command,
                message.values[0].GetStringValue().ToUtf8().c_str());
    SendResponse({stubResult, {kelp::CPolyValue(0)}});
    m_pipes->StopRead();
  }
  void SendResponse(const TStubMessage& message) override { m_pipes->WriteMessage(message, false); }

  Pipes* m_pipes = nullptr;
};

class Program : public IStubAdminListener {
 public:
  explicit Program(Pipes& pipes) : m_pipes(pipes) {}

 private:
  void OnMessage(const TStubMessage& message) override {
    std::printf("program: the result is %d\n", message.values[0].GetInt32Value());
    m_pipes.StopRead();
  }
  void SendResponse(const TStubMessage&) override {}

  Pipes& m_pipes;
};

}  // namespace

int main() {
  Pipes pipes(Serve(KTEXT("orders"), PIPE_ACCESS_OUTBOUND),
              Serve(KTEXT("answers"), PIPE_ACCESS_INBOUND));
  Helper helper;
  kelp::CThreadFactory::CHandle* run = nullptr;
  kelp::CThreadFactory::GetInstance()->CreateThreadForTask(&helper, false, &run);

  Program program(pipes);
  pipes.AddListener(&program);
  ConnectNamedPipe(pipes.GetWriteHandle(), nullptr);
  ConnectNamedPipe(pipes.GetReadHandle(), nullptr);
  pipes.WriteMessage({stubInstallService, {kelp::WString(KTEXT("fieldwatch")), true}}, true);
  pipes.RemoveListener(&program);

  kelp::CThreadFactory::GetInstance()->WaitFor(run, INFINITE);
  kelp::CThreadFactory::GetInstance()->CloseHandle(run);
}
