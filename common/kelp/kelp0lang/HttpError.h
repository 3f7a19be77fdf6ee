// The exceptions of the HTTP family, its table of errors, and its checked arithmetic.
//
//   try {
//     response.reset(client.SendGet(url, false));
//   } catch (const Dovek::httpclientexceptionW& error) {
//     Show(error.GetMessage(), error.ErrorId(), error.Win32Error());
//   }
//
// Every failure of the family is an httpclientexceptionW: an id of the table below, the Win32 error
// of the call behind it (0 where there is none) and a message. A breach of a contract, such as a
// null argument, has the id 0 and a message that names the operation and the argument. The narrow
// forms are for the calls of the platform that are made with narrow text.
//
// The family stands on nothing of the library but the unit of wide text and the words of compilers,
// so that a program can take its headers alone; its texts are plain arrays from malloc. Where
// <windows.h> makes a macro of GetMessage, the operation here bears the macro's name, in this
// header as in its caller.
#pragma once

#include <windows.h>

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <iterator>
#include <limits>
#include <memory>
#include <type_traits>

#include "kelptext/Compiler.h"
#include "kelptext/WideChar.h"

namespace Dovek {

// The ids that the family raises.
namespace HttpErrorId {
inline constexpr std::uint32_t kNotSpecified = 0;
inline constexpr std::uint32_t kUnexpected = 100;
inline constexpr std::uint32_t kIndexOutOfRange = 101;
inline constexpr std::uint32_t kOutOfMemory = 102;
inline constexpr std::uint32_t kInvalidUrl = 103;
inline constexpr std::uint32_t kPostNotStarted = 104;
inline constexpr std::uint32_t kFileTooShort = 105;
inline constexpr std::uint32_t kPostNotFinished = 106;
inline constexpr std::uint32_t kInvalidPort = 107;
inline constexpr std::uint32_t kStdException = 108;
inline constexpr std::uint32_t kInvalidEncodedUrl = 109;
inline constexpr std::uint32_t kInvalidUtf8 = 110;
inline constexpr std::uint32_t kArithmetic = 111;
inline constexpr std::uint32_t kOverflow = 112;
inline constexpr std::uint32_t kDivideByZero = 113;
inline constexpr std::uint32_t kFileExists = 114;
inline constexpr std::uint32_t kQueryInfo = 400;
inline constexpr std::uint32_t kReadFile = 401;
inline constexpr std::uint32_t kOpen = 402;
inline constexpr std::uint32_t kConnect = 403;
inline constexpr std::uint32_t kOpenRequest = 404;
inline constexpr std::uint32_t kAddHeaders = 405;
inline constexpr std::uint32_t kSendRequest = 406;
inline constexpr std::uint32_t kSendRequestEx = 407;
inline constexpr std::uint32_t kWriteFile = 408;
inline constexpr std::uint32_t kEndRequest = 409;
inline constexpr std::uint32_t kSetOption = 410;
inline constexpr std::uint32_t kToMultiByte = 600;
inline constexpr std::uint32_t kToWide = 601;
inline constexpr std::uint32_t kReadDisk = 602;
inline constexpr std::uint32_t kOpenDisk = 603;
inline constexpr std::uint32_t kSeekDisk = 604;
inline constexpr std::uint32_t kDiskSize = 605;
inline constexpr std::uint32_t kWriteDisk = 606;
inline constexpr std::uint32_t kUserDefined = 1000;  // and above
}  // namespace HttpErrorId

namespace detail {

// Text from malloc.
struct FreeMemory {
  void operator()(void* block) const { std::free(block); }
};
template <class C>
using MallocText = std::unique_ptr<C[], FreeMemory>;

template <class C>
constexpr std::size_t LengthOf(const C* text) {
  std::size_t length = 0;
  while (text[length] != 0) ++length;
  return length;
}

// Null for null, and where there is no memory.
template <class C>
MallocText<C> TryCopy(const C* text) noexcept {
  if (text == nullptr) return nullptr;
  const std::size_t bytes = (LengthOf(text) + 1) * sizeof(C);
  MallocText<C> copy(static_cast<C*>(std::malloc(bytes)));
  if (copy != nullptr) std::memcpy(copy.get(), text, bytes);
  return copy;
}

// A text in both widths.
struct ErrorText {
  const char* narrow;
  const WChar* wide;

