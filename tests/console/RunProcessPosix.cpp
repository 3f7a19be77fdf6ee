#include <fcntl.h>
#include <poll.h>
#include <pty.h>
#include <signal.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <stdexcept>
#include <thread>

#include "tests/console/RunProcess.h"

namespace {

namespace fs = std::filesystem;

fs::path ProgramPath(const std::string& program) {
  return fs::read_symlink("/proc/self/exe").parent_path() / program;
}

void Redirect(const fs::path& path, int flags, int target) {
  const int file = open(path.c_str(), flags, 0600);
  if (file < 0 || dup2(file, target) < 0) _exit(126);
  close(file);
}

// The arguments of a program as it gets them.
std::vector<char*> TextsOf(const std::string& path, const std::vector<std::string>& arguments) {
  std::vector<char*> texts = {const_cast<char*>(path.c_str())};
  for (const std::string& argument : arguments) {
    texts.push_back(const_cast<char*>(argument.c_str()));
  }
  texts.push_back(nullptr);
  return texts;
}

pid_t Start(const std::string& program, const std::vector<std::string>& arguments,
            const fs::path& in, const fs::path& out, const fs::path& err) {
  const std::string path = ProgramPath(program);
  std::vector<char*> texts = TextsOf(path, arguments);
  const pid_t child = fork();
  if (child == 0) {
    Redirect(in, O_RDONLY, STDIN_FILENO);
    Redirect(out, O_WRONLY | O_CREAT | O_TRUNC, STDOUT_FILENO);
    Redirect(err, O_WRONLY | O_CREAT | O_TRUNC, STDERR_FILENO);
    execv(path.c_str(), texts.data());
    _exit(127);
  }
  return child;
}

int WaitFor(pid_t child) {
  int status = 0;
  waitpid(child, &status, 0);
  return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
}

}  // namespace

int RunProcess(const std::string& program, const std::vector<std::string>& arguments,
               const fs::path& in, const fs::path& out, const fs::path& err) {
  return WaitFor(Start(program, arguments, in, out, err));
}

ProgramResult RunOnTerminal(const std::string& program, const std::vector<std::string>& arguments) {
  const DataFolder folder;
  const fs::path out = folder.PathOf("out");
  const int terminal = posix_openpt(O_RDWR | O_NOCTTY);
  if (terminal < 0 || grantpt(terminal) != 0 || unlockpt(terminal) != 0) {
    throw std::runtime_error("no terminal can be made");
  }
  const pid_t child = Start(program, arguments, "/dev/null", out, ptsname(terminal));
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

namespace {

// The master's side of the terminal of a program. What isn't shown within some seconds ends the
// program, and is thrown.
class TypedTerminal {
 public:
  TypedTerminal(int terminal, int other, pid_t child)
      : m_terminal(terminal), m_other(other), m_child(child) {}

  const std::string& Shown() const { return m_shown; }
  void Type(const std::string& keys) {
    if (write(m_terminal, keys.data(), keys.size()) < 0) Fail("the keys aren't taken");
  }
  void WaitFor(const std::string& text) {
    std::size_t at;
    while ((at = m_shown.find(text, m_seen)) == std::string::npos) {
      if (!ReadSome(kPatience)) Fail("not shown: " + text);
    }
    m_seen = at + text.size();
  }
  // The prompt is shown a moment before the terminal takes single keys.
  void WaitForPrompt() {
    WaitFor("> ");
    termios state = {};
    for (int passed = 0; passed < kPatience; ++passed) {
      if (tcgetattr(m_other, &state) == 0 && (state.c_lflag & ICANON) == 0) return;
      std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    Fail("no keys are taken");
  }
  // Until the program has ended, not yet waited for.
  void WaitForEnd() {
    for (int passed = 0; passed < kPatience; passed += kGlance) {
      siginfo_t info = {};
      waitid(P_PID, static_cast<id_t>(m_child), &info, WEXITED | WNOHANG | WNOWAIT);
      if (info.si_pid != 0) return;
      ReadSome(kGlance);
    }
    Fail("it doesn't end");
  }

 private:
  static constexpr int kPatience = 20000;  // ms
  static constexpr int kGlance = 10;

  bool ReadSome(int wait) {
    pollfd output = {m_terminal, POLLIN, 0};
    char part[4096];
    const ssize_t count = poll(&output, 1, wait) > 0 ? read(m_terminal, part, sizeof part) : 0;
    if (count > 0) m_shown.append(part, static_cast<std::size_t>(count));
    return count > 0;
  }
  [[noreturn]] void Fail(const std::string& what) {
    kill(m_child, SIGKILL);
    ::WaitFor(m_child);
    throw std::runtime_error(what + "; the terminal shows " + m_shown);
  }

  int m_terminal;
  int m_other;  // the program's side
  pid_t m_child;
  std::string m_shown;
  std::size_t m_seen = 0;
};

}  // namespace

TerminalResult TypeInto(const std::string& program, const std::vector<std::string>& arguments,
                        const std::vector<Typing>& typing, int columns, int lastSignal) {
  const std::string path = ProgramPath(program);
  std::vector<char*> texts = TextsOf(path, arguments);
  int terminal = -1;
  winsize size = {24, static_cast<unsigned short>(columns), 0, 0};
  const pid_t child = forkpty(&terminal, nullptr, nullptr, &size);
  if (child == 0) {
    setenv("TERM", "xterm", 1);
    execv(path.c_str(), texts.data());
    _exit(127);
  }
  // One side of the terminal stays open, so that its state can be asked for at the end.
  const int other = open(ptsname(terminal), O_RDWR | O_NOCTTY);
  TypedTerminal typed(terminal, other, child);
  for (std::size_t i = 0; i < typing.size(); ++i) {
    const std::string before = i == 0 ? "\n" : typing[i - 1].keys;
    if (before.ends_with('\n') || before.ends_with('\x03')) typed.WaitForPrompt();
    typed.Type(typing[i].keys);
    typed.WaitFor(typing[i].awaited);
  }
  if (lastSignal != 0) kill(child, lastSignal);
  typed.WaitForEnd();
  TerminalResult result;
  result.status = WaitFor(child);
  termios state = {};
  tcgetattr(other, &state);
  result.isEchoing = (state.c_lflag & ECHO) != 0 && (state.c_lflag & ICANON) != 0;
  result.out = typed.Shown();
  close(other);
  close(terminal);
  return result;
}

bool CanPressCtrlC() {
  return true;
}

ProgramResult Interrupt(const std::string& program, const std::vector<std::string>& arguments,
                        const std::string& input) {
  const DataFolder folder;
  const fs::path in = folder.PathOf("in");
  const fs::path out = folder.PathOf("out");
  const fs::path err = folder.PathOf("err");
  if (mkfifo(in.c_str(), 0600) != 0) throw std::runtime_error("no pipe can be made");
  const pid_t child = Start(program, arguments, in, out, err);
  const int pipe = open(in.c_str(), O_WRONLY);
  if (write(pipe, input.data(), input.size()) < 0) throw std::runtime_error("nobody reads");
  while (ReadFile(err).empty()) std::this_thread::sleep_for(std::chrono::milliseconds(5));
  kill(child, SIGINT);
  close(pipe);
  const int status = WaitFor(child);
  return {status, ReadFile(out), ReadFile(err)};
}
