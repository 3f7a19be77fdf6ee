#include "kelp0lang/PipeManager.h"

#include <gtest/gtest.h>

#include <condition_variable>
#include <mutex>
#include <string>
#include <thread>

#include "kelp0lang/IniFile.h"
#include "kelp0lang/String.h"

using kelp::CPolyValue;
using kelp::WString;

namespace {

// What the helper does: it opens the other ends.
class Helper {
 public:
  Helper()
      : m_in(Open(KTEXT("//./pipe/runas_server"), GENERIC_READ)),
        m_out(Open(KTEXT("//./pipe/runas_client"), GENERIC_WRITE)) {}
  ~Helper() { End(); }
  void End() {
    if (m_in == INVALID_HANDLE_VALUE) return;
    CloseHandle(m_in);
    CloseHandle(m_out);
    m_in = INVALID_HANDLE_VALUE;
  }
  bool IsThere() const { return m_in != INVALID_HANDLE_VALUE && m_out != INVALID_HANDLE_VALUE; }
  WString Heard() {
    WString text;
    WChar* const units = text.GetBufferSetLength(40'000);
    DWORD count = 0;
    EXPECT_TRUE(ReadFile(m_in, units, 80'000, &count, nullptr));
    text.ReleaseBuffer(static_cast<int>(count / 2));
    return text;
  }
  void Say(const WString& text) {
    DWORD count = 0;
    EXPECT_TRUE(
        WriteFile(m_out, text.c_str(), static_cast<DWORD>(text.sizeInBytes()), &count, nullptr));
  }

 private:
  static HANDLE Open(const WChar* name, DWORD access) {
    return CreateFileW(name, access, 0, nullptr, OPEN_EXISTING, 0, nullptr);
  }
  HANDLE m_in, m_out;
};

// Counts commands, and stops the reading at one of them.
class Listener : public IStubAdminListener {
 public:
  explicit Listener(CPipeManager& pipes, int last = -1) : m_pipes(pipes), m_last(last) {}
  void OnMessage(const TStubMessage& message) override {
    const std::lock_guard lock(m_mutex);
    m_sum += message.command;
    m_threads += std::this_thread::get_id() == m_caller ? 0 : 1;
    if (leavesAtOnce) m_pipes.RemoveListener(this);
    if (message.command == m_last) m_pipes.StopRead();
  }
  void SendResponse(const TStubMessage&) override {}
  int Sum() {
    const std::lock_guard lock(m_mutex);
    return m_sum;
  }
  int Threads() const { return m_threads; }
  bool leavesAtOnce = false;

 private:
  CPipeManager& m_pipes;
  const int m_last;
  const std::thread::id m_caller = std::this_thread::get_id();
  std::mutex m_mutex;
  int m_sum = 0;
  int m_threads = 0;
};

void SetTimeout(short seconds) {
  CIniFile().WriteShort(KTEXT("CATASTO"), KTEXT("TimeOutPdf"), seconds);
}

TStubMessage Message(int command, std::vector<CPolyValue> values = {}) {
  return {enumStubCommand{command}, std::move(values)};
}

TEST(PipeManager, ACommandGoesOutAndItsAnswersComeBack) {
  SetTimeout(30);
  CPipeManager_Talv pipes;
  Helper helper;
  ASSERT_TRUE(helper.IsThere());
  Listener listener(pipes, 40), leaves(pipes), gone(pipes);
  leaves.leavesAtOnce = true;
  for (Listener* each : {&listener, &listener, &leaves, &gone}) pipes.AddListener(each);
  pipes.RemoveListener(&gone);
  helper.Say(KTEXT("100;0;200;1;2;5;"));
  helper.Say(KTEXT("40;0;7;3;2;5;"));  // the last one never comes whole
  EXPECT_TRUE(pipes.WriteMessage(Message(6, {KTEXT("a"), true}), true));
  EXPECT_EQ(helper.Heard(), WString(KTEXT("6;2;4;a;1;1;")));
  while (listener.Sum() < 340) Sleep(1);
  EXPECT_EQ(listener.Threads(), 3);
  EXPECT_EQ(gone.Sum(), 0);
  EXPECT_NE(leaves.Sum(), 0);
  EXPECT_LT(leaves.Sum(), 340);
}

TEST(PipeManager, AReaderGivesUpAndABrokenPipeEnds) {
  CPipeManager_Talv pipes;
  Helper helper;
  SetTimeout(1);
  const DWORD start = GetTickCount();
  EXPECT_FALSE(pipes.StartRead());
  EXPECT_GE(GetTickCount() - start, 400u);  // two looks
  helper.Say(KTEXT("half;"));
  helper.End();
  for (const short seconds : {30, 0}) {
    SetTimeout(seconds);
    EXPECT_FALSE(pipes.StartRead());
  }
  EXPECT_FALSE(pipes.WriteMessage(Message(1), true));
}

TEST(PipeManager, WithoutTimeOutAReadWaits) {
  SetTimeout(0);
  CPipeManager_Talv pipes;
  Helper helper;
  Listener listener(pipes, 3);
  pipes.AddListener(&listener);
  std::thread late([&] {
    Sleep(100);
    helper.Say(KTEXT("3;0;"));
  });
  EXPECT_TRUE(pipes.StartRead());
  late.join();
  EXPECT_EQ(listener.Sum(), 3);
}

TEST(PipeManager, AMessageIsWholeOrRefused) {
  CPipeManager_Talv pipes;
  Helper helper;
  // "1;1;4;" and the last ";" take 14 bytes.
  WString text;
  text.resize((65535 - 14) / 2, KTEXT('x'));
  int heard = 0;
  std::thread reader([&] {
    while (heard < 32767) heard += helper.Heard().Length();
  });
  EXPECT_TRUE(pipes.WriteMessage(Message(1, {text}), false));
  reader.join();
  EXPECT_EQ(heard, 32767);
  EXPECT_FALSE(pipes.WriteMessage(Message(1, {text + KTEXT('x')}), false));
}

TEST(PipeManager, WithoutPipesAllFails) {
  struct Without : CPipeManager {
    HANDLE GetWriteHandle() override { return m_hWrite; }
    HANDLE GetReadHandle() override { return m_hRead; }
    int GetReadTimeout() override { return 1000; }
  } without;
  EXPECT_FALSE(without.WriteMessage(Message(1), true));
  EXPECT_FALSE(without.StartRead());
}

}  // namespace