  template <class C>
  const C* As() const {
    if constexpr (std::is_same_v<C, char>) {
      return narrow;
    } else {
      return wide;
    }
  }
};
#define DOVEK_TEXT(text) \
  { text, KTEXT(text) }

// The texts of a hundred of ids, from its first on.
inline constexpr ErrorText kGeneralErrors[] = {DOVEK_TEXT("Not specified")};
inline constexpr ErrorText kFamilyErrors[] = {
    DOVEK_TEXT("Unexpected error occurred."),
    DOVEK_TEXT("The index is out of range."),
    DOVEK_TEXT("Out of memory."),
    DOVEK_TEXT("The requested URL is not a valid URL."),
    DOVEK_TEXT("The post context is not started yet."),
    DOVEK_TEXT("Couldn't read expected bytes from a file."),
    DOVEK_TEXT("The post context has not been finished yet."),
    DOVEK_TEXT("The port number is not valid."),
    DOVEK_TEXT("std::exception occurred."),
    DOVEK_TEXT("The encoded URL is not valid."),
    DOVEK_TEXT("The UTF8 string contains an invalid character."),
    DOVEK_TEXT("An unexpected arithmetic error has been occurred."),
    DOVEK_TEXT("An arithmetic overflow error has been occurred."),
    DOVEK_TEXT("An interger divide by zero exception has been occurred."),
    DOVEK_TEXT("The file (%ls) aleady exists."),
};
inline constexpr ErrorText kEmptyErrors[] = {DOVEK_TEXT("")};
inline constexpr ErrorText kInternetErrors[] = {
    DOVEK_TEXT("::HttpQueryInfo failed."),     DOVEK_TEXT("::InternetReadFile failed."),
    DOVEK_TEXT("::InternetOpen failed."),      DOVEK_TEXT("::InternetConnect failed."),
    DOVEK_TEXT("::HttpOpenRequest failed."),   DOVEK_TEXT("::HttpAddRequestHeaders failed."),
    DOVEK_TEXT("::HttpSendRequest failed."),   DOVEK_TEXT("::HttpSendRequestEx failed."),
    DOVEK_TEXT("::InternetWriteFile failed."), DOVEK_TEXT("::HttpEndRequest failed."),
    DOVEK_TEXT("::InternetSetOption failed."),
};
inline constexpr ErrorText kSystemErrors[] = {
    DOVEK_TEXT("::WideCharToMultiByte failed."),
    DOVEK_TEXT("::MultiByteToWideChar failed."),
    DOVEK_TEXT("::ReadFile failed."),
    DOVEK_TEXT("OpenFile (::CreateFile) failed (\"%ls\")."),
    DOVEK_TEXT("::SetFilePointer failed."),
    DOVEK_TEXT("::GetFileSize failed (\"%ls\")."),
    DOVEK_TEXT("::WriteFile failed (\"%ls\")."),
};
inline constexpr ErrorText kUserError = DOVEK_TEXT("user-defined error message");

inline constexpr ErrorText kNoMessage = DOVEK_TEXT("NULL");

// What a contract error says of an argument.
inline constexpr ErrorText kColon = DOVEK_TEXT(": ");
inline constexpr ErrorText kCanNotBeNull = DOVEK_TEXT(" can not be NULL.");
inline constexpr ErrorText kCanNotBeEmpty = DOVEK_TEXT(" can not be an empty string.");
inline constexpr ErrorText kCanNotBeZero = DOVEK_TEXT(" can not be zero.");
inline constexpr ErrorText kCanNotHaveLineEnd = DOVEK_TEXT(" can not contain CR or LF.");
#undef DOVEK_TEXT

struct ErrorHundred {
  const ErrorText* texts;
  std::size_t count;
};
inline constexpr ErrorHundred kErrorHundreds[] = {
    {kGeneralErrors, std::size(kGeneralErrors)},   {kFamilyErrors, std::size(kFamilyErrors)},
    {kEmptyErrors, std::size(kEmptyErrors)},       {nullptr, 0},
    {kInternetErrors, std::size(kInternetErrors)}, {nullptr, 0},
    {kSystemErrors, std::size(kSystemErrors)},
};

// The text of an id; that of id 0 where the id isn't in the table.
template <class C>
constexpr const C* ErrorTextOf(std::uint32_t errorId) {
  if (errorId >= HttpErrorId::kUserDefined) return kUserError.As<C>();
  const std::uint32_t hundred = errorId / 100;
  const std::uint32_t row = errorId % 100;
  const bool known = hundred < std::size(kErrorHundreds) && row < kErrorHundreds[hundred].count;
  return (known ? kErrorHundreds[hundred].texts[row] : kGeneralErrors[0]).As<C>();
}

}  // namespace detail

// An exception with a message of its own.
template <class C>
class errmsg_exceptionT : public std::exception {
 public:
  // Null is no message.
  explicit errmsg_exceptionT(const C* message = nullptr) noexcept
      : m_message(detail::TryCopy(message)) {}
  errmsg_exceptionT(const errmsg_exceptionT& other) noexcept
      : std::exception(other), m_message(detail::TryCopy(other.m_message.get())) {}
  errmsg_exceptionT& operator=(const errmsg_exceptionT& other) noexcept {
    if (this != &other) m_message = detail::TryCopy(other.m_message.get());
    return *this;
  }
  ~errmsg_exceptionT() override = default;

