#include <gtest/gtest.h>
#include <windows.h>

#include <string>
#include <thread>
#include <vector>

#include "tests/winapi/ErrorOf.h"
#include "tests/winapi/UnderWine.h"
#include "tests/winapi/WideText.h"

namespace {

constexpr DWORD kRead = GENERIC_READ, kWrite = GENERIC_WRITE;
constexpr DWORD kReadWrite = kRead | kWrite;

class Pipe : public testing::Test {
 protected:
  Pipe() {
    const auto* const info = testing::UnitTest::GetInstance()->current_test_info();
    for (const char unit : std::to_string(GetCurrentProcessId()) + info->name())
      m_name += static_cast<WCHAR>(unit);
  }
  ~Pipe() override {
    for (const HANDLE handle : m_handles) CloseHandle(handle);
  }
  HANDLE Keep(HANDLE handle) {
    if (handle != INVALID_HANDLE_VALUE) m_handles.push_back(handle);
    return handle;
  }
  HANDLE Serve(DWORD openMode = PIPE_ACCESS_DUPLEX, DWORD instances = 1) {
    return Keep(CreateNamedPipeW(m_name.c_str(), openMode, PIPE_TYPE_MESSAGE, instances, 512, 512,
                                 200, nullptr));
  }
  HANDLE Open(DWORD access = kReadWrite) {
    return Keep(CreateFileW(m_name.c_str(), access, 0, nullptr, OPEN_EXISTING, 0, nullptr));
  }
  void Close(HANDLE handle) {
    std::erase(m_handles, handle);
    EXPECT_TRUE(CloseHandle(handle));
  }

