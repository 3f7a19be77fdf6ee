#include "tests/console/RunProcess.h"

#include <fstream>
#include <iterator>

namespace fs = std::filesystem;

std::string DataFolder::Write(const std::string& name, const std::string& bytes) const {
  TempFolder::Write(FromUtf8(name), bytes);
  const std::u8string text = (Path() / FromUtf8(name)).u8string();
  return {text.begin(), text.end()};
}

std::string DataFolder::Read(const std::string& name) const {
  return TempFolder::Read(FromUtf8(name));
}

ProgramResult RunProgram(const std::string& program, const std::vector<std::string>& arguments,
                         const std::string& input, const fs::path& output) {
  const DataFolder folder;
  const fs::path out = output.empty() ? folder.PathOf("out") : output;
  const fs::path err = folder.PathOf("err");
  folder.Write("in", input);
  const int status = RunProcess(program, arguments, folder.PathOf("in"), out, err);
  return {status, output.empty() ? ReadFile(out) : std::string(), ReadFile(err)};
}

fs::path FromUtf8(const std::string& text) {
  return fs::path(std::u8string(text.begin(), text.end()));
}

std::string ReadFile(const fs::path& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}
