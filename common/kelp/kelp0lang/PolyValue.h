// CPolyValue: one small value that holds nothing, a boolean, a number, a text, a date, a pointer or
// an array of those of one kind.
//
//   kelp::CPolyValue value(2.5);
//   value.GetInt32Value();                  // 2
//   value.GetStringValue();                 // "2.500000"
//   value.CreateArray(kelp::pvString, 0);
//   value.AppendStringValue(KTEXT("P1"));   // one element
//
// Every getter answers for every kind by fixed rules, so a caller asks for the form that it wants
// and needs no test of the kind:
//
//   kind       bool            int32, int64        double            date
//   boolean    itself          0 or 1              0 or 1            0 or 1
//   number     not 0           itself, see below   itself            as int64
//   text       not empty       _wtoi               _wtof             see GetDateValue
//   date       not 0           low 32 bits         itself            itself
//   pointer    not null        low 32 bits, all    the double there  all
//   empty      false           0                   0                 0
//
// GetInt32Value cuts a double toward zero; what 32 bits don't hold, and NaN, gives -2147483648. Of
// a 64-bit number it gives the low 32 bits. GetInt64Value extends a result of 32 bits with its sign
// for all kinds but the 64-bit number and the pointer. _wtoi and _wtof follow the locale of the
// process and give 0 for text without a number.
//
// A plain getter on an array answers with the first bytes of its data, an array without data as an
// empty value. The indexed operations read and write an element as the kind that they name. Neither
// the index nor the kind of the elements is checked (debug builds assert): both are the caller's
// contract. On a value that isn't an array the index is ignored.
//
// A date is a C time, whole seconds since 1 January 1970 UTC; kNoDate stands for none.
//
// Threads: a value has no lock; distinct values may be used on distinct threads.
#pragma once

#include <cstdint>
#include <ctime>
#include <limits>
#include <utility>

#include "kelp0lang/Export.h"
#include "kelp0lang/String.h"

namespace kelp {

class ifpstream;
class ofpstream;

// What GetType gives; the numbers are those of the file. Elements of arrays are of these kinds too,
// other than pvEmpty and pvArray.
enum enumPolyValueType : std::int32_t {
  pvEmpty = 0,
  pvBool = 1,
  pvInt32 = 2,
  pvDouble = 3,
  pvString = 4,
  pvArray = 5,
  pvDate32 = 6,  // only in files: a date of 4 bytes, unsigned, 0xFFFFFFFF for none
  pvDate = 7,
  pvInt64 = 8,  // unsigned
  pvPointer = 9,
};

inline constexpr std::int64_t kNoDate = std::numeric_limits<std::int64_t>::max();

class KELP0LANG_API CPolyValue {
 public:
  CPolyValue() noexcept = default;
  CPolyValue(bool value) noexcept : m_type(pvBool) { m_value.boolean = value; }
  CPolyValue(int value) noexcept : m_type(pvInt32) { m_value.int32 = value; }
  CPolyValue(double value) noexcept : m_type(pvDouble) { m_value.real = value; }
  CPolyValue(std::uint64_t value) noexcept : m_type(pvInt64) { m_value.int64 = value; }
  // The pointer is never owned.
  CPolyValue(void* value) noexcept : m_type(pvPointer) { m_value.pointer = value; }
  // A copy of the text.
  CPolyValue(const WString& value);
  // Null gives the empty text.
  CPolyValue(const WChar* value);
  // Narrow text and pointers to const would silently become a boolean.
  CPolyValue(const void*) = delete;
  // Deep: an array is cloned with its elements.
  CPolyValue(const CPolyValue& other) : m_type(other.m_type), m_value(other.m_value) {
    if (OwnsBlock()) CloneBlock();
  }
  // The other value is empty afterwards.
  CPolyValue(CPolyValue&& other) noexcept
      : m_type(std::exchange(other.m_type, pvEmpty)), m_value(std::exchange(other.m_value, {})) {}
  ~CPolyValue() { Clear(); }

  // Each gives the value a new kind. The source may be a part of this very value.
  CPolyValue& operator=(const CPolyValue& other) {
    if (this != &other) *this = CPolyValue(other);
    return *this;
  }
  CPolyValue& operator=(CPolyValue&& other) noexcept {
    std::swap(m_type, other.m_type);
    std::swap(m_value, other.m_value);
    return *this;
  }
  CPolyValue& operator=(bool value) noexcept { return *this = CPolyValue(value); }
  CPolyValue& operator=(int value) noexcept { return *this = CPolyValue(value); }
  CPolyValue& operator=(double value) noexcept { return *this = CPolyValue(value); }
  CPolyValue& operator=(std::uint64_t value) noexcept { return *this = CPolyValue(value); }
  CPolyValue& operator=(void* value) noexcept { return *this = CPolyValue(value); }
  CPolyValue& operator=(const WString& value) { return *this = CPolyValue(value); }
  CPolyValue& operator=(const WChar* value) { return *this = CPolyValue(value); }
  CPolyValue& operator=(const void*) = delete;
  // A date, from a C time.
  void SetDateValue(std::int64_t value) noexcept;
  // Nothing, the kind pvEmpty.
  void SetToEmpty() noexcept;

