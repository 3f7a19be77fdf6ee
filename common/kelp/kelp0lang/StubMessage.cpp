#include "kelp0lang/StubMessage.h"

#include <tchar.h>

#include <algorithm>
#include <cstring>
#include <string_view>

#include "kelp0lang/LocaleFree.h"
#include "kelptext/Digits.h"

namespace kelp::detail {
namespace {

constexpr WChar kEnd = ';';  // of every field
constexpr const WChar* kEmptyText = KTEXT("EMPTY_STRING");
constexpr int kLongestDouble = 330;  // 309 digits, sign, point and six decimals
constexpr int kLongestNumber = 21;
constexpr int kNone = -1;  // of a command, count or type that hasn't come yet

void AppendNumber(std::int64_t number, WString& text) {
  WChar digits[kLongestNumber];
  const auto magnitude = static_cast<std::uint64_t>(number);
  const std::uint64_t absolute = number < 0 ? 0 - magnitude : magnitude;
  const int count = CountDigits(absolute);
  WriteDigits(digits, absolute, count);
  if (number < 0) text += WChar{'-'};
  digits[count] = 0;
  text += digits;
  text += kEnd;
}

void AppendDouble(double number, WString& text) {
  WChar digits[kLongestDouble];
  const WChar point = ProcessDecimalPoint();
  if (FormatFixed(digits, number, 6, point) < 0) {
    Format(digits, std::size(digits), point, KTEXT("%f"), number);
  }
  text += digits;
  text += kEnd;
}

// Room for a value, so that a message is built in one buffer.
std::int64_t RoomFor(const CPolyValue& value) {
  constexpr int kType = 2;
  switch (value.GetType()) {
    case pvString:
      return kType + 1 + std::max<std::int64_t>(value.GetStringValue().Length(), 12);
    case pvDouble:
      return kType + kLongestDouble;
    default:
      return kType + kLongestNumber;
  }
}

// Takes the fields of one read in their order and makes messages of them.
class Reader {
 public:
  void Take(const WString& field) {
    if (m_command == kNone) {
      m_command = _wtoi(field.c_str());
    } else if (m_count == kNone) {
      m_count = _wtoi(field.c_str());
      if (m_count == 0) Complete();
    } else if (m_type == kNone) {
      m_type = _wtoi(field.c_str());
    } else {
      TakeValue(field);
    }
  }
  std::vector<TStubMessage>& Messages() { return m_messages; }

 private:
  void TakeValue(const WString& field) {
    CPolyValue value;
    if (ReadPolyValue(field, m_type, value)) m_values.push_back(std::move(value));
    m_type = kNone;
    ++m_index;
    if (m_index == m_count - 1) Complete();
  }
  void Complete() {
    m_messages.push_back({static_cast<enumStubCommand>(m_command), std::move(m_values)});
    m_values.clear();
    m_command = m_count = m_index = kNone;
  }

  std::vector<TStubMessage> m_messages;
  std::vector<CPolyValue> m_values;
  int m_command = kNone;
  int m_count = kNone;
  int m_type = kNone;
  int m_index = kNone;  // of the last value
};

}  // namespace

void WritePolyValue(const CPolyValue& value, WString& text) {
  const int type = value.GetType();
  if (type == pvEmpty || type == pvArray || type == pvDate) return;
  AppendNumber(type, text);
  if (type == pvString) {
    const WString content = value.GetStringValue();
    if (content.empty()) {
      text += kEmptyText;
    } else {
      text += content;
    }
    text += kEnd;
  } else if (type == pvDouble) {
    AppendDouble(value.GetDoubleValue(), text);
  } else {
    AppendNumber(static_cast<std::int64_t>(value.GetInt64Value()), text);
  }
}

WString StubMessageText(const TStubMessage& message) {
  std::int64_t room = 2 * kLongestNumber;
  for (const CPolyValue& value : message.values) room += RoomFor(value);
  WString text;
  if (room <= INT_MAX) text.GetBufferAsCString(static_cast<int>(room));
  AppendNumber(message.command, text);
  AppendNumber(static_cast<std::int64_t>(message.values.size()), text);
  for (const CPolyValue& value : message.values) WritePolyValue(value, text);
  return text;
}

bool ReadPolyValue(const WString& text, int type, CPolyValue& value) {
  switch (type) {
    case pvBool:
      value = _wtoi(text.c_str()) != 0;
      return true;
    case pvInt32:
      value = _wtoi(text.c_str());
      return true;
    case pvDouble:
      value = _wtof(text.c_str());
      return true;
    case pvString:
      value = text == kEmptyText ? WString() : text;
      return true;
    case pvInt64:
      value = static_cast<std::uint64_t>(std::int64_t{_wtoi(text.c_str())});
      return true;
    case pvPointer:
      value = reinterpret_cast<void*>(static_cast<std::intptr_t>(_wtoi(text.c_str())));
      return true;
    default:
      return false;
  }
}

std::vector<TStubMessage> ReadStubMessages(const void* bytes, std::size_t size) {
  // Bytes may stand at an odd address. As terminated text ends, so do they at a 0.
  const std::size_t count = size / sizeof(WChar);
  std::vector<WChar> units(count + 1, 0);
  if (count > 0) std::memcpy(units.data(), bytes, count * sizeof(WChar));
  std::basic_string_view<WChar> rest(units.data());
  Reader reader;
  while (!rest.empty()) {
    // Empty fields vanish.
    const std::size_t length = std::min(rest.find(kEnd), rest.size());
    if (length > 0) reader.Take(TextOf(rest.data(), static_cast<int>(length)));
    rest.remove_prefix(std::min(length + 1, rest.size()));
  }
  return std::move(reader.Messages());
}

}  // namespace kelp::detail
