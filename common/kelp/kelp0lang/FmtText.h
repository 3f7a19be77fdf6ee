// Text in fmt's format strings, with all that these can ask of a text; wide text is written as
// UTF-8. Stands outside the umbrella header, since only this one wants fmt.
//
//   fmt::print("{:>12}  {:.3f}\n", point.GetName(), point.height);
#pragma once

#include <fmt/format.h>

#include <string_view>

#include "kelp0lang/String.h"

template <>
struct fmt::formatter<kelp::String> : fmt::formatter<std::string_view> {
  template <class Context>
  auto format(const kelp::String& text, Context& context) const {
    return fmt::formatter<std::string_view>::format(std::string_view(text), context);
  }
};

template <>
struct fmt::formatter<kelp::WString> : fmt::formatter<kelp::String> {
  template <class Context>
  auto format(const kelp::WString& text, Context& context) const {
    return fmt::formatter<kelp::String>::format(text.ToUtf8(), context);
  }
};
