#include "kelp0lang/StubMessage.h"

#include <string>

#include "tests/TestText.h"

using kelp::CPolyValue;
using kelp::WString;
using kelp::detail::ReadStubMessages;
using kelp::detail::StubMessageText;

namespace {

using Messages = std::vector<TStubMessage>;

Messages Read(const WString& text) {
  return ReadStubMessages(text.c_str(), text.sizeInBytes());
}

// Kinds and contents, for comparing and for a failed test.
std::string Shown(const Messages& messages) {
  std::string shown;
  for (const TStubMessage& message : messages) {
    shown += std::to_string(message.command) + '(';
    for (const CPolyValue& value : message.values) {
      shown +=
          std::to_string(value.GetType()) + ':' + value.GetStringValue().ToUtf8().c_str() + ' ';
    }
    shown += ')';
  }
  return shown;
}

CPolyValue Array() {
  CPolyValue array;
  array.CreateArray(kelp::pvInt32, 1);
  return array;
}

TEST(StubMessage, EveryKindIsWrittenAndReadBack) {
  const struct {
    TStubMessage message;
    const WChar* text;
    const char* read;
  } cases[] = {
      {{enumStubCommand{3}, {}}, KTEXT("3;0;"), "3()"},
      {{stubInstallService, {KTEXT("a"), KTEXT("b"), KTEXT(""), true}},
       KTEXT("6;4;4;a;4;b;4;EMPTY_STRING;1;1;"),
       "6(4:a 4:b 4: 1:true )"},
      {{stubResult, {false, -2147483647 - 1}},
       KTEXT("1;2;1;0;2;-2147483648;"),
       "1(1:false 2:-2147483648 )"},
      {{enumStubCommand{-7}, {1.5, -0.0000004, 1e22}},
       KTEXT("-7;3;3;1.500000;3;-0.000000;3;10000000000000000000000.000000;"),
       "-7(3:1.500000 3:-0.000000 3:10000000000000000000000.000000 )"},
      {{enumStubCommand{2}, {std::uint64_t{7}, ~std::uint64_t{0}, reinterpret_cast<void*>(9)}},
       KTEXT("2;3;8;7;8;-1;9;9;"),
       "2(8:7 8:18446744073709551615 9:9 )"},
      {{enumStubCommand{2}, {KTEXT("EMPTY_STRING")}}, KTEXT("2;1;4;EMPTY_STRING;"), "2(4: )"},
      // These never arrive whole.
      {{enumStubCommand{2}, {CPolyValue(), 5}}, KTEXT("2;2;2;5;"), ""},
      {{enumStubCommand{2}, {Array()}}, KTEXT("2;1;"), ""},
  };
  for (const auto& test : cases) {
    EXPECT_EQ(StubMessageText(test.message), WString(test.text));
    EXPECT_EQ(Shown(Read(test.text)), test.read);
  }
  const double largest = std::numeric_limits<double>::max();
  const Messages read = Read(StubMessageText({stubResult, {-largest, largest}}));
  ASSERT_EQ(read.size(), 1u);
  EXPECT_EQ(read[0].values[0].GetDoubleValue(), -largest);
}

TEST(StubMessage, WhatArrivesMayBeAnything) {
  const struct {
    WString text;
    const char* read;
  } cases[] = {
      {KTEXT("3;0;6;1;2;5;"), "3()6(2:5 )"},
      {KTEXT("6;2;2;5;2"), ""},
      {KTEXT("6;1;2;5"), "6(2:5 )"},              // the last field needs no end
      {KTEXT(";;6;;1;2;;5;;3;0"), "6(2:5 )3()"},  // empty fields vanish
      {KTEXT("6;3;2;5;77;x;4;y;"), "6(2:5 4:y )"},
      {KTEXT("6;1;5;x;1;1;7;x;"), "6()1()"},
      {KTEXT("6;2000000000;2;5;3;0;"), ""},
      {KTEXT("6;-1;1;2;5;"), "6(2:5 )"},  // -1 is as if it hadn't come
      {KTEXT("6;-2;2;5;3;0;"), ""},
      {KTEXT("x;0;99999999999;0;"), "0()2147483647()"},
      {KTEXT("6;1;8;4294967297;"), "6(8:2147483647 )"},
      {WString(KTEXT("3;0;")) + WChar{0} + KTEXT("4;0;"), "3()"},
      {KTEXT(""), ""},
  };
  for (const auto& test : cases)
    EXPECT_EQ(Shown(Read(test.text)), test.read) << test.text.ToUtf8().c_str();
  // An odd byte at the end, at an odd address.
  const WString text = KTEXT("6;1;2;57");
  std::string bytes = '?' + std::string(reinterpret_cast<const char*>(text.c_str()), 16);
  EXPECT_EQ(Shown(ReadStubMessages(bytes.data() + 1, 15)), "6(2:5 )");
}

}  // namespace
