#include "console/Console.h"

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cstdlib>
#include <iostream>
#include <system_error>

#include "kelp0lang/File.h"
#include "kelp0lang/Translate.h"

#ifdef _WIN32
#include <windows.h>
// Needs windows.h before it.
#include <fcntl.h>
#include <io.h>
#include <shellapi.h>
#else
#include <signal.h>
#include <sys/ioctl.h>
#include <unistd.h>
#endif

namespace console {
namespace {

namespace fs = std::filesystem;

std::atomic<bool> g_isInterrupted{false};
static_assert(std::atomic<bool>::is_always_lock_free);  // a signal handler writes it

#ifdef _WIN32

// The console's code pages belong to all programs in it, so they are put back at the end.
UINT g_inputCodePage = 0;
UINT g_outputCodePage = 0;

void SetUpStreams() {
  for (std::FILE* stream : {stdin, stdout, stderr}) _setmode(_fileno(stream), _O_BINARY);
  // Where it is a file or a pipe, this C runtime would keep its lines back.
  std::setvbuf(stderr, nullptr, _IONBF, 0);
  g_inputCodePage = GetConsoleCP();
  g_outputCodePage = GetConsoleOutputCP();
  SetConsoleCP(CP_UTF8);
  SetConsoleOutputCP(CP_UTF8);
}

void RestoreStreams() {
  if (g_inputCodePage != 0) SetConsoleCP(g_inputCodePage);
  if (g_outputCodePage != 0) SetConsoleOutputCP(g_outputCodePage);
}

bool IsAnsiTerminal() {
  const HANDLE output = GetStdHandle(STD_OUTPUT_HANDLE);
  DWORD mode = 0;
  return GetConsoleMode(output, &mode) != 0 &&
         SetConsoleMode(output, mode | ENABLE_VIRTUAL_TERMINAL_PROCESSING) != 0;
}

bool IsTerminal(DWORD stream) {
  DWORD mode = 0;
  return GetConsoleMode(GetStdHandle(stream), &mode) != 0;
}

bool IsBetweenTerminals() {
  return IsTerminal(STD_INPUT_HANDLE) && IsTerminal(STD_OUTPUT_HANDLE);
}

bool IsErrorTerminal() {
  return IsTerminal(STD_ERROR_HANDLE);
}

// Runs on a thread of its own.
BOOL WINAPI TakeInterrupt(DWORD event) {
  return event == CTRL_C_EVENT && !g_isInterrupted.exchange(true);
}

void CatchInterrupts() {
  SetConsoleCtrlHandler(TakeInterrupt, TRUE);
}

void ReleaseInterrupts() {
  SetConsoleCtrlHandler(TakeInterrupt, FALSE);
}

// A reader that went away shows as EINVAL in this C runtime.
bool IsQuiet(int error) {
  return error == EPIPE || error == EBADF || error == EINVAL;
}

BOOL WINAPI TakeNoNotice(DWORD) {
  return TRUE;
}

// While the object lives no Ctrl-C ends the program.
class SignalsHeld {
 public:
  SignalsHeld() { SetConsoleCtrlHandler(TakeNoNotice, TRUE); }
  ~SignalsHeld() { SetConsoleCtrlHandler(TakeNoNotice, FALSE); }
  SignalsHeld(const SignalsHeld&) = delete;
  SignalsHeld& operator=(const SignalsHeld&) = delete;
};

int StatusColumns() {
  CONSOLE_SCREEN_BUFFER_INFO info;
  if (!GetConsoleScreenBufferInfo(GetStdHandle(STD_ERROR_HANDLE), &info)) return 0;
  return info.srWindow.Right - info.srWindow.Left + 1;
}

#else

void SetUpStreams() {}
void RestoreStreams() {}

bool IsAnsiTerminal() {
  const char* terminal = std::getenv("TERM");
  return isatty(STDOUT_FILENO) != 0 && terminal != nullptr && std::string_view(terminal) != "dumb";
}

bool IsBetweenTerminals() {
  return isatty(STDIN_FILENO) != 0 && isatty(STDOUT_FILENO) != 0;
}

bool IsErrorTerminal() {
  return isatty(STDERR_FILENO) != 0;
}

struct sigaction g_formerAction;

void TakeInterrupt(int) {
  g_isInterrupted = true;
}

// Without SA_RESTART, so that a wait for input ends. A program that was started with the signal
// ignored, in the background, goes on ignoring it.
void CatchInterrupts() {
  struct sigaction action = {};
  action.sa_handler = TakeInterrupt;
  action.sa_flags = static_cast<int>(SA_RESETHAND);
  sigaction(SIGINT, nullptr, &g_formerAction);
  if (g_formerAction.sa_handler != SIG_IGN) sigaction(SIGINT, &action, nullptr);
}

void ReleaseInterrupts() {
  sigaction(SIGINT, &g_formerAction, nullptr);
}

bool IsQuiet(int error) {
  return error == EPIPE || error == EBADF;
}

// While the object lives the signals that end a program wait.
class SignalsHeld {
 public:
  SignalsHeld() {
    sigset_t held;
    sigemptyset(&held);
    for (const int signal : {SIGINT, SIGTERM, SIGHUP, SIGQUIT}) sigaddset(&held, signal);
    pthread_sigmask(SIG_BLOCK, &held, &m_former);
  }
  ~SignalsHeld() { pthread_sigmask(SIG_SETMASK, &m_former, nullptr); }
  SignalsHeld(const SignalsHeld&) = delete;
  SignalsHeld& operator=(const SignalsHeld&) = delete;

