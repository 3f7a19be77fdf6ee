#include "fieldbook/watch/FolderWatch.h"

#include <algorithm>
#include <string>
#include <system_error>
#include <utility>

#include "fieldbook/points/PointReading.h"
#include "fieldbook/points/PointScan.h"

namespace fieldbook {
namespace {

namespace fs = std::filesystem;

struct Stop {};
// What is wrong with the content of a file.
struct Unsound {
  WString reason;
};

Argument ToArgument(const fs::path& file) {
  return {ToWString(file.string<WChar>()), file};
}

// The number of points. Throws Failure for a file that isn't to be copied.
int CountPoints(const Argument& file, const std::string& bytes,
                const std::function<bool()>& isToStop) {
  const auto source = BytesOf(bytes);
  TextSource text(*source);
  PointScan scan(text, {});
  FaultList faults;
  int points = 0;
  while (const auto kind = scan.Next()) {
    if (static_cast<std::size_t>(scan.LineNumber()) % kWatchedRows == 0 && isToStop()) throw Stop();
    if (*kind == LineKind::Fault) faults.Add(scan.LineNumber(), scan.Fault());
    if (*kind == LineKind::Point) ++points;
  }
  RequirePoints(file, static_cast<std::size_t>(points), faults);
  if (faults.IsEmpty()) return points;
  const RowFault first = faults.Told().front();
  throw Failure({KTEXT("{1}: {2} rows can't be read, the first in line {3}: {4}"),
                 {Shown(file.text), WString::ValueOf(static_cast<int>(faults.Count())),
                  WString::ValueOf(first.line), first.message.Text()}});
}

// The number of points. Throws Unsound.
int RequireSound(const Argument& file, const std::string& bytes,
                 const std::function<bool()>& isToStop) {
  try {
    return CountPoints(file, bytes, isToStop);
  } catch (const LayoutFailure& failure) {
    throw Unsound{InFile(file, failure.GetMsg())};
  } catch (const Failure& failure) {
    throw Unsound{failure.GetMsg()};
  }
}

// Adds a line where it isn't the one that was told last.
void TellOnce(const WString& line, WString& told, std::vector<WString>& lines) {
  if (line != told) lines.push_back(line);
  told = line;
}

// Empty without an error.
WString TextOf(const std::error_code& error, const fs::path& folder) {
  if (!error) return {};
  try {
    FailOnFile(ToArgument(folder), error.default_error_condition().value());
  } catch (const Failure& failure) {
    return failure.GetMsg();
  }
}

// Whether the copy is to be written; what stands in its place is kept.
bool MakePlace(const Argument& copy, const std::string& bytes) {
  std::error_code error;
  if (!fs::exists(copy.path, error)) return true;
  if (ReadAll(copy) == bytes) return false;
  fs::path kept = copy.path;
  kept += ".bak";
  WriteAll(ToArgument(kept), ReadAll(copy));
  return true;
}

}  // namespace

FolderWatch::FolderWatch(fs::path from, fs::path to)
    : m_from(std::move(from)), m_to(std::move(to)) {}

std::vector<WString> FolderWatch::Look(const std::function<bool()>& isToStop) {
  std::vector<WString> lines;
  for (auto& [name, seen] : m_seen) seen.isThere = false;
  std::error_code error;
  for (fs::directory_iterator file(m_from, error), end; !error && file != end;
       file.increment(error)) {
    if (isToStop()) return lines;
    if (!IsDue(*file)) continue;
    Seen& seen = m_seen[file->path().filename()];
    try {
      const WString line = Copy(file->path(), isToStop);
      if (!line.empty()) lines.push_back(line);
      seen.isDone = true;
    } catch (const Stop&) {
      return lines;
    } catch (const Unsound& unsound) {
      lines.push_back(unsound.reason);
      seen.isDone = true;
    } catch (const Failure& failure) {
      TellOnce(failure.GetMsg(), seen.told, lines);
    }
  }
  const WString unread = TextOf(error, m_from);
  if (unread.empty()) {
    m_told = WString();
  } else {
    TellOnce(unread, m_told, lines);
  }
  std::erase_if(m_seen, [](const auto& entry) { return !entry.second.isThere; });
  return lines;
}

bool FolderWatch::IsDue(const fs::directory_entry& file) {
  const fs::path name = file.path().filename();
  std::error_code error;
  // Programs hide what isn't finished.
  if (name.native().front() == '.' || !file.is_regular_file(error)) return false;
  const Seen now = {file.file_size(error), file.last_write_time(error), false, true};
  if (error) return false;
  const auto [found, isNew] = m_seen.try_emplace(name, now);
  Seen& seen = found->second;
  seen.isThere = true;
  const bool isAtRest = !isNew && seen.size == now.size && seen.written == now.written;
  if (!isAtRest) seen = now;
  return isAtRest && !seen.isDone;
}

WString FolderWatch::Copy(const fs::path& path, const std::function<bool()>& isToStop) const {
  const Argument file = ToArgument(path);
  const Argument copy = ToArgument(m_to / path.filename());
  const std::string bytes = ReadAll(file, [&](double) {
    if (isToStop()) throw Stop();
  });
  const int points = RequireSound(file, bytes, isToStop);
  if (!MakePlace(copy, bytes)) return {};
  WriteAll(copy, bytes);
  return Message{KTEXT("{1}: copied, {2} points"), {Shown(file.text), WString::ValueOf(points)}}
      .Text();
}

}  // namespace fieldbook
