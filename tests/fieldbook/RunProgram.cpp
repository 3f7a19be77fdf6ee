#include "RunProgram.h"

#include <fstream>
#include <iterator>
#include <random>

#include "RunProcess.h"

namespace {

namespace fs = std::filesystem;

void WriteFile(const fs::path& path, const std::string& bytes) {
  std::ofstream(path, std::ios::binary) << bytes;
}

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
  const int status = RunProcess(WithDefaultSettings(arguments, folder), in, out, err);
  return {status, output.empty() ? ReadFile(out) : std::string(), ReadFile(err)};
}

fs::path FromUtf8(const std::string& text) {
  return fs::path(std::u8string(text.begin(), text.end()));
}

std::string ReadFile(const fs::path& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

std::vector<std::string> WithDefaultSettings(const std::vector<std::string>& arguments,
                                             const TempFolder& folder) {
  std::vector<std::string> all = {"--data", folder.PathOf("settings").string()};
  all.insert(all.end(), arguments.begin(), arguments.end());
  return all;
}
