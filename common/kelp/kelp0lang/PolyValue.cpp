#include "kelp0lang/PolyValue.h"

#include <tchar.h>
#include <windows.h>
// Behind the types that it needs.
#include <oleauto.h>

#include <algorithm>
#include <bit>
#include <cassert>
#include <chrono>
#include <climits>
#include <cmath>
#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <new>
#include <type_traits>

#include "kelp0lang/FileStream.h"

namespace kelp {
namespace {

// 0 for what can't be an element.
constexpr unsigned ElementSizeOf(unsigned type) noexcept {
  switch (type) {
    case pvBool:
      return 1;
    case pvInt32:
      return 4;
    case pvDouble:
    case pvDate:
    case pvInt64:
    case pvPointer:
      return 8;
    case pvString:
      return sizeof(WString);
    default:
      return 0;
  }
}
static_assert(sizeof(void*) == 8 && sizeof(bool) == 1);

// Toward zero; what doesn't fit is INT_MIN, as the processor's own instruction gives it.
std::int32_t Truncate(double value) noexcept {
  const bool fits = value > -2147483649.0 && value < 2147483648.0;
  return fits ? static_cast<std::int32_t>(value) : INT_MIN;
}

std::int32_t LowBits(std::uint64_t value) noexcept {
  return static_cast<std::int32_t>(static_cast<std::uint32_t>(value));
}

std::uint64_t ExtendSign(std::int32_t value) noexcept {
  return static_cast<std::uint64_t>(std::int64_t{value});
}

WString LocalTimeText(std::int64_t date) {
  const __time64_t seconds = date;
  const std::tm* const local = _localtime64(&seconds);
  const WChar* const text = local == nullptr ? nullptr : _wasctime(local);
  return text == nullptr ? WString() : WString(text).TrimRight(WChar{'\n'});
}

std::int64_t DateOfText(const WString& text) {
  double date = 0;
  std::tm fields = {};
  // Older headers of the SDK take a text that isn't const; it is only read.
  if (VarDateFromStr(const_cast<WChar*>(text.c_str()), 0, 0, &date) < 0) return 0;
  if (CPolyValue::ConvertOleData2tm(date, fields) == 0) return 0;
  fields.tm_hour = 12;
  fields.tm_min = 0;
  fields.tm_sec = 0;
  fields.tm_mon -= 1;
  fields.tm_year -= 1900;
  fields.tm_isdst = -1;  // whatever is in force on that day
  return _mktime64(&fields);
}

}  // namespace

// The block of elements has room for a power of two of them, so that appending one after the other
// moves each a few times only. Elements are moved as bytes: a WString is a pointer without a place
// of its own.
struct CPolyValue::TArray {
  TArray(unsigned type, unsigned number)
      : elementType(type), elementSize(ElementSizeOf(type)), count(number) {
    if (BytesInUse() == 0) return;
    data = static_cast<unsigned char*>(std::calloc(RoomFor(count), elementSize));
    if (data == nullptr) throw std::bad_alloc();
    if (HoldsTexts()) std::uninitialized_default_construct_n(Texts(), count);
  }
  TArray(const TArray& other) : TArray(other.elementType, other.count) {
    if (HoldsTexts()) {
      std::copy_n(other.Texts(), count, Texts());
    } else if (data != nullptr) {
      std::memcpy(data, other.data, BytesInUse());
    }
  }
  TArray& operator=(const TArray&) = delete;
  ~TArray() {
    if (HoldsTexts()) std::destroy_n(Texts(), count);
    std::free(data);
  }

  bool HoldsTexts() const noexcept { return elementType == pvString; }
  bool IsWithoutTexts() const noexcept { return !HoldsTexts() || count == 0; }
  std::size_t BytesInUse() const noexcept { return std::size_t{count} * elementSize; }

  // The place of an element; index and kind are the caller's contract.
  template <class T>
  T& At(unsigned index) const {
    assert(index < count && "index outside the array");
    assert((sizeof(T) == elementSize) && "elements of another kind");
    assert((HoldsTexts() == std::is_same_v<T, WString>)&&"elements of another kind");
    return reinterpret_cast<T*>(data)[index];
  }

