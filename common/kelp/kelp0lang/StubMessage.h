// The messages between a program and its elevated helper, and their text on the pipe.
//
//   TStubMessage message;
//   message.command = stubInstallService;
//   message.values = {kelp::WString(KTEXT("fieldwatch")), true};
//
// On the pipe a message is text in 16-bit units, "<command>;<count>;" and for each value
// "<type>;<text>;", without a terminator. The types are those of CPolyValue:
//
//   1  boolean, "0" or "1"       3  double with six decimals, decimal point of the process's locale
//   2  int                       4  text as it stands; empty text is "EMPTY_STRING"
//   8  64-bit number, 9 pointer: as signed numbers; 32 bits of them are read back
//
// A text on the pipe can't hold a semicolon or a 0, and "EMPTY_STRING" arrives empty. Values of
// other types (none, array, date) are counted but write nothing, so that a message with one is
// never complete on the other side.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "kelp0lang/Export.h"
#include "kelp0lang/PolyValue.h"
#include "kelp0lang/String.h"

// What a message asks or reports. Other numbers are between a program and its helper.
enum enumStubCommand : std::int32_t {
  stubResult = 1,          // from the helper: one int, 0 for success
  stubInstallService = 6,  // name, name to show, path of the program; whether to open its rights
};

struct TStubMessage {
  enumStubCommand command;
  std::vector<kelp::CPolyValue> values;
};

// Who hears what comes from the helper.
class IStubAdminListener {
 public:
  virtual void OnMessage(const TStubMessage& message) = 0;
  virtual void SendResponse(const TStubMessage& message) = 0;

 protected:
  ~IStubAdminListener() = default;
};

namespace kelp::detail {

// The text of a message; of one value, behind what is there.
KELP0LANG_API WString StubMessageText(const TStubMessage& message);
void WritePolyValue(const CPolyValue& value, WString& text);

// The messages that are whole in what one read gave; a half one at the end is dropped, and so is an
// odd byte. Whatever the bytes are, nothing is read outside them, and what is made of them takes
// room by their number, never by a number that they tell. A value of an unknown type counts, but is
// left out.
KELP0LANG_API std::vector<TStubMessage> ReadStubMessages(const void* bytes, std::size_t size);
// False for a type that isn't in the table above.
bool ReadPolyValue(const WString& text, int type, CPolyValue& value);

}  // namespace kelp::detail