  Wide m_name = WTEXT("//./pipe/kelp_test_");
  std::vector<HANDLE> m_handles;
};

DWORD Send(HANDLE pipe, const std::string& text) {
  DWORD count = 0;
  EXPECT_TRUE(WriteFile(pipe, text.data(), static_cast<DWORD>(text.size()), &count, nullptr));
  return count;
}

std::string Receive(HANDLE pipe, DWORD size = 65535) {
  std::string text(size, '?');
  DWORD count = 0;
  EXPECT_TRUE(ReadFile(pipe, text.data(), size, &count, nullptr));
  return text.substr(0, count);
}

long ReadError(HANDLE pipe) {
  char byte;
  DWORD count;
  return ErrorOf(ReadFile(pipe, &byte, 1, &count, nullptr), FALSE);
}
long WriteError(HANDLE pipe) {
  DWORD count;
  return ErrorOf(WriteFile(pipe, "x", 1, &count, nullptr), FALSE);
}
long PeekError(HANDLE pipe) {
  return ErrorOf(PeekNamedPipe(pipe, nullptr, 0, nullptr, nullptr, nullptr), FALSE);
}

TEST_F(Pipe, TalksInBothDirections) {
  const HANDLE server = Serve();
  for (WCHAR& unit : m_name) {
    if (unit == '/') unit = '\\';
    if (unit == 'k') unit = 'K';
  }
  const HANDLE client = Open();
  ASSERT_NE(client, INVALID_HANDLE_VALUE);
  EXPECT_EQ(ErrorOf(ConnectNamedPipe(server, nullptr), FALSE), ERROR_PIPE_CONNECTED);
  EXPECT_EQ(Send(client, "one") + Send(client, "two"), 6u);
  char peeked[4] = {};
  DWORD count = 0, available = 0;
  EXPECT_TRUE(PeekNamedPipe(server, peeked, 2, &count, &available, nullptr));
  EXPECT_EQ(std::string(peeked), "on");
  EXPECT_EQ(available, 6u);
  EXPECT_EQ(Receive(server, 4), "onet");
  EXPECT_EQ(Receive(server), "wo");
  Send(server, "three");
  EXPECT_EQ(Receive(client), "three");
  ULONG id = 0;
  for (const HANDLE end : {server, client}) {
    EXPECT_TRUE(GetNamedPipeServerProcessId(end, &id));
    EXPECT_EQ(id, GetCurrentProcessId());
    EXPECT_TRUE(GetNamedPipeClientProcessId(end, &id));
    EXPECT_EQ(id, GetCurrentProcessId());
  }
}

// More than any buffer between the ends.
TEST_F(Pipe, AWriteIsWhole) {
  const HANDLE server = Serve(PIPE_ACCESS_OUTBOUND);
  const HANDLE client = Open(kRead);
  std::string text(3'000'000, 'a');
  for (std::size_t i = 0; i < text.size(); ++i) text[i] = static_cast<char>(i % 251);
  std::thread writer([&] { EXPECT_EQ(Send(server, text), text.size()); });
  std::string got;
  while (got.size() < text.size()) got += Receive(client);
  writer.join();
  EXPECT_EQ(got == text, true);
}

TEST_F(Pipe, WhatWasWrittenBeforeTheEndIsStillRead) {
  HANDLE server = Serve();
  HANDLE client = Open();
  Send(server, "last");
  Close(server);
  EXPECT_EQ(PeekError(client), ERROR_SUCCESS);
  EXPECT_EQ(Receive(client), "last");
  EXPECT_EQ(PeekError(client), ERROR_BROKEN_PIPE);
  EXPECT_EQ(ReadError(client), ERROR_BROKEN_PIPE);
  EXPECT_EQ(WriteError(client), ERROR_NO_DATA);
  Close(client);

  server = Serve();
  client = Open();
  Send(server, "not read");
  Send(client, "last");
  Close(client);
  EXPECT_EQ(ErrorOf(ConnectNamedPipe(server, nullptr), FALSE), ERROR_NO_DATA);
  EXPECT_EQ(Receive(server), "last");
  EXPECT_EQ(ReadError(server), ERROR_BROKEN_PIPE);
}

TEST_F(Pipe, AnInstanceListensConnectsAndListensAgain) {
  EXPECT_EQ(ErrorOf(Open(), INVALID_HANDLE_VALUE), ERROR_FILE_NOT_FOUND);
  EXPECT_EQ(ErrorOf(WaitNamedPipeW(m_name.c_str(), 0), FALSE), ERROR_FILE_NOT_FOUND);
  const HANDLE server = Serve();
  EXPECT_EQ(ErrorOf(Serve(), INVALID_HANDLE_VALUE), ERROR_PIPE_BUSY);
  EXPECT_EQ(ReadError(server), ERROR_PIPE_LISTENING);
  EXPECT_EQ(WriteError(server), ERROR_PIPE_LISTENING);
  EXPECT_EQ(PeekError(server), ERROR_BAD_PIPE);
  EXPECT_TRUE(WaitNamedPipeW(m_name.c_str(), NMPWAIT_WAIT_FOREVER));
  HANDLE client = Open();
  EXPECT_EQ(ErrorOf(Open(), INVALID_HANDLE_VALUE), ERROR_PIPE_BUSY);
  EXPECT_EQ(ErrorOf(WaitNamedPipeW(m_name.c_str(), NMPWAIT_USE_DEFAULT_WAIT), FALSE),
            ERROR_SEM_TIMEOUT);
  EXPECT_TRUE(DisconnectNamedPipe(server));
  EXPECT_EQ(ReadError(server), ERROR_PIPE_NOT_CONNECTED);
  EXPECT_EQ(PeekError(server), ERROR_BAD_PIPE);
  EXPECT_EQ(ErrorOf(Open(), INVALID_HANDLE_VALUE), ERROR_PIPE_BUSY);

  std::thread waiter([&] {
    EXPECT_TRUE(WaitNamedPipeW(m_name.c_str(), 20'000));
    client = Open();
  });
  EXPECT_TRUE(ConnectNamedPipe(server, nullptr));
  waiter.join();
  Send(client, "again");
  EXPECT_EQ(Receive(server), "again");
}

TEST_F(Pipe, DirectionsAndInstances) {
  const HANDLE server = Serve(PIPE_ACCESS_INBOUND, 2);
  EXPECT_EQ(ErrorOf(Open(kRead), INVALID_HANDLE_VALUE), ERROR_ACCESS_DENIED);
  EXPECT_EQ(ErrorOf(Serve(PIPE_ACCESS_OUTBOUND, 2), INVALID_HANDLE_VALUE), ERROR_ACCESS_DENIED);
  if (!UnderWine()) {  // which doesn't know the flag
    const HANDLE first = Serve(PIPE_ACCESS_INBOUND | FILE_FLAG_FIRST_PIPE_INSTANCE, 2);
    EXPECT_EQ(ErrorOf(first, INVALID_HANDLE_VALUE), ERROR_ACCESS_DENIED);
  }
  const HANDLE second = Serve(PIPE_ACCESS_INBOUND, 2);
  EXPECT_EQ(WriteError(server), ERROR_ACCESS_DENIED);
  const HANDLE clients[] = {Open(kWrite), Open(kWrite)};
  Send(clients[0], "to the first");
  Send(clients[1], "to the second");
  EXPECT_EQ(Receive(server), "to the first");
  EXPECT_EQ(Receive(second), "to the second");
  EXPECT_EQ(ReadError(clients[0]), ERROR_ACCESS_DENIED);
}

TEST_F(Pipe, BadArguments) {
  EXPECT_EQ(ErrorOf(ConnectNamedPipe(nullptr, nullptr), FALSE), ERROR_INVALID_HANDLE);
  if (UnderWine()) GTEST_SKIP() << "it takes some of them";
  const struct {
    const WCHAR* name;
    DWORD openMode, instances;
    long error;
  } cases[] = {
      {WTEXT("kelp_test"), PIPE_ACCESS_DUPLEX, 1, ERROR_INVALID_NAME},
      {WTEXT("//./pipe/"), PIPE_ACCESS_DUPLEX, 1, ERROR_INVALID_NAME},
      {WTEXT("//./pipe/kelp_test"), PIPE_ACCESS_DUPLEX, 0, ERROR_INVALID_PARAMETER},
      {WTEXT("//./pipe/kelp_test"), PIPE_ACCESS_DUPLEX, 256, ERROR_INVALID_PARAMETER},
      {WTEXT("//./pipe/kelp_test"), 0, 1, ERROR_INVALID_PARAMETER},
  };
  for (const auto& test : cases) {
    const HANDLE pipe = CreateNamedPipeW(test.name, test.openMode, PIPE_TYPE_MESSAGE,
                                         test.instances, 512, 512, 0, nullptr);
    EXPECT_EQ(ErrorOf(pipe, INVALID_HANDLE_VALUE), test.error)
        << Wide(test.name).size() << " " << test.instances;
  }
}

}  // namespace