 private:
  sigset_t m_former;
};

int StatusColumns() {
  winsize size = {};
  return ioctl(STDERR_FILENO, TIOCGWINSZ, &size) == 0 ? size.ws_col : 0;
}

#endif

bool WantsColour() {
  const char* refusal = std::getenv("NO_COLOR");
  return refusal == nullptr || *refusal == 0;
}

// The commonest errors have words that can be translated.
WString WordsFor(int error) {
  switch (error) {
    case ENOENT:
      return kelp::Xlate(KTEXT("there is no such file"));
    case EACCES:
      return kelp::Xlate(KTEXT("access is denied"));
    case EISDIR:
      return kelp::Xlate(KTEXT("it is a folder"));
    case ENOSPC:
      return kelp::Xlate(KTEXT("no space is left"));
    default:
      return Decode(std::generic_category().message(error));
  }
}

[[noreturn]] void FailOn(const Argument& file, int error) {
  throw Failure({KTEXT("{1}: {2}"), {Shown(file.text), WordsFor(error)}});
}

[[noreturn]] void FailOn(const Argument& file, const std::error_code& error) {
  FailOn(file, error.default_error_condition().value());
}

std::string ReadStream(std::istream& stream, const Argument& file, std::uintmax_t size,
                       const Watch& watch) {
  std::string content;
  char part[1 << 16];
  errno = 0;
  while (stream.read(part, sizeof part), stream.gcount() > 0) {
    content.append(part, static_cast<std::size_t>(stream.gcount()));
    if (watch)
      watch(size == 0 ? 0 : static_cast<double>(content.size()) / static_cast<double>(size));
  }
  if (stream.bad()) FailOn(file, errno != 0 ? errno : EIO);
  return content;
}

// What a file has to be for being written over. The read-only mark counts for everybody, and where
// a device stands no file may take its place.
void RequireReplaceable(const Argument& file, const fs::file_status& status) {
  constexpr fs::perms kWrite =
      fs::perms::owner_write | fs::perms::group_write | fs::perms::others_write;
  if (fs::is_directory(status)) FailOn(file, EISDIR);
  if (!fs::is_regular_file(status) || (status.permissions() & kWrite) == fs::perms::none) {
    FailOn(file, EACCES);
  }
}

// A name that isn't taken, in the folder of the file.
fs::path NameBeside(const fs::path& file) {
  fs::path name = file;
  name += ".new";
  std::error_code ignored;
  for (int number = 1; fs::exists(name, ignored); ++number) {
    name = file;
    name += ".";
    name += std::to_string(number);
    name += ".new";
  }
  return name;
}

// A new file with these bytes, and with the permissions of the one whose place it is to take.
void WriteNew(const Argument& file, const fs::path& path, const fs::file_status& replaced,
              const std::string& bytes) {
  errno = 0;
  std::ofstream stream(path, std::ios::binary);
  if (!stream) FailOn(file, errno != 0 ? errno : ENOENT);
  std::error_code ignored;
  if (fs::exists(replaced)) fs::permissions(path, replaced.permissions(), ignored);
  errno = 0;
  stream.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
  stream.close();
  if (stream) return;
  const int error = errno != 0 ? errno : EIO;
  fs::remove(path, ignored);
  FailOn(file, error);
}

// std::cin takes an error for the end; the C stream below it knows better.
void RequireInputRead() {
  if (std::ferror(stdin) != 0) FailOn({KTEXT("-"), "-"}, errno != 0 ? errno : EIO);
}

}  // namespace

Console::Console(const WChar* programName) : m_programName(programName) {
  SetUpStreams();
  m_hasColour = WantsColour() && IsAnsiTerminal();
  m_isInteractive = IsBetweenTerminals();
  m_isStatusTerminal = IsErrorTerminal();
}

Console::~Console() {
  RestoreStreams();
}

#ifdef _WIN32

// main gets its arguments in the code page of the system, which hasn't all characters.
std::vector<Argument> Console::Arguments(int, char**) {
  int count = 0;
  wchar_t** texts = CommandLineToArgvW(GetCommandLineW(), &count);
  std::vector<Argument> arguments;
  for (int i = 1; i < count; ++i) arguments.push_back({texts[i], texts[i]});
  LocalFree(texts);
  return arguments;
}

std::filesystem::path Console::ProgramFolder() {
  std::wstring path(MAX_PATH, L'\0');
  DWORD size = 0;
  while ((size = GetModuleFileNameW(nullptr, path.data(), static_cast<DWORD>(path.size()))) ==
         path.size()) {
    path.resize(2 * path.size());
  }
  path.resize(size);
  return fs::path(path).parent_path();
}

WString Console::EnvironmentLanguage() {
  wchar_t name[LOCALE_NAME_MAX_LENGTH];
  return GetUserDefaultLocaleName(name, LOCALE_NAME_MAX_LENGTH) > 0 ? WString(name) : WString();
}

WideOutputScope::WideOutputScope() {
  std::fflush(stdout);
  _setmode(_fileno(stdout), _O_TEXT);
}

WideOutputScope::~WideOutputScope() {
  std::fflush(stdout);
  _setmode(_fileno(stdout), _O_BINARY);
}

#else

WideOutputScope::WideOutputScope() = default;
WideOutputScope::~WideOutputScope() = default;

std::filesystem::path Console::ProgramFolder() {
  std::error_code ignored;
  return fs::read_symlink("/proc/self/exe", ignored).parent_path();
}

// As gettext looks for it.
WString Console::EnvironmentLanguage() {
  for (const char* variable : {"LC_ALL", "LC_MESSAGES", "LANG"}) {
    const char* value = std::getenv(variable);
    if (value != nullptr && *value != 0) return Decode(value);
  }
  return WString();
}

std::vector<Argument> Console::Arguments(int argc, char** argv) {
  std::vector<Argument> arguments;
  for (int i = 1; i < argc; ++i) arguments.push_back({Decode(argv[i]), argv[i]});
  return arguments;
}

#endif

#ifdef _WIN32

WString SystemPath(const WString& path) {
  return path.Replace(KTEXT('/'), KTEXT('\\'));
}

WString LibraryPath(const Argument& file) {
  return kelp::CFile(file.text).GetAbsolutePath();
}

#else

// The library sees the root folder as a drive.
WString SystemPath(const WString& path) {
  const WString slashes = path.Replace(KTEXT('\\'), KTEXT('/'));
  return slashes.find(KTEXT("C:/")) == 0 ? slashes.Substring(2) : slashes;
}

// What the library takes for the path has to lead back to it.
WString LibraryPath(const Argument& file) {
  std::error_code error;
  fs::path absolute = fs::absolute(file.path, error);
  // Behind a link ".." leads elsewhere than the text says.
  const bool goesUp = std::find(absolute.begin(), absolute.end(), "..") != absolute.end();
  if (goesUp) absolute = fs::weakly_canonical(absolute, error);
  absolute = absolute.lexically_normal();
  const WString path = kelp::CFile(KTEXT("C:") + Decode(absolute.native())).GetAbsolutePath();
  std::string back;
  AppendUtf8(back, SystemPath(path));
  return !error && back == absolute.native() ? path : WString();
}

#endif

void Console::Print(std::string_view utf8) {
  if (IsOutputLost()) return;
  errno = 0;
  if (std::fwrite(utf8.data(), 1, utf8.size(), stdout) == utf8.size()) return;
  m_outputError = errno != 0 ? errno : EIO;
}

void Console::PrintText(const WString& text) {
  const kelp::String utf8 = text.ToUtf8();
  Print({utf8.c_str(), utf8.length()});
}

void Console::PrintLine(const WString& text) {
  PrintText(text + KTEXT('\n'));
}

void Console::Prompt() {
  Print("> ");
  std::fflush(stdout);
}

void Console::Complain(const WString& text) {
  std::fflush(stdout);  // so that both streams keep their order where they meet
  const kelp::String utf8 = text.ToUtf8() + '\n';
  std::fwrite(utf8.c_str(), 1, utf8.length(), stderr);
}

// A line that reached the terminal's edge would go on in the next one, and stay there.
void Console::PrintStatus(const WString& whole) {
  if (!m_isStatusTerminal) return Complain(whole);
  WString text = whole;
  const int most = StatusColumns() - 1;
  while (most > 0 && DisplayColumns(text) > most) text = text.Substring(0, text.Length() - 1);
  m_statusColumns = most > 0 ? std::min(m_statusColumns, most) : m_statusColumns;
  const int columns = DisplayColumns(text);
  const auto rest = static_cast<std::size_t>(std::max(0, m_statusColumns - columns));
  m_statusColumns = columns;
  const std::string line = '\r' + std::string(text.ToUtf8().c_str()) + std::string(rest, ' ');
  std::fwrite(line.data(), 1, line.size(), stderr);
  std::fflush(stderr);
}

void Console::EraseStatus() {
  if (m_statusColumns == 0) return;
  PrintStatus(WString());
  std::fputc('\r', stderr);
}

void Console::Flush() {
  errno = 0;
  if (std::fflush(stdout) != 0 && !IsOutputLost()) m_outputError = errno != 0 ? errno : EIO;
  if (!IsOutputLost() || IsQuiet(m_outputError)) return;
  throw Failure({KTEXT("can't write the output: {1}"), {WordsFor(m_outputError)}});
}

InterruptScope::InterruptScope() {
  g_isInterrupted = false;
  CatchInterrupts();
}

InterruptScope::~InterruptScope() {
  ReleaseInterrupts();
}

bool InterruptScope::IsInterrupted() {
  return g_isInterrupted;
}

std::ifstream OpenFile(const Argument& file) {
  std::error_code ignored;
  if (fs::is_directory(file.path, ignored)) FailOn(file, EISDIR);
  errno = 0;
  std::ifstream stream(file.path, std::ios::binary);
  if (!stream) FailOn(file, errno != 0 ? errno : ENOENT);
  return stream;
}

void FailOnFile(const Argument& file, int error) {
  FailOn(file, error != 0 ? error : EIO);
}

std::string ReadAll(const Argument& file, const Watch& watch) {
  if (file.text == WString(KTEXT("-"))) {
    std::string content = ReadStream(std::cin, file, 0, watch);
    RequireInputRead();
    return content;
  }
  std::ifstream stream = OpenFile(file);
  std::error_code unknown;
  const std::uintmax_t size = fs::file_size(file.path, unknown);
  return ReadStream(stream, file, unknown ? 0 : size, watch);
}

bool ReadInputLine(std::string& line) {
  errno = 0;
  if (std::getline(std::cin, line)) return true;
  if (g_isInterrupted) {
    // What comes behind can still be read.
    std::clearerr(stdin);
    std::cin.clear();
    return false;
  }
  RequireInputRead();
  return false;
}

void RequireReadable(const Argument& file) {
  OpenFile(file);
}

void WriteAll(const Argument& file, const std::string& bytes) {
  std::error_code error;
  // A link stays, and what it leads to is written.
  fs::path target = fs::canonical(file.path, error);
  if (error) target = file.path;
  const fs::file_status status = fs::status(target, error);
  if (fs::exists(status)) RequireReplaceable(file, status);

  const SignalsHeld held;  // so that none leaves the new file beside the old one
  const fs::path written = NameBeside(target);
  WriteNew(file, written, status, bytes);
  fs::rename(written, target, error);
  if (!error) return;
  std::error_code ignored;
  fs::remove(written, ignored);
  FailOn(file, error);
}

}  // namespace console
