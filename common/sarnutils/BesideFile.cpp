#include "sarnutils/BesideFile.h"

#include <windows.h>

#include <atomic>
#include <charconv>
#include <cstdint>
#include <optional>
#include <string_view>

namespace sarn::detail {
namespace {

using WideText = std::basic_string<WChar>;
using WideView = std::basic_string_view<WChar>;

constexpr std::string_view kSuffix = ".new";
constexpr std::uint64_t kRest = 3600ULL * 10'000'000;  // an hour, in ticks of file times

std::uint64_t TicksOf(const FILETIME& time) {
  return std::uint64_t{time.dwHighDateTime} << 32 | time.dwLowDateTime;
}

// Takes a number off a text.
std::optional<DWORD> TakeNumber(std::string_view& text) {
  DWORD number = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  if (error != std::errc() || end == text.data()) return std::nullopt;
  text.remove_prefix(static_cast<std::size_t>(end - text.data()));
  return number;
}

bool Take(std::string_view& text, std::string_view wanted) {
  if (!text.starts_with(wanted)) return false;
  text.remove_prefix(wanted.size());
  return true;
}

// The process whose BesideName of this target a name is; 0 where it is none.
DWORD WriterOf(WideView name, WideView target) {
  if (!name.starts_with(target)) return 0;
  std::string narrow;
  for (const WChar unit : name.substr(target.size())) {
    narrow += unit < 0x80 ? static_cast<char>(unit) : '?';
  }
  std::string_view rest = narrow;
  const auto process = Take(rest, ".") ? TakeNumber(rest) : std::nullopt;
  if (!process || !Take(rest, "-") || !TakeNumber(rest) || rest != kSuffix) return 0;
  return *process;
}

// What isn't known counts as running.
bool IsRunning(DWORD processId) {
  const HANDLE process = OpenProcess(PROCESS_QUERY_INFORMATION, FALSE, processId);
  if (process == nullptr) return GetLastError() != ERROR_INVALID_PARAMETER;
  CloseHandle(process);
  return true;
}

bool IsAtRest(const WIN32_FIND_DATAW& found) {
  constexpr DWORD kOthers = FILE_ATTRIBUTE_DIRECTORY | FILE_ATTRIBUTE_READONLY;
  FILETIME now;
  GetSystemTimeAsFileTime(&now);
  return (found.dwFileAttributes & kOthers) == 0 &&
         TicksOf(found.ftLastWriteTime) + kRest < TicksOf(now);
}

bool IsOpen(const WideText& path) {
  const HANDLE file = CreateFileW(path.c_str(), static_cast<DWORD>(GENERIC_WRITE), 0, nullptr,
                                  OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
  if (file == INVALID_HANDLE_VALUE) return true;
  CloseHandle(file);
  return false;
}

}  // namespace

WideText BesideName(const WideText& target) {
  static std::atomic<unsigned> count = 0;
  const std::string name = '.' + std::to_string(GetCurrentProcessId()) + '-' +
                           std::to_string(++count) + std::string(kSuffix);
  return target + WideText(name.begin(), name.end());
}

void ClearAwayDead(const WideText& target) {
  const std::size_t separator = target.find_last_of(KTEXT("\\/:"));
  const std::size_t folder = separator == target.npos ? 0 : separator + 1;
  const WideView name = WideView(target).substr(folder);
  WIN32_FIND_DATAW found;
  const HANDLE search = FindFirstFileW((target + KTEXT(".*-*.new")).c_str(), &found);
  if (search == INVALID_HANDLE_VALUE) return;
  do {
    const DWORD writer = WriterOf(found.cFileName, name);
    if (writer == 0 || !IsAtRest(found) || IsRunning(writer)) continue;
    const WideText path = target.substr(0, folder) + found.cFileName;
    if (!IsOpen(path)) DeleteFileW(path.c_str());
  } while (FindNextFileW(search, &found));
  FindClose(search);
}

}  // namespace sarn::detail
