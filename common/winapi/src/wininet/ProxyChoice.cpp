#include "wininet/ProxyChoice.h"

#include <cctype>
#include <string_view>
#include <vector>

namespace winapi::internet {
namespace {

std::vector<std::string_view> Split(std::string_view list) {
  std::vector<std::string_view> words;
  while (true) {
    const std::size_t begin = list.find_first_not_of(" ;");
    if (begin == std::string_view::npos) return words;
    list.remove_prefix(begin);
    words.push_back(list.substr(0, list.find_first_of(" ;")));
    list.remove_prefix(words.back().size());
  }
}

char Lower(char c) {
  return static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
}

// Whether a name is the pattern's, in which "*" stands for any text.
bool Matches(std::string_view pattern, std::string_view name) {
  std::size_t p = 0;
  std::size_t n = 0;
  std::size_t star = std::string_view::npos;
  std::size_t starName = 0;
  while (n < name.size()) {
    if (p < pattern.size() && pattern[p] == '*') {
      star = p++;
      starName = n;
    } else if (p < pattern.size() && Lower(pattern[p]) == Lower(name[n])) {
      ++p;
      ++n;
    } else if (star != std::string_view::npos) {
      p = star + 1;
      n = ++starName;
    } else {
      return false;
    }
  }
  return pattern.find_first_not_of('*', p) == std::string_view::npos;
}

}  // namespace

std::string ChooseProxy(const std::string& proxies, const std::string& bypass,
                        const std::string& scheme, const std::string& host) {
  for (const std::string_view pattern : Split(bypass)) {
    const bool isLocal = pattern == "<local>" && host.find('.') == std::string::npos;
    if (isLocal || Matches(pattern, host)) return {};
  }
  for (std::string_view proxy : Split(proxies)) {
    const std::size_t equals = proxy.find('=');
    if (equals != std::string_view::npos) {
      if (proxy.substr(0, equals) != scheme) continue;
      proxy.remove_prefix(equals + 1);
    }
    const bool hasPort = proxy.find(':') != std::string_view::npos;
    return std::string(proxy) + (hasPort ? "" : ":80");
  }
  return {};
}

}  // namespace winapi::internet
