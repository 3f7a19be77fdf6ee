#include "kernel32/CommandLine.h"

#include <algorithm>

namespace winapi {
namespace {

// Backslashes mean themselves, but in front of a quote: there each pair is one, and a last single
// one makes the quote mean itself.
void TakeBackslashes(std::string_view& rest, std::string& argument, bool& isQuoted) {
  const std::size_t count = std::min(rest.find_first_not_of('\\'), rest.size());
  rest.remove_prefix(count);
  if (rest.empty() || rest.front() != '"') {
    argument.append(count, '\\');
    return;
  }
  argument.append(count / 2, '\\');
  if (count % 2 != 0) {
    argument += '"';
  } else {
    isQuoted = !isQuoted;
  }
  rest.remove_prefix(1);
}

}  // namespace

std::vector<std::string> SplitArguments(std::string_view rest) {
  constexpr const char* kBlanks = " \t";
  std::vector<std::string> arguments;
  for (;;) {
    rest.remove_prefix(std::min(rest.find_first_not_of(kBlanks), rest.size()));
    if (rest.empty()) return arguments;
    std::string argument;
    bool isQuoted = false;
    while (!rest.empty() && (isQuoted || (rest.front() != ' ' && rest.front() != '\t'))) {
      if (rest.front() == '\\' || rest.front() == '"') {
        TakeBackslashes(rest, argument, isQuoted);
      } else {
        argument += rest.front();
        rest.remove_prefix(1);
      }
    }
    arguments.push_back(argument);
  }
}

}  // namespace winapi
