// JSON for programs: values one behind another, in UTF-8.
//
//   Json json;
//   json.BeginObject();
//   json.Member("rules", 3);
//   json.Key("faults");
//   json.BeginArray();
//   ...
//   console.Print(json.Text());
#pragma once

#include <string>
#include <string_view>

#include "console/Text.h"

namespace ribbon {

using console::WString;

class Json {
 public:
  void BeginObject() { Begin('{'); }
  void EndObject() { m_text += '}'; }
  void BeginArray() { Begin('['); }
  void EndArray() { m_text += ']'; }
  // The name of the member that comes next.
  void Key(std::string_view name);
  void Key(const WString& name);

  void Value(const WString& text);
  void Value(int number);
  template <class T>
  void Member(std::string_view name, const T& value) {
    Key(name);
    Value(value);
  }

  const std::string& Text() const { return m_text; }

 private:
  void Begin(char bracket);
  // Parts a value from the one before it.
  void Separate();
  void AppendString(std::string_view utf8);

  std::string m_text;
};

}  // namespace ribbon