  // The message; of the wide form, which a narrow text can't tell, the name of the class.
  const char* what() const noexcept override {
    if constexpr (std::is_same_v<C, char>) {
      return GetMessage();
    } else {
      return "errmsg_exceptionW";
    }
  }
  // "NULL" where there is none.
  virtual const C* GetMessage() const noexcept {
    return m_message == nullptr ? detail::kNoMessage.As<C>() : m_message.get();
  }
  // Keeps a copy; without the memory for it there is no message.
  virtual void SetMessage(const C* message) noexcept { m_message = detail::TryCopy(message); }

 private:
  detail::MallocText<C> m_message;
};

using errmsg_exceptionA = errmsg_exceptionT<char>;
using errmsg_exceptionW = errmsg_exceptionT<WChar>;

// The failure of an operation of the family.
template <class C>
class httpclientexceptionT : public errmsg_exceptionT<C> {
 public:
  explicit httpclientexceptionT(const C* message, std::uint32_t errorId = 0,
                                std::uint32_t win32Error = 0) noexcept
      : errmsg_exceptionT<C>(message), m_errorId(errorId), m_win32Error(win32Error) {}
  const char* what() const noexcept override {
    if constexpr (std::is_same_v<C, char>) {
      return errmsg_exceptionT<C>::what();
    } else {
      return "httpclientexceptionW";
    }
  }
  std::uint32_t ErrorId() const noexcept { return m_errorId; }
  std::uint32_t Win32Error() const noexcept { return m_win32Error; }

 private:
  std::uint32_t m_errorId;
  std::uint32_t m_win32Error;
};

using httpclientexceptionA = httpclientexceptionT<char>;
using httpclientexceptionW = httpclientexceptionT<WChar>;

// Arithmetic that has no result. It doesn't leave the family: each public operation makes an
// httpclientexceptionW of it.
class SafeIntException {
 public:
  explicit SafeIntException(std::uint32_t code) : m_code(code) {}
  std::uint32_t Code() const { return m_code; }
  std::uint32_t ErrorId() const {
    constexpr std::uint32_t kIntDivideByZero = 0xC0000094;
    if (m_code == kIntDivideByZero) return HttpErrorId::kDivideByZero;
    return m_code == kArithmeticOverflow ? HttpErrorId::kOverflow : HttpErrorId::kArithmetic;
  }

  static constexpr std::uint32_t kArithmeticOverflow = 534;

 private:
  std::uint32_t m_code;
};

namespace detail {

template <class T>
T CheckedAdd(T a, std::type_identity_t<T> b) {
  static_assert(std::is_unsigned_v<T>);
  T sum;
  if (kelp::detail::AddOverflows(a, b, &sum)) {
    throw SafeIntException(SafeIntException::kArithmeticOverflow);
  }
  return sum;
}

template <class T>
T CheckedMultiply(T a, std::type_identity_t<T> b) {
  static_assert(std::is_unsigned_v<T>);
  T product;
  if (kelp::detail::MultiplyOverflows(a, b, &product)) {
    throw SafeIntException(SafeIntException::kArithmeticOverflow);
  }
  return product;
}

template <class T>
T CheckedDecrement(T value) {
  if (value == 0) throw SafeIntException(SafeIntException::kArithmeticOverflow);
  return value - 1;
}

// A length as another unsigned type, or int, where it fits.
template <class Narrow>
Narrow CheckedCast(std::uint64_t value) {
  if (value > static_cast<std::uint64_t>(std::numeric_limits<Narrow>::max())) {
    throw SafeIntException(SafeIntException::kArithmeticOverflow);
  }
  return static_cast<Narrow>(value);
}

}  // namespace detail
}  // namespace Dovek
