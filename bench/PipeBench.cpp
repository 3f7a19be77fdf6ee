// Messages between a program and its helper, beside the same text made, sent over a socket pair and
// taken apart by hand.
#include <sys/socket.h>
#include <unistd.h>
#include <windows.h>

#include <charconv>
#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "bench/BenchTable.h"
#include "kelp0lang/StubMessage.h"

namespace bench {
namespace {

constexpr std::size_t kMessages = 1000;
constexpr std::size_t kRoom = 65535;  // bytes of one read

// What the peer makes a message of, and what it finds in one.
struct PlainValue {
  int type = 0;
  int number = 0;
  double real = 0;
  std::u16string text;
};
struct PlainMessage {
  int command = 0;
  std::vector<PlainValue> values;
};

// Half are orders of a service, half results; one in ten has a coordinate.
std::vector<TStubMessage> OurMessages() {
  std::vector<TStubMessage> messages;
  for (std::size_t i = 0; i < kMessages; ++i) {
    const int number = static_cast<int>(i * 7919 % 10007);
    if (i % 10 == 0) {
      messages.push_back({enumStubCommand{7}, {number, 4'500'000.125 + number, KTEXT("T1")}});
    } else if (i % 2 == 0) {
      messages.push_back({stubResult, {number}});
    } else {
      messages.push_back({stubInstallService,
                          {KTEXT("fieldwatch"), KTEXT("Field watch"),
                           KTEXT("C:\\Program Files\\Survey\\fieldwatch.exe"), i % 3 == 0}});
    }
  }
  return messages;
}

std::vector<PlainMessage> PlainMessages(const std::vector<TStubMessage>& messages) {
  std::vector<PlainMessage> plain;
  for (const TStubMessage& message : messages) {
    PlainMessage& added = plain.emplace_back();
    added.command = message.command;
    for (const kelp::CPolyValue& value : message.values) {
      PlainValue& one = added.values.emplace_back();
      one.type = value.GetType();
      if (one.type == kelp::pvString) {
        one.text = value.GetStringValue().c_str();
      } else if (one.type == kelp::pvDouble) {
        one.real = value.GetDoubleValue();
      } else {
        one.number = value.GetInt32Value();
      }
    }
  }
  return plain;
}

void AppendDigits(const char* digits, const char* end, std::u16string& text) {
  text.append(digits, end);
  text += u';';
}

void AppendInt(int number, std::u16string& text) {
  char digits[16];
  AppendDigits(digits, std::to_chars(digits, digits + sizeof digits, number).ptr, text);
}

void WriteByHand(const PlainMessage& message, std::u16string& text) {
  text.clear();
  AppendInt(message.command, text);
  AppendInt(static_cast<int>(message.values.size()), text);
  for (const PlainValue& value : message.values) {
    AppendInt(value.type, text);
    if (value.type == kelp::pvString) {
      text += value.text;
      text += u';';
    } else if (value.type == kelp::pvDouble) {
      char digits[64];
      const auto end =
          std::to_chars(digits, digits + sizeof digits, value.real, std::chars_format::fixed, 6);
      AppendDigits(digits, end.ptr, text);
    } else {
      AppendInt(value.number, text);
    }
  }
}

std::u16string_view TakeField(std::u16string_view& rest) {
  const std::size_t length = rest.find(u';');
  const std::u16string_view field = rest.substr(0, length);
  rest.remove_prefix(length + 1);
  return field;
}

int IntOf(std::u16string_view field) {
  int number = 0;
  const bool isNegative = field.front() == u'-';
  for (const char16_t digit : field.substr(isNegative ? 1 : 0))
    number = 10 * number + (digit - u'0');
  return isNegative ? -number : number;
}

double DoubleOf(std::u16string_view field) {
  const std::string digits(field.begin(), field.end());
  double number = 0;
  std::from_chars(digits.data(), digits.data() + digits.size(), number);
  return number;
}

PlainMessage ReadByHand(std::u16string_view text) {
  PlainMessage message;
  message.command = IntOf(TakeField(text));
  message.values.resize(static_cast<std::size_t>(IntOf(TakeField(text))));
  for (PlainValue& value : message.values) {
    value.type = IntOf(TakeField(text));
    const std::u16string_view field = TakeField(text);
    if (value.type == kelp::pvString) {
      value.text = field;
    } else if (value.type == kelp::pvDouble) {
      value.real = DoubleOf(field);
    } else {
      value.number = IntOf(field);
    }
  }
  return message;
}

// Both ends in this process, which writes a message and then reads it.
class Pipe {
 public:
  Pipe() {
    const std::string process = std::to_string(getpid());
    const std::u16string name =
        u"//./pipe/kelp_bench_" + std::u16string(process.begin(), process.end());
    m_out = CreateNamedPipeW(name.c_str(), PIPE_ACCESS_OUTBOUND, PIPE_TYPE_MESSAGE,
                             PIPE_UNLIMITED_INSTANCES, 512, 512, 1000, nullptr);
    m_in = CreateFileW(name.c_str(), GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr);
    if (m_out == INVALID_HANDLE_VALUE || m_in == INVALID_HANDLE_VALUE) {
      throw std::runtime_error("no pipe");
    }
  }
  ~Pipe() {
    CloseHandle(m_in);
    CloseHandle(m_out);
  }
  Pipe(const Pipe&) = delete;
  Pipe& operator=(const Pipe&) = delete;