  // One more element at the end, a text empty, others without a defined value.
  void Grow() {
    if (count == UINT_MAX) throw std::bad_alloc();
    if (count == 0 || std::has_single_bit(count)) {
      void* const larger = std::realloc(data, RoomFor(std::size_t{count} + 1) * elementSize);
      if (larger == nullptr) throw std::bad_alloc();
      data = static_cast<unsigned char*>(larger);
    }
    if (HoldsTexts()) new (Texts() + count) WString;
    ++count;
  }

  bool operator==(const TArray& other) const noexcept {
    if (count != other.count || elementType != other.elementType) return false;
    switch (elementType) {
      case pvString:
        return std::equal(Texts(), Texts() + count, other.Texts(),
                          [](const WString& a, const WString& b) { return SameText(a, b); });
      case pvDouble:
        return std::equal(Doubles(), Doubles() + count, other.Doubles());
      default:
        return BytesInUse() == 0 || std::memcmp(data, other.data, BytesInUse()) == 0;
    }
  }

  static bool SameText(const WString& a, const WString& b) noexcept {
    return a.c_str() == b.c_str() || a.Compare(b.c_str()) == 0;
  }

  unsigned elementType;
  unsigned elementSize;
  unsigned count;
  unsigned char* data = nullptr;

 private:
  static std::size_t RoomFor(std::size_t number) noexcept { return std::bit_ceil(number); }
  WString* Texts() const noexcept { return reinterpret_cast<WString*>(data); }
  const double* Doubles() const noexcept { return reinterpret_cast<const double*>(data); }
};

CPolyValue::CPolyValue(const WString& value) : m_type(pvString) {
  m_value.text = new WString(value);
}

CPolyValue::CPolyValue(const WChar* value) : m_type(pvString) {
  m_value.text = new WString(value);
}

void CPolyValue::CloneBlock() {
  if (m_type == pvString) {
    m_value.text = new WString(*m_value.text);
  } else {
    m_value.array = new TArray(*m_value.array);
  }
}

void CPolyValue::FreeBlock() noexcept {
  if (m_type == pvString) {
    delete m_value.text;
  } else {
    delete m_value.array;
  }
}

void CPolyValue::SetDateValue(std::int64_t value) noexcept {
  Clear();
  m_type = pvDate;
  m_value.date = value;
}

void CPolyValue::SetToEmpty() noexcept {
  Clear();
  m_type = pvEmpty;
  m_value = {};
}

bool CPolyValue::EqualBlocks(const CPolyValue& other) const noexcept {
  return m_type == pvString ? TArray::SameText(*m_value.text, *other.m_value.text)
                            : *m_value.array == *other.m_value.array;
}

// What the data begin with; bytes beyond their end count as 0.
template <class T>
T CPolyValue::FirstOfArray() const noexcept {
  T first = {};
  const std::size_t size = std::min(sizeof first, m_value.array->BytesInUse());
  if (size != 0) std::memcpy(&first, m_value.array->data, size);
  return first;
}

bool CPolyValue::GetBoolValue() const {
  switch (m_type) {
    case pvBool:
      return m_value.boolean;
    case pvInt32:
      return m_value.int32 != 0;
    case pvDouble:
      return m_value.real != 0.0;
    case pvString:
      return !m_value.text->empty();
    case pvArray:
      return FirstOfArray<unsigned char>() != 0;
    case pvDate:
    case pvInt64:
    case pvPointer:
      return m_value.int64 != 0;
    default:
      return false;
  }
}

std::int32_t CPolyValue::GetInt32Value() const {
  switch (m_type) {
    case pvBool:
      return m_value.boolean ? 1 : 0;
    case pvInt32:
      return m_value.int32;
    case pvDouble:
      return Truncate(m_value.real);
    case pvString:
      return _wtoi(m_value.text->c_str());
    case pvArray:
      return FirstOfArray<std::int32_t>();
    case pvDate:
    case pvInt64:
    case pvPointer:
      return LowBits(m_value.int64);
    default:
      return 0;
  }
}

std::uint64_t CPolyValue::GetInt64Value() const {
  switch (m_type) {
    case pvArray:
      return FirstOfArray<std::uint64_t>();
    case pvInt64:
    case pvPointer:
      return m_value.int64;
    default:
      return ExtendSign(GetInt32Value());
  }
}

double CPolyValue::GetDoubleValue() const {
  switch (m_type) {
    case pvDouble:
      return m_value.real;
    case pvString:
      return _wtof(m_value.text->c_str());
    case pvArray:
      return FirstOfArray<double>();
    case pvDate:
      return static_cast<double>(m_value.date);
    case pvInt64:
      return static_cast<double>(m_value.int64);
    case pvPointer:
      return *static_cast<const double*>(m_value.pointer);
    default:
      return GetInt32Value();
  }
}

std::int64_t CPolyValue::GetDateValue() const {
  switch (m_type) {
    case pvString:
      return DateOfText(*m_value.text);
    case pvDate:
      return m_value.date;
    default:
      return static_cast<std::int64_t>(GetInt64Value());
  }
}

void* CPolyValue::GetPointerValue() const {
  switch (m_type) {
    case pvBool:
    case pvInt32:
    case pvDouble:
    case pvDate:
    case pvInt64:
      return const_cast<TValue*>(&m_value);
    case pvString:
      return m_value.text;
    case pvArray:
      return FirstOfArray<void*>();
    case pvPointer:
      return m_value.pointer;
    default:
      return nullptr;
  }
}

WString CPolyValue::GetStringValue() const {
  switch (m_type) {
    case pvBool:
      return WString::ValueOf(m_value.boolean);
    case pvInt32:
      return WString::ValueOf(m_value.int32);
    case pvDouble:
      return WString::ValueOf(m_value.real, 6);
    case pvString:
      return *m_value.text;
    case pvArray:
      return m_value.array->IsWithoutTexts() ? WString() : GetStringValue(0);
    case pvDate:
      return LocalTimeText(m_value.date);
    case pvInt64:
    case pvPointer:
      return WString::ValueOf(m_value.int64);
    default:
      return WString();
  }
}

template <class T>
T CPolyValue::ElementAt(unsigned index) const {
  return m_value.array->At<T>(index);
}

bool CPolyValue::GetBoolValue(unsigned index) const {
  return m_type == pvArray ? ElementAt<bool>(index) : GetBoolValue();
}
std::int32_t CPolyValue::GetInt32Value(unsigned index) const {
  return m_type == pvArray ? ElementAt<std::int32_t>(index) : GetInt32Value();
}
std::uint64_t CPolyValue::GetInt64Value(unsigned index) const {
  return m_type == pvArray ? ElementAt<std::uint64_t>(index) : GetInt64Value();
}
double CPolyValue::GetDoubleValue(unsigned index) const {
  return m_type == pvArray ? ElementAt<double>(index) : GetDoubleValue();
}
std::int64_t CPolyValue::GetDateValue(unsigned index) const {
  return m_type == pvArray ? ElementAt<std::int64_t>(index) : GetDateValue();
}
void* CPolyValue::GetPointerValue(unsigned index) const {
  return m_type == pvArray ? ElementAt<void*>(index) : GetPointerValue();
}
WString CPolyValue::GetStringValue(unsigned index) const {
  return m_type == pvArray ? ElementAt<WString>(index) : GetStringValue();
}

void CPolyValue::CreateArray(unsigned elementType, unsigned count) {
  CPolyValue fresh;
  fresh.m_value.array = new TArray(elementType, count);
  fresh.m_type = pvArray;
  *this = std::move(fresh);
}

unsigned CPolyValue::GetArrayElementType() const noexcept {
  return m_type == pvArray ? m_value.array->elementType : static_cast<unsigned>(m_type);
}

unsigned CPolyValue::GetNoArrayElements() const noexcept {
  return m_type == pvArray ? m_value.array->count : 1;
}

template <class T>
void CPolyValue::StoreAt(unsigned index, T value) {
  if (m_type == pvArray) {
    m_value.array->At<T>(index) = value;
  } else if constexpr (std::is_same_v<T, std::int64_t>) {
    SetDateValue(value);
  } else {
    *this = value;
  }
}

void CPolyValue::SetBoolValue(unsigned index, bool value) {
  StoreAt(index, value);
}
void CPolyValue::SetInt32Value(unsigned index, std::int32_t value) {
  StoreAt(index, value);
}
void CPolyValue::SetInt64Value(unsigned index, std::uint64_t value) {
  StoreAt(index, value);
}
void CPolyValue::SetDoubleValue(unsigned index, double value) {
  StoreAt(index, value);
}
void CPolyValue::SetDateValue(unsigned index, std::int64_t value) {
  StoreAt(index, value);
}
void CPolyValue::SetPointerValue(unsigned index, void* value) {
  StoreAt(index, value);
}
void CPolyValue::SetStringValue(unsigned index, const WString& value) {
  StoreAt(index, value);
}

template <class T>
void CPolyValue::Append(T value) {
  if (m_type != pvArray || m_value.array->elementSize == 0) return;
  m_value.array->Grow();
  StoreAt(m_value.array->count - 1, value);
}

void CPolyValue::AppendBoolValue(bool value) {
  Append(value);
}
void CPolyValue::AppendInt32Value(std::int32_t value) {
  Append(value);
}
void CPolyValue::AppendInt64Value(std::uint64_t value) {
  Append(value);
}
void CPolyValue::AppendDoubleValue(double value) {
  Append(value);
}
void CPolyValue::AppendDateValue(std::int64_t value) {
  Append(value);
}
void CPolyValue::AppendPointerValue(void* value) {
  Append(value);
}
void CPolyValue::AppendStringValue(const WString& value) {
  Append(value);
}

int CPolyValue::ConvertOleData2tm(double date, std::tm& fields) {
  constexpr double kFirst = -657434.0, kLast = 2958465.0, kHalfSecond = 5.787037037037037e-6;
  constexpr std::chrono::sys_days kDayZero = std::chrono::year(1899) / 12 / 30;
  constexpr double kSecondsPerDay = 86400.0;
  // In this form NaN is refused too.
  if (!(date >= kFirst && date <= kLast)) return 0;
  // Before day zero the fraction still counts forward from midnight.
  date += date > 0 ? kHalfSecond : -kHalfSecond;
  double whole;
  const double fraction = std::modf(std::abs(date), &whole);
  const int dayNumber = static_cast<int>(date < 0 ? -whole : whole);
  const int seconds = static_cast<int>(fraction * kSecondsPerDay);

  const std::chrono::sys_days day = kDayZero + std::chrono::days(dayNumber);
  const std::chrono::year_month_day calendar = day;
  fields.tm_sec = seconds % 60;
  fields.tm_min = seconds / 60 % 60;
  fields.tm_hour = seconds / 3600;
  fields.tm_mday = static_cast<int>(static_cast<unsigned>(calendar.day()));
  fields.tm_mon = static_cast<int>(static_cast<unsigned>(calendar.month()));
  fields.tm_year = static_cast<int>(calendar.year());
  fields.tm_wday = static_cast<int>(std::chrono::weekday(day).c_encoding()) + 1;
  fields.tm_yday =
      static_cast<int>((day - std::chrono::sys_days(calendar.year() / 1 / 1)).count()) + 1;
  return 1;
}

namespace {

constexpr unsigned kShortDates = 1;
constexpr std::uint32_t kNoDate32 = 0xFFFFFFFF;

std::uint32_t ToDate32(std::int64_t date) noexcept {
  const bool isNone = date == kNoDate || LowBits(static_cast<std::uint64_t>(date)) < 0;
  return isNone ? kNoDate32 : static_cast<std::uint32_t>(date);
}

std::int64_t FromDate32(std::uint32_t date) noexcept {
  return date == kNoDate32 ? kNoDate : std::int64_t{date};
}

// A value alone, or one element of an array of that kind.
void SaveContent(ofpstream& file, const CPolyValue& value, unsigned type, unsigned index) {
  switch (type) {
    case pvBool:
      file << value.GetBoolValue(index);
      break;
    case pvInt32:
      file << value.GetInt32Value(index);
      break;
    case pvDouble:
      file << value.GetDoubleValue(index);
      break;
    case pvString:
      file << value.GetStringValue(index);
      break;
    case pvDate32:
      file << ToDate32(value.GetDateValue(index));
      break;
    case pvDate:
      file << value.GetDateValue(index);
      break;
    case pvInt64:
    case pvPointer:
      file << static_cast<std::int64_t>(value.GetInt64Value(index));
      break;
    default:
      break;
  }
}

void SaveArray(ofpstream& file, const CPolyValue& value) {
  const unsigned type = value.GetArrayElementType();
  const unsigned count = value.GetNoArrayElements();
  file << type << count;
  if (ElementSizeOf(type) == 0) return;
  for (unsigned i = 0; i < count; ++i) SaveContent(file, value, type, i);
}

// What the stream can't give leaves 0.
template <class T>
T Read(ifpstream& file) {
  T value = {};
  file >> value;
  return value;
}

// A value of a kind that has no content on file becomes empty.
void LoadContent(ifpstream& file, unsigned type, CPolyValue& value) {
  switch (type) {
    case pvBool:
      value = Read<int>(file) == 1;
      break;
    case pvInt32:
      value = Read<int>(file);
      break;
    case pvDouble:
      value = Read<double>(file);
      break;
    case pvString:
      value = Read<WString>(file);
      break;
    case pvDate32:
      value.SetDateValue(FromDate32(Read<unsigned>(file)));
      break;
    case pvDate:
      value.SetDateValue(Read<std::int64_t>(file));
      break;
    case pvInt64:
      value = static_cast<std::uint64_t>(Read<std::int64_t>(file));
      break;
    case pvPointer:
      value = reinterpret_cast<void*>(Read<std::int64_t>(file));
      break;
    default:
      value.SetToEmpty();
  }
}

void AppendElement(const CPolyValue& element, CPolyValue& array) {
  switch (element.GetType()) {
    case pvBool:
      array.AppendBoolValue(element.GetBoolValue());
      break;
    case pvInt32:
      array.AppendInt32Value(element.GetInt32Value());
      break;
    case pvDouble:
      array.AppendDoubleValue(element.GetDoubleValue());
      break;
    case pvString:
      array.AppendStringValue(element.GetStringValue());
      break;
    case pvDate:
      array.AppendDateValue(element.GetDateValue());
      break;
    case pvInt64:
      array.AppendInt64Value(element.GetInt64Value());
      break;
    case pvPointer:
      array.AppendPointerValue(element.GetPointerValue());
      break;
    default:
      break;
  }
}

// Element by element, since the count may be anything.
void LoadArray(ifpstream& file, CPolyValue& value) {
  const unsigned storedType = Read<unsigned>(file);
  const unsigned type = storedType == pvDate32 ? unsigned{pvDate} : storedType;
  const int count = std::max(Read<int>(file), 0);
  if (ElementSizeOf(type) == 0) {
    value.CreateArray(type, static_cast<unsigned>(count));
    return;
  }
  value.CreateArray(type, 0);
  CPolyValue element;
  for (int i = 0; i < count; ++i) {
    LoadContent(file, storedType, element);
    if (file.GetState() != 0) return;
    AppendElement(element, value);
  }
}

}  // namespace

void SaveToFile(ofpstream& file, const CPolyValue& value, unsigned flags) {
  auto type = static_cast<unsigned>(value.GetType());
  if (type == pvDate && (flags & kShortDates) != 0) type = pvDate32;
  file << type;
  if (type == pvArray) {
    SaveArray(file, value);
  } else {
    SaveContent(file, value, type, 0);
  }
}

void LoadFromFile(ifpstream& file, CPolyValue& value) {
  const unsigned type = Read<unsigned>(file);
  if (type == pvArray) {
    LoadArray(file, value);
  } else {
    LoadContent(file, type, value);
  }
}

}  // namespace kelp
