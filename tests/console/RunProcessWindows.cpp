#include <windows.h>

#include <iterator>
#include <stdexcept>
#include <string>

#include "tests/console/RunProcess.h"

namespace {

namespace fs = std::filesystem;

fs::path ProgramPath(const std::string& program) {
  wchar_t self[32768];
  GetModuleFileNameW(nullptr, self, static_cast<DWORD>(std::size(self)));
  return fs::path(self).parent_path() / (program + ".exe");
}

// As CommandLineToArgvW takes it apart: backslashes count double before a quote only.
std::wstring QuotedArgument(const std::wstring& argument) {
  std::wstring quoted = L"\"";
  std::size_t backslashes = 0;
  for (const wchar_t unit : argument) {
    if (unit == L'"') quoted.append(backslashes + 1, L'\\');
    backslashes = unit == L'\\' ? backslashes + 1 : 0;
    quoted += unit;
  }
  return quoted.append(backslashes, L'\\') + L'"';
}

HANDLE OpenInherited(const fs::path& path, DWORD access, DWORD creation) {
  SECURITY_ATTRIBUTES inherited = {sizeof inherited, nullptr, TRUE};
  return CreateFileW(path.c_str(), access, FILE_SHARE_READ | FILE_SHARE_WRITE, &inherited, creation,
                     FILE_ATTRIBUTE_NORMAL, nullptr);
}

// A program that was started, with the handles of its process and of its first thread.
class Program {
 public:
  Program(const std::string& program, const std::vector<std::string>& arguments, HANDLE in,
          const fs::path& out, const fs::path& err, DWORD flags) {
    std::wstring line = QuotedArgument(ProgramPath(program).wstring());
    for (const std::string& argument : arguments) {
      line += L' ' + QuotedArgument(FromUtf8(argument).wstring());
    }
    STARTUPINFOW startup = {};
    startup.cb = sizeof startup;
    startup.dwFlags = STARTF_USESTDHANDLES;
    startup.hStdInput = in;
    startup.hStdOutput = OpenInherited(out, GENERIC_WRITE, CREATE_ALWAYS);
    startup.hStdError = OpenInherited(err, GENERIC_WRITE, CREATE_ALWAYS);
    const BOOL started = CreateProcessW(nullptr, line.data(), nullptr, nullptr, TRUE, flags,
                                        nullptr, nullptr, &startup, &m_process);
    const DWORD error = started ? 0 : GetLastError();
    for (HANDLE handle : {startup.hStdInput, startup.hStdOutput, startup.hStdError}) {
      CloseHandle(handle);
    }
    if (error != 0) {
      throw std::runtime_error("the program doesn't start: " + std::to_string(error));
    }
  }
  ~Program() {
    CloseHandle(m_process.hThread);
    CloseHandle(m_process.hProcess);
  }
  Program(const Program&) = delete;
  Program& operator=(const Program&) = delete;

  DWORD Id() const { return m_process.dwProcessId; }
  bool HasEnded() const { return WaitForSingleObject(m_process.hProcess, 0) == WAIT_OBJECT_0; }
  int WaitForStatus() const {
    DWORD status = 0;
    WaitForSingleObject(m_process.hProcess, INFINITE);
    GetExitCodeProcess(m_process.hProcess, &status);
    return static_cast<int>(status);
  }

 private:
  PROCESS_INFORMATION m_process = {};
};

// Presses Ctrl-C on the console of a program. All programs of a console hear of it, so this one
// visits the other's, and is deaf as long as the object lives.
class CtrlC {
 public:
  explicit CtrlC(const Program& program) {
    SetConsoleCtrlHandler(nullptr, TRUE);
    FreeConsole();
    if (!AttachConsole(program.Id())) throw std::runtime_error("the program has no console");
    const BOOL pressed = GenerateConsoleCtrlEvent(CTRL_C_EVENT, 0);
    FreeConsole();
    if (!pressed) throw std::runtime_error("nobody takes Ctrl-C");
  }
  ~CtrlC() { SetConsoleCtrlHandler(nullptr, FALSE); }
  CtrlC(const CtrlC&) = delete;
  CtrlC& operator=(const CtrlC&) = delete;
};

}  // namespace

int RunProcess(const std::string& program, const std::vector<std::string>& arguments,
               const fs::path& in, const fs::path& out, const fs::path& err) {
  return Program(program, arguments, OpenInherited(in, GENERIC_READ, OPEN_EXISTING), out, err, 0)
      .WaitForStatus();
}

bool CanPressCtrlC() {
  DWORD mode = 0;
  return GetConsoleMode(GetStdHandle(STD_OUTPUT_HANDLE), &mode) == 0;
}

ProgramResult Interrupt(const std::string& name, const std::vector<std::string>& arguments,
                        const std::string& input) {
  const DataFolder folder;
  const fs::path out = folder.PathOf("out");
  const fs::path err = folder.PathOf("err");
  HANDLE in = nullptr;
  HANDLE pipe = nullptr;
  if (!CreatePipe(&in, &pipe, nullptr, 0)) throw std::runtime_error("no pipe can be made");
  SetHandleInformation(in, HANDLE_FLAG_INHERIT, HANDLE_FLAG_INHERIT);
  const Program program(name, arguments, in, out, err, CREATE_NO_WINDOW);
  while (ReadFile(err).empty() && !program.HasEnded()) Sleep(5);
  const CtrlC key(program);
  // The program hears of the key on another thread, and looks behind each part of its input.
  const auto size = static_cast<DWORD>(input.size());
  DWORD written = 0;
  for (int i = 0; i < 1'000'000 && WriteFile(pipe, input.data(), size, &written, nullptr); ++i) {
  }
  CloseHandle(pipe);
  const int status = program.WaitForStatus();
  return {status, ReadFile(out), ReadFile(err)};
}