  std::size_t Pass(const kelp::WString& text) {
    DWORD count = 0;
    WriteFile(m_out, text.c_str(), static_cast<DWORD>(text.sizeInBytes()), &count, nullptr);
    ReadFile(m_in, buffer.data(), static_cast<DWORD>(buffer.size()), &count, nullptr);
    return count;
  }

  std::vector<char> buffer = std::vector<char>(kRoom);

 private:
  HANDLE m_out;
  HANDLE m_in;
};

class SocketPair {
 public:
  SocketPair() {
    if (socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, m_ends) != 0) {
      throw std::runtime_error("no socket pair");
    }
  }
  ~SocketPair() {
    close(m_ends[0]);
    close(m_ends[1]);
  }
  SocketPair(const SocketPair&) = delete;
  SocketPair& operator=(const SocketPair&) = delete;

  std::u16string_view Pass(std::u16string_view text) {
    if (write(m_ends[0], text.data(), 2 * text.size()) < 0) return {};
    const ssize_t count = read(m_ends[1], m_buffer.data(), kRoom);
    return {m_buffer.data(), static_cast<std::size_t>(count) / 2};
  }

 private:
  int m_ends[2];
  std::vector<char16_t> m_buffer = std::vector<char16_t>(kRoom);
};

void Check(const std::vector<TStubMessage>& ours, const std::vector<PlainMessage>& plain) {
  std::u16string text;
  for (std::size_t i = 0; i < ours.size(); ++i) {
    WriteByHand(plain[i], text);
    if (kelp::detail::StubMessageText(ours[i]) != text.c_str()) {
      throw std::runtime_error("the sides send other bytes");
    }
  }
}

}  // namespace

void AddPipeWorks() {
  const auto ours = std::make_shared<std::vector<TStubMessage>>(OurMessages());
  const auto plain = std::make_shared<std::vector<PlainMessage>>(PlainMessages(*ours));
  Check(*ours, *plain);
  const auto pipe = std::make_shared<Pipe>();
  const auto sockets = std::make_shared<SocketPair>();
  Compare("build, send, take apart a message",
          [=](benchmark::State& state) {
            OverAll(state, *ours, [&](const TStubMessage& message) {
              const std::size_t size = pipe->Pass(kelp::detail::StubMessageText(message));
              return kelp::detail::ReadStubMessages(pipe->buffer.data(), size).size();
            });
          },
          {{"socket pair", 1.5, [=](benchmark::State& state) {
              std::u16string text;
              OverAll(state, *plain, [&](const PlainMessage& message) {
                WriteByHand(message, text);
                return ReadByHand(sockets->Pass(text)).values.size();
              });
            }}});
}

}  // namespace bench
