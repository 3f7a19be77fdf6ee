#include "RunProgram.h"

#include <fstream>
#include <iterator>
#include <random>
#include <stdexcept>

#ifdef _WIN32
#include <windows.h>
#else
#include <fcntl.h>
#include <signal.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <thread>
#endif

namespace {

namespace fs = std::filesystem;

fs::path FromUtf8(const std::string& text) {
  return fs::path(std::u8string(text.begin(), text.end()));
}

void WriteFile(const fs::path& path, const std::string& bytes) {
  std::ofstream(path, std::ios::binary) << bytes;
}

std::string ReadFile(const fs::path& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

// An option that comes twice counts the last time.
std::vector<std::string> WithDefaultSettings(const std::vector<std::string>& arguments,
                                             const TempFolder& folder) {
  std::vector<std::string> all = {"--data", folder.PathOf("settings").string()};
  all.insert(all.end(), arguments.begin(), arguments.end());
  return all;
}

#ifdef _WIN32

fs::path ProgramPath() {
  wchar_t self[32768];
  GetModuleFileNameW(nullptr, self, static_cast<DWORD>(std::size(self)));
  return fs::path(self).parent_path() / "fieldbook.exe";
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
  Program(const std::vector<std::string>& arguments, HANDLE in, const fs::path& out,
          const fs::path& err, DWORD flags) {
    std::wstring line = QuotedArgument(ProgramPath().wstring());
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
    for (HANDLE handle : {startup.hStdInput, startup.hStdOutput, startup.hStdError}) {
      CloseHandle(handle);
    }
    if (started == 0) throw std::runtime_error("the program doesn't start");
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

int Run(const std::vector<std::string>& arguments, const fs::path& in, const fs::path& out,
        const fs::path& err) {
  return Program(arguments, OpenInherited(in, GENERIC_READ, OPEN_EXISTING), out, err, 0)
      .WaitForStatus();
}

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

#else

fs::path ProgramPath() {
  return fs::read_symlink("/proc/self/exe").parent_path() / "fieldbook";
}

void Redirect(const fs::path& path, int flags, int target) {
  const int file = open(path.c_str(), flags, 0600);
  if (file < 0 || dup2(file, target) < 0) _exit(126);
  close(file);
}

pid_t Start(const std::vector<std::string>& arguments, const fs::path& in, const fs::path& out,
            const fs::path& err) {
  const std::string program = ProgramPath();
  std::vector<char*> texts = {const_cast<char*>(program.c_str())};
  for (const std::string& argument : arguments)
    texts.push_back(const_cast<char*>(argument.c_str()));
  texts.push_back(nullptr);
  const pid_t child = fork();
  if (child == 0) {
    Redirect(in, O_RDONLY, STDIN_FILENO);
    Redirect(out, O_WRONLY | O_CREAT | O_TRUNC, STDOUT_FILENO);
    Redirect(err, O_WRONLY | O_CREAT | O_TRUNC, STDERR_FILENO);
    execv(program.c_str(), texts.data());
    _exit(127);
  }
  return child;
}

int WaitFor(pid_t child) {
  int status = 0;
  waitpid(child, &status, 0);
  return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
}

int Run(const std::vector<std::string>& arguments, const fs::path& in, const fs::path& out,
        const fs::path& err) {
  return WaitFor(Start(arguments, in, out, err));
}

#endif

}  // namespace

TempFolder::TempFolder() {
  std::random_device random;
  m_path = fs::temp_directory_path() /
           ("fieldbook-" + std::to_string(random()) + std::to_string(random()));
  fs::create_directories(m_path);
}

TempFolder::~TempFolder() {
  std::error_code ignored;
  fs::remove_all(m_path, ignored);
}

std::string TempFolder::Write(const std::string& name, const std::string& bytes) const {
  const fs::path path = m_path / FromUtf8(name);
  WriteFile(path, bytes);
  const std::u8string text = path.u8string();
  return {text.begin(), text.end()};
}

std::string TempFolder::Read(const std::string& name) const {
  return ReadFile(m_path / FromUtf8(name));
}

ProgramResult RunFieldbook(const std::vector<std::string>& arguments, const std::string& input,
                           const fs::path& output) {
  const TempFolder folder;
  const fs::path in = folder.PathOf("in");
  const fs::path out = output.empty() ? folder.PathOf("out") : output;
  const fs::path err = folder.PathOf("err");
  WriteFile(in, input);
  const int status = Run(WithDefaultSettings(arguments, folder), in, out, err);
  return {status, output.empty() ? ReadFile(out) : std::string(), ReadFile(err)};
}

#ifdef _WIN32

bool CanPressCtrlC() {
  DWORD mode = 0;
  return GetConsoleMode(GetStdHandle(STD_OUTPUT_HANDLE), &mode) == 0;
}

ProgramResult InterruptFieldbook(const std::vector<std::string>& arguments,
                                 const std::string& input) {
  const TempFolder folder;
  const fs::path out = folder.PathOf("out");
  const fs::path err = folder.PathOf("err");
  HANDLE in = nullptr;
  HANDLE pipe = nullptr;
  CreatePipe(&in, &pipe, nullptr, 0);
  SetHandleInformation(in, HANDLE_FLAG_INHERIT, HANDLE_FLAG_INHERIT);
  const Program program(arguments, in, out, err, CREATE_NO_WINDOW);
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

#else

ProgramResult RunFieldbookOnTerminal(const std::vector<std::string>& arguments) {
  const TempFolder folder;
  const fs::path out = folder.PathOf("out");
  const int terminal = posix_openpt(O_RDWR | O_NOCTTY);
  if (terminal < 0 || grantpt(terminal) != 0 || unlockpt(terminal) != 0) {
    throw std::runtime_error("no terminal can be made");
  }
  const pid_t child =
      Start(WithDefaultSettings(arguments, folder), "/dev/null", out, ptsname(terminal));
  std::string err;
  char part[4096];
  // It fails once the program has left the terminal.
  for (ssize_t size; (size = read(terminal, part, sizeof part)) > 0;) {
    err.append(part, static_cast<std::size_t>(size));
  }
  close(terminal);
  const int status = WaitFor(child);
  return {status, ReadFile(out), err};
}

bool CanPressCtrlC() {
  return true;
}

ProgramResult InterruptFieldbook(const std::vector<std::string>& arguments,
                                 const std::string& input) {
  const TempFolder folder;
  const fs::path in = folder.PathOf("in");
  const fs::path out = folder.PathOf("out");
  const fs::path err = folder.PathOf("err");
  if (mkfifo(in.c_str(), 0600) != 0) throw std::runtime_error("no pipe can be made");
  const pid_t child = Start(arguments, in, out, err);
  const int pipe = open(in.c_str(), O_WRONLY);
  if (write(pipe, input.data(), input.size()) < 0) throw std::runtime_error("nobody reads");
  while (ReadFile(err).empty()) std::this_thread::sleep_for(std::chrono::milliseconds(5));
  kill(child, SIGINT);
  close(pipe);
  const int status = WaitFor(child);
  return {status, ReadFile(out), ReadFile(err)};
}

#endif
