// A helper as the tests want it, by the command line that the caller gives it:
//   "talk;pipes"  opens the pipes and answers each command by what its first value says, until the
//             pipes end: a number, "two" for an answer of two values before that of 0, "garbage"
//             for what is no answer before that of 0, "end" for half an answer and the end
//   "launch;" starts the program that the next argument names, and gives its exit status
//   "sleep;"  is there for three seconds
//   "until;"  is there until the file is that the next argument names, for a minute at most
//   else      ends at once
#include <windows.h>
// It needs the one before.
#include <shellapi.h>

#include <cstring>
#include <string>

#include "tests/winapi/WideText.h"

namespace {

constexpr DWORD kMoreThanAPoll = 700;  // of the other side, in milliseconds

HANDLE Open(const WCHAR* name, DWORD access) {
  return CreateFileW(name, access, 0, nullptr, OPEN_EXISTING, 0, nullptr);
}

void Say(HANDLE pipe, const Wide& text) {
  DWORD count = 0;
  WriteFile(pipe, text.data(), static_cast<DWORD>(text.size() * sizeof(WCHAR)), &count, nullptr);
}

// What is no answer, each in a read of the other side's own.
void SayGarbage(HANDLE pipe) {
  const Wide parts[] = {
      WTEXT("1;2000000000;2;0;"),
      WTEXT("1;-3;2;0;"),
      WTEXT("1;1;99;0;"),
      WTEXT(";;;;"),
      WTEXT("99999999999999999999;1;2;0;"),
      Wide(200'000, 'x'),
      Wide(1, 0) + WTEXT("1;1;2;0;"),
  };
  for (const Wide& part : parts) {
    Say(pipe, part);
    Sleep(kMoreThanAPoll);
  }
  // The long one is read in several parts.
  Sleep(4 * kMoreThanAPoll);
}

Wide Widened(const char* text) {
  return Wide(text, text + std::strlen(text));
}

void WaitFor(const char* file) {
  constexpr int kMostTries = 6'000;
  const Wide path = Widened(file);
  for (int i = 0; i < kMostTries; ++i) {
    if (GetFileAttributesW(path.c_str()) != INVALID_FILE_ATTRIBUTES) return;
    Sleep(10);
  }
}

int Launch(const char* program) {
  const Wide path = Widened(program);
  SHELLEXECUTEINFOW info = {};
  info.cbSize = sizeof info;
  info.fMask = SEE_MASK_NOCLOSEPROCESS;
  info.lpFile = path.c_str();
  DWORD status = 99;
  if (!ShellExecuteExW(&info)) return 98;
  WaitForSingleObject(info.hProcess, INFINITE);
  GetExitCodeProcess(info.hProcess, &status);
  return static_cast<int>(status);
}

void Talk() {
  const HANDLE in = Open(WTEXT("//./pipe/runas_server"), GENERIC_READ);
  const HANDLE out = Open(WTEXT("//./pipe/runas_client"), GENERIC_WRITE);
  WCHAR units[1000];
  DWORD bytes = 0;
  while (ReadFile(in, units, sizeof units, &bytes, nullptr)) {
    // "6;4;4;<first value>;..."
    Wide rest(units, bytes / sizeof(WCHAR));
    for (int i = 0; i < 3; ++i) rest.erase(0, rest.find(';') + 1);
    const Wide value = rest.substr(0, rest.find(';'));
    if (value == WTEXT("end")) {
      Say(out, WTEXT("1;1;2"));
      return;
    }
    if (value == WTEXT("garbage")) {
      SayGarbage(out);
      Say(out, WTEXT("1;1;2;0;"));
    } else if (value == WTEXT("flood")) {
      Say(out, Wide(5'000'000, 'x'));
      Sleep(2 * kMoreThanAPoll);
      Say(out, WTEXT("1;1;2;0;"));
    } else if (value == WTEXT("two")) {
      Say(out, WTEXT("1;2;2;0;2;0;"));
      Say(out, WTEXT("1;1;2;0;"));
    } else {
      Say(out, WTEXT("1;1;2;") + value + WTEXT(";"));
    }
  }
}

}  // namespace

int main(int count, char** arguments) {
  const std::string what = count > 1 ? arguments[1] : "";
  if (what == "talk;pipes") Talk();
  if (what == "sleep;") Sleep(3'000);
  if (what == "until;" && count > 2) WaitFor(arguments[2]);
  if (what == "launch;" && count > 2) return Launch(arguments[2]);
  return 0;
}
