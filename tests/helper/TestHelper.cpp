// A helper as the tests want it, by the command line that the caller gives it:
//   "talk;pipes"  opens the pipes and answers each command by what its first value says: a number,
//   or
//             "two" for an answer of two values before that of 0, until the pipes end
//   "sleep;"  is there for three seconds
//   else      ends at once
#include <windows.h>

#include <string>

#ifdef _WIN32
#define WTEXT(text) L##text
#else
#define WTEXT(text) u##text
#endif

namespace {

using Text = std::basic_string<WCHAR>;

HANDLE Open(const WCHAR* name, DWORD access) {
  return CreateFileW(name, access, 0, nullptr, OPEN_EXISTING, 0, nullptr);
}

void Say(HANDLE pipe, const Text& text) {
  DWORD count = 0;
  WriteFile(pipe, text.data(), static_cast<DWORD>(text.size() * sizeof(WCHAR)), &count, nullptr);
}

void Talk() {
  const HANDLE in = Open(WTEXT("//./pipe/runas_server"), GENERIC_READ);
  const HANDLE out = Open(WTEXT("//./pipe/runas_client"), GENERIC_WRITE);
  WCHAR units[1000];
  DWORD bytes = 0;
  while (ReadFile(in, units, sizeof units, &bytes, nullptr)) {
    // "6;4;4;<first value>;..."
    Text rest(units, bytes / sizeof(WCHAR));
    for (int i = 0; i < 3; ++i) rest.erase(0, rest.find(';') + 1);
    const Text value = rest.substr(0, rest.find(';'));
    if (value == WTEXT("two")) {
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
  return 0;
}