  int GetType() const noexcept { return m_type; }
  bool IsEmpty() const noexcept { return m_type == pvEmpty; }
  // Values of different kinds differ, also a whole number and a double of the same size. A NaN
  // differs from everything. Texts are compared up to their terminators, arrays element by element.
  bool operator==(const CPolyValue& other) const noexcept {
    if (m_type != other.m_type) return false;
    if (OwnsBlock()) return EqualBlocks(other);
    // Without a branch, which values of changing kinds would make hard to predict.
    const bool sameBits = m_value.int64 == other.m_value.int64;
    const bool sameReal = m_value.real == other.m_value.real;
    return m_type == pvDouble ? sameReal : sameBits;
  }

  bool GetBoolValue() const;
  std::int32_t GetInt32Value() const;
  std::uint64_t GetInt64Value() const;
  double GetDoubleValue() const;
  // A text is read by VarDateFromStr in the locale of the process ("30/12/1999", "30 Dec 1999",
  // "1999-12-30") and gives local noon of its day. One that can't be read gives 0, one outside the
  // years 1970 to 3000 gives -1.
  std::int64_t GetDateValue() const;
  // The pointer. Of a text the address of its WString; of a boolean, number or date the address
  // within this value, which is good for as long as the value keeps its kind.
  void* GetPointerValue() const;
  // "true" or "false"; a number in decimal, a double with six decimals; a date as local time, as in
  // "Fri Dec 31 12:00:00 1999" (empty before 1970 and after 3000); a pointer as an unsigned number.
  // Of an array of texts the first one.
  WString GetStringValue() const;

  bool GetBoolValue(unsigned index) const;
  std::int32_t GetInt32Value(unsigned index) const;
  std::uint64_t GetInt64Value(unsigned index) const;
  double GetDoubleValue(unsigned index) const;
  std::int64_t GetDateValue(unsigned index) const;
  void* GetPointerValue(unsigned index) const;
  WString GetStringValue(unsigned index) const;

  // Makes this value an array. Texts are empty and other elements 0. An element type that is none
  // gives elements without size, which can be counted only.
  void CreateArray(unsigned elementType, unsigned count);
  // Of a value that isn't an array its own kind, and 1.
  unsigned GetArrayElementType() const noexcept;
  unsigned GetNoArrayElements() const noexcept;

  // Where this isn't an array they assign, and change the kind.
  void SetBoolValue(unsigned index, bool value);
  void SetInt32Value(unsigned index, std::int32_t value);
  void SetInt64Value(unsigned index, std::uint64_t value);
  void SetDoubleValue(unsigned index, double value);
  void SetDateValue(unsigned index, std::int64_t value);
  void SetPointerValue(unsigned index, void* value);
  void SetStringValue(unsigned index, const WString& value);

  // Where this isn't an array nothing happens.
  void AppendBoolValue(bool value);
  void AppendInt32Value(std::int32_t value);
  void AppendInt64Value(std::uint64_t value);
  void AppendDoubleValue(double value);
  void AppendDateValue(std::int64_t value);
  void AppendPointerValue(void* value);
  void AppendStringValue(const WString& value);

  // Breaks an OLE automation date down: days since 30 December 1899, the fraction is the time of
  // day, rounded to the second. The fields are as people write them: month and weekday (Sunday)
  // from 1, the day of the year from 1, the full year. tm_isdst stays. Gives 1, or 0 and no fields
  // for a date below -657434 (1 January 100) or above 2958465 (31 December 9999).
  static int ConvertOleData2tm(double date, std::tm& fields);

 protected:
  // Frees a text or an array and leaves kind and value as they are: a step on the way to a new
  // value.
  void Clear() noexcept {
    if (OwnsBlock()) FreeBlock();
  }

 private:
  struct TArray;
  // Bytes that a kind doesn't use are 0, so that values can be compared whole.
  union TValue {
    std::uint64_t int64;
    bool boolean;
    std::int32_t int32;
    double real;
    WString* text;
    TArray* array;
    std::int64_t date;
    void* pointer;
  };

  bool EqualBlocks(const CPolyValue& other) const noexcept;
  bool OwnsBlock() const noexcept { return m_type == pvString || m_type == pvArray; }
  void CloneBlock();
  void FreeBlock() noexcept;
  template <class T>
  T FirstOfArray() const noexcept;
  template <class T>
  T ElementAt(unsigned index) const;
  template <class T>
  void StoreAt(unsigned index, T value);
  template <class T>
  void Append(T value);

  std::int32_t m_type = pvEmpty;
  TValue m_value = {};
};

// A value in a binary stream: its kind in 4 bytes, then its content. Bit 0 of flags stores a date
// in 4 bytes (pvDate32); one that 31 bits don't hold then becomes kNoDate. Dates in an array always
// take 8 bytes. A pointer is stored as a number, which means nothing to another process.
KELP0LANG_API void SaveToFile(ofpstream& file, const CPolyValue& value, unsigned flags);
// A kind that is none gives the empty value and reads no further. The stream's state tells whether
// all could be read; where it failed, an array holds the elements that came whole. No count in the
// file is trusted: memory grows only with what the file really holds.
KELP0LANG_API void LoadFromFile(ifpstream& file, CPolyValue& value);

}  // namespace kelp
