#include "winspool/UserOptions.h"

#include <fcntl.h>
#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <fstream>
#include <sstream>

#include "kernel32/PathName.h"
#include "winspool/CupsBinding.h"

namespace winapi {
namespace {

using Options = std::vector<std::pair<std::string, std::string>>;

std::string HomeFolder() {
  const char* const home = std::getenv("HOME");
  if (home != nullptr && *home != 0) return home;
  const passwd* const user = getpwuid(getuid());
  return user == nullptr ? std::string() : user->pw_dir;
}

std::string QuotedOption(const std::string& name, const std::string& value) {
  std::string text = ' ' + name + '=';
  if (value.find_first_of(" \t\"'\\{}") == std::string::npos) return text + value;
  text += '"';
  for (const char unit : value) {
    if (unit == '"' || unit == '\\') text += '\\';
    text += unit;
  }
  return text + '"';
}

// The options that a line has behind its queue, with the new ones.
std::string Merged(const std::string& old, const Options& options) {
  const CupsCalls& cups = *Cups();
  cups_option_t* all = nullptr;
  int count = cups.cupsParseOptions(old.c_str(), 0, &all);
  for (const auto& [name, value] : options) {
    count = cups.cupsAddOption(name.c_str(), value.c_str(), count, &all);
  }
  std::string text;
  for (int i = 0; i < count; ++i) text += QuotedOption(all[i].name, all[i].value);
  cups.cupsFreeOptions(count, all);
  return text;
}

std::string ChangedFile(std::istream& file, const std::string& queue, const Options& options) {
  std::string text;
  bool isDone = false;
  for (std::string line; std::getline(file, line);) {
    std::istringstream words(line);
    std::string kind, name, rest;
    words >> kind >> name;
    if ((kind == "Dest" || kind == "Default") && name == queue) {
      std::getline(words, rest);
      line = kind + ' ' + name + Merged(rest, options);
      isDone = true;
    }
    text += line + '\n';
  }
  return isDone ? text : text + "Dest " + queue + Merged("", options) + '\n';
}

bool WriteWhole(int file, const std::string& text) {
  std::size_t done = 0;
  while (done < text.size()) {
    const ssize_t count = write(file, text.data() + done, text.size() - done);
    if (count < 0 && errno != EINTR) return false;
    if (count > 0) done += static_cast<std::size_t>(count);
  }
  return fsync(file) == 0;
}

bool Replace(const std::string& path, const std::string& text) {
  std::string temporary = path + ".XXXXXX";
  const int file = mkstemp(temporary.data());
  if (file < 0) return false;
  struct stat old;
  // As readable as it was.
  if (stat(path.c_str(), &old) == 0) fchmod(file, old.st_mode & 0777);
  const bool isWritten = WriteWhole(file, text);
  const int error = errno;
  close(file);
  if (isWritten && rename(temporary.c_str(), path.c_str()) == 0) return true;
  const int reason = isWritten ? errno : error;
  unlink(temporary.c_str());
  errno = reason;
  return false;
}

// False with the reason in errno.
bool Store(std::string path, const std::string& queue, const Options& options) {
  // A link stays one.
  if (char* const target = realpath(path.c_str(), nullptr)) {
    path = target;
    std::free(target);
  }
  std::ifstream file(path);
  if (!file && access(path.c_str(), F_OK) == 0) {
    errno = EACCES;
    return false;
  }
  const std::string text = ChangedFile(file, queue, options);
  if (file.bad()) {
    errno = EIO;
    return false;
  }
  return Replace(path, text);
}

}  // namespace

bool SetUserOptions(const std::string& queue, const Options& options) {
  const std::string folder = HomeFolder() + "/.cups";
  const std::string path = folder + "/lpoptions";
  const bool hasFolder = mkdir(folder.c_str(), 0700) == 0 || errno == EEXIST;
  if (hasFolder && Store(path, queue, options)) return true;
  SetFileError(errno, path);
  return false;
}

}  // namespace winapi
