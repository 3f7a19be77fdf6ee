// Windows and the messages between threads.
#include <gtest/gtest.h>
#include <windows.h>

#include <atomic>
#include <chrono>
#include <cstdlib>
#include <functional>
#include <future>
#include <string>
#include <thread>
#include <vector>

#include "tests/winapi/ErrorOf.h"
#include "tests/winapi/UnderWine.h"
#include "tests/winapi/WideText.h"

namespace {

using Handler = std::function<LRESULT(HWND, UINT, WPARAM, LPARAM)>;

// A window's procedure is the handler that its creator passed.
LRESULT CALLBACK CallHandler(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
  if (message == WM_NCCREATE) {
    const auto* create = reinterpret_cast<const CREATESTRUCTW*>(lParam);
    SetWindowLongPtrW(window, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(create->lpCreateParams));
  }
  const auto* handler = reinterpret_cast<const Handler*>(GetWindowLongPtrW(window, GWLP_USERDATA));
  if (handler == nullptr) return DefWindowProcW(window, message, wParam, lParam);
  return (*handler)(window, message, wParam, lParam);
}

class MessageTest : public testing::Test {
 protected:
  static void SetUpTestSuite() {
    WNDCLASSW c{};
    c.lpfnWndProc = CallHandler;
    c.cbWndExtra = 2 * sizeof(LONG_PTR);
    c.lpszClassName = kClass;
    ASSERT_NE(RegisterClassW(&c), 0);
  }
  static void TearDownTestSuite() { EXPECT_TRUE(UnregisterClassW(kClass, nullptr)); }
  ~MessageTest() override {
    MSG message;
    while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE)) {
    }
  }

  static constexpr const WCHAR* kClass = WTEXT("MessageTest");
};

HWND Create(Handler* handler, HWND parent = HWND_MESSAGE, DWORD style = 0) {
  return CreateWindowExW(0, WTEXT("messagetest"), WTEXT("name"), style, 1, 2, 3, 4, parent, nullptr,
                         nullptr, handler);
}

void RunLoop() {
  MSG message;
  while (GetMessageW(&message, nullptr, 0, 0) > 0) DispatchMessageW(&message);
}

// A thread with one window that runs a loop until the end of the test.
class WindowThread {
 public:
  explicit WindowThread(Handler handler) : m_handler(std::move(handler)) {
    std::promise<HWND> made;
    m_thread = std::thread([this, &made] {
      m_id = GetCurrentThreadId();
      made.set_value(Create(&m_handler));
      RunLoop();
    });
    m_window = made.get_future().get();
  }
  ~WindowThread() {
    PostThreadMessageW(m_id, WM_QUIT, 0, 0);
    m_thread.join();
  }
  HWND Window() const { return m_window; }

 private:
  Handler m_handler;
  std::thread m_thread;
  DWORD m_id;
  HWND m_window;
};

// The messages of birth and death, with a name for the window; others are left out.
void Note(std::string* log, const char* name, UINT message) {
  const char* const text = message == WM_NCCREATE    ? ":nccreate "
                           : message == WM_CREATE    ? ":create "
                           : message == WM_DESTROY   ? ":destroy "
                           : message == WM_NCDESTROY ? ":ncdestroy "
                                                     : nullptr;
  if (text != nullptr) (*log += name) += text;
}

TEST_F(MessageTest, WindowsAreBornAndGoInOrder) {
  std::string log;
  Handler handlers[2];
  HWND windows[2] = {};
  for (int i = 0; i < 2; ++i) {
    handlers[i] = [&, i](HWND window, UINT message, WPARAM wParam, LPARAM lParam) -> LRESULT {
      Note(&log, i == 0 ? "a" : "b", message);
      if (message == WM_CREATE) {
        const auto* create = reinterpret_cast<const CREATESTRUCTW*>(lParam);
        EXPECT_EQ(create->lpszName[0], 'n');
        EXPECT_EQ(create->lpCreateParams, &handlers[i]);
        EXPECT_EQ(create->x * 1000 + create->y * 100 + create->cx * 10 + create->cy, 1234);
      }
      if (message == WM_DESTROY && i == 0) {
        EXPECT_EQ(IsWindow(windows[1]), windows[1] != nullptr) << "children still exist";
      }
      return DefWindowProcW(window, message, wParam, lParam);
    };
  }
  windows[0] = Create(&handlers[0]);
  windows[1] = Create(&handlers[1], windows[0], WS_CHILD);
  ASSERT_NE(windows[1], nullptr) << "on Windows this needs a desktop";
  EXPECT_EQ(log, "a:nccreate a:create b:nccreate b:create ");
  EXPECT_TRUE(PostMessageW(windows[1], WM_APP, 0, 0));
  MSG message;
  EXPECT_TRUE(PeekMessageW(&message, windows[0], 0, 0, PM_REMOVE)) << "a loop sees the children";
  log.clear();
  EXPECT_EQ(SendMessageW(windows[0], WM_CLOSE, 0, 0), 0);
  EXPECT_EQ(log, "a:destroy b:destroy b:ncdestroy a:ncdestroy ");
  EXPECT_FALSE(IsWindow(windows[0]));
  const BOOL again = DestroyWindow(windows[0]);
  EXPECT_TRUE(ErrorOf(again) == ERROR_INVALID_WINDOW_HANDLE || (UnderWine() && !again));
}

TEST_F(MessageTest, AWindowCanRefuseToBeBorn) {
  for (const UINT refused : {UINT{WM_NCCREATE}, UINT{WM_CREATE}}) {
    std::string log;
    HWND seen = nullptr;
    Handler handler = [&](HWND window, UINT message, WPARAM wParam, LPARAM lParam) -> LRESULT {
      Note(&log, "w", message);
      seen = window;
      if (message == refused) return message == WM_CREATE ? -1 : FALSE;
      return DefWindowProcW(window, message, wParam, lParam);
    };
    EXPECT_EQ(Create(&handler), nullptr);
    EXPECT_TRUE(seen != nullptr && !IsWindow(seen));
    EXPECT_EQ(log, refused == WM_NCCREATE ? "w:nccreate w:ncdestroy "
                   : UnderWine()          ? "w:nccreate w:create w:ncdestroy "
                                          : "w:nccreate w:create w:destroy w:ncdestroy ");
  }
}

TEST_F(MessageTest, ClassesHaveTheirRules) {
  WNDCLASSEXW c{};
  c.cbSize = sizeof(c);
  c.lpfnWndProc = DefWindowProcW;
  c.lpszClassName = WTEXT("Rules");
  const ATOM atom = RegisterClassExW(&c);
  ASSERT_NE(atom, 0);
  c.lpszClassName = WTEXT("rULES");
  EXPECT_EQ(ErrorOf(RegisterClassExW(&c)), ERROR_CLASS_ALREADY_EXISTS);
  c.cbSize = 7;
  EXPECT_EQ(ErrorOf(RegisterClassExW(&c)), ERROR_INVALID_PARAMETER);

  const auto create = [](LPCWSTR name, DWORD style, HWND parent) {
    return CreateWindowExW(0, name, nullptr, style, 0, 0, 0, 0, parent, nullptr, nullptr, nullptr);
  };
  const auto unregister = [] { return ErrorOf(UnregisterClassW(WTEXT("Rules"), nullptr)); };
  const HWND window = create(MAKEINTATOM(atom), 0, HWND_MESSAGE);
  EXPECT_TRUE(IsWindow(window));
  EXPECT_EQ(unregister(), ERROR_CLASS_HAS_WINDOWS);
  EXPECT_EQ(ErrorOf(create(WTEXT("Rules"), WS_CHILD, nullptr)), ERROR_TLW_WITH_WSCHILD);
  EXPECT_TRUE(DestroyWindow(window));
  EXPECT_EQ(ErrorOf(create(WTEXT("Rules"), 0, window)), ERROR_INVALID_WINDOW_HANDLE);
  EXPECT_EQ(unregister(), ERROR_SUCCESS);
  EXPECT_EQ(unregister(), ERROR_CLASS_DOES_NOT_EXIST);
  const HWND none = create(WTEXT("Rules"), 0, HWND_MESSAGE);
  EXPECT_TRUE(ErrorOf(none) == ERROR_CANNOT_FIND_WND_CLASS || (UnderWine() && none == nullptr));
}

LRESULT CALLBACK AnswerSeven(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
  return message == WM_APP ? 7 : DefWindowProcW(window, message, wParam, lParam);
}

TEST_F(MessageTest, ValuesOfAWindow) {
  const HWND window = Create(nullptr);
  for (const int index : {GWLP_USERDATA, GWLP_ID, 0, static_cast<int>(sizeof(LONG_PTR))}) {
    EXPECT_EQ(GetWindowLongPtrW(window, index), 0) << index;
    EXPECT_EQ(SetWindowLongPtrW(window, index, index + 100), 0);
    EXPECT_EQ(SetWindowLongPtrW(window, index, 0), index + 100);
  }
  for (const int index : {static_cast<int>(sizeof(LONG_PTR)) + 1, -99}) {
    EXPECT_EQ(ErrorOf(SetWindowLongPtrW(window, index, 1)), ERROR_INVALID_INDEX) << index;
  }
  EXPECT_EQ(SendMessageW(window, WM_APP, 0, 0), 0);
  const auto before =
      SetWindowLongPtrW(window, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(&AnswerSeven));
  EXPECT_EQ(SendMessageW(window, WM_APP, 0, 0), 7);
  EXPECT_EQ(CallWindowProcW(reinterpret_cast<WNDPROC>(before), window, WM_APP, 0, 0), 0);

  DWORD process = 0;
  EXPECT_EQ(GetWindowThreadProcessId(window, &process), GetCurrentThreadId());
  EXPECT_EQ(process, GetCurrentProcessId());
  EXPECT_TRUE(DestroyWindow(window));
  EXPECT_EQ(ErrorOf(GetWindowLongPtrW(window, GWLP_USERDATA)), ERROR_INVALID_WINDOW_HANDLE);
  EXPECT_EQ(GetWindowThreadProcessId(window, nullptr), 0u);
}

TEST_F(MessageTest, SendingRunsTheProcedureOnTheOwnersThread) {
  DWORD ranOn = 0;
  int order = 0;
  Handler handler = [&](HWND window, UINT message, WPARAM wParam, LPARAM lParam) -> LRESULT {
    if (message != WM_APP) return DefWindowProcW(window, message, wParam, lParam);
    ranOn = GetCurrentThreadId();
    return static_cast<LRESULT>(wParam) * 10 + lParam + order++;
  };
  const HWND window = Create(&handler);
  EXPECT_EQ(SendMessageW(window, WM_APP, 4, 2), 42) << "the same thread: called directly";

  std::thread sender([&] {
    EXPECT_EQ(SendMessageW(window, WM_APP, 5, 2), 53);
    EXPECT_NE(ranOn, GetCurrentThreadId());
    EXPECT_EQ(ErrorOf(DestroyWindow(window)), ERROR_ACCESS_DENIED);
    PostMessageW(window, WM_APP + 1, 0, 0);
  });
  MSG message;
  EXPECT_TRUE(GetMessageW(&message, window, 0, 0)) << "answers what is sent while it waits";
  EXPECT_EQ(message.message, UINT{WM_APP + 1});
  sender.join();
  EXPECT_EQ(ranOn, GetCurrentThreadId());
  DestroyWindow(window);
}

TEST_F(MessageTest, AWaitingSenderAnswersOthers) {
  // Each side halves the number and sends it back, so both wait in a send, several deep.
  HWND mine = nullptr, other = nullptr;
  const auto bounce = [&](HWND window, UINT message, WPARAM wParam, LPARAM lParam) -> LRESULT {
    if (message != WM_APP) return DefWindowProcW(window, message, wParam, lParam);
    if (wParam == 0) return 0;
    return 1 + SendMessageW(window == mine ? other : mine, WM_APP, wParam / 2, 0);
  };
  Handler handler = bounce;
  mine = Create(&handler);
  WindowThread thread(bounce);
  other = thread.Window();
  EXPECT_EQ(SendMessageW(other, WM_APP, 255, 0), 8);
  DestroyWindow(mine);
}

// Lets other threads come to their wait. Nothing fails if they come later.
void Pause() {
  std::this_thread::sleep_for(std::chrono::milliseconds(30));
}

TEST_F(MessageTest, ASenderGivesUpAfterItsTime) {
  std::promise<void> wakeUp;
  std::atomic<int> heard = 0;
  const WindowThread other([&, awake = wakeUp.get_future().share()](HWND window, UINT message,
                                                                    WPARAM wParam, LPARAM lParam) {
    if (message == WM_APP) awake.wait();
    if (message < WM_APP) return DefWindowProcW(window, message, wParam, lParam);
    return static_cast<LRESULT>(++heard);
  });
  ULONG_PTR result = 0;
  const auto send = [&](UINT message, UINT time) {
    return SendMessageTimeoutW(other.Window(), message, 0, 0, SMTO_NORMAL, time, &result);
  };
  EXPECT_NE(send(WM_APP + 1, 60'000), 0);
  EXPECT_EQ(result, 1u);
  EXPECT_TRUE(PostMessageW(other.Window(), WM_APP, 0, 0));
  while (send(WM_NULL, 1) != 0) Sleep(1);
  EXPECT_EQ(ErrorOf(send(WM_APP + 1, 1)), ERROR_TIMEOUT);
  wakeUp.set_value();
  EXPECT_NE(send(WM_NULL, 60'000), 0);
  EXPECT_EQ(heard, 2) << "what nobody had begun to answer was taken back";
  EXPECT_EQ(
      ErrorOf(SendMessageTimeoutW(reinterpret_cast<HWND>(0x7654321), WM_NULL, 0, 0, 0, 1, &result)),
      ERROR_INVALID_WINDOW_HANDLE);
}

TEST_F(MessageTest, ABroadcastReachesTopLevelWindows) {
  int heard = 0;
  Handler handler = [&](HWND window, UINT message, WPARAM wParam, LPARAM lParam) -> LRESULT {
    if (message == WM_DEVMODECHANGE) ++heard;
    return DefWindowProcW(window, message, wParam, lParam);
  };
  const HWND top = Create(&handler, nullptr), child = Create(&handler, top, WS_CHILD);
  const HWND hidden = Create(&handler);
  ASSERT_NE(child, nullptr);
  EXPECT_NE(
      SendMessageTimeoutW(HWND_BROADCAST, WM_DEVMODECHANGE, 0,
                          reinterpret_cast<LPARAM>(WTEXT("printer")), SMTO_NORMAL, 1000, nullptr),
      0);
  EXPECT_EQ(heard, 1);
  EXPECT_TRUE(DestroyWindow(top));
  EXPECT_TRUE(DestroyWindow(hidden));
}

TEST_F(MessageTest, NobodyWaitsForADestroyedWindow) {
  Handler handler = [](HWND window, UINT message, WPARAM wParam, LPARAM lParam) -> LRESULT {
    if (message != WM_APP) return DefWindowProcW(window, message, wParam, lParam);
    DestroyWindow(window);
    return 5;
  };
  const HWND window = Create(&handler);
  std::atomic<int> answers{0}, done{0};
  std::vector<std::jthread> senders;
  for (int i = 0; i < 4; ++i) {
    senders.emplace_back([&] {
      answers += static_cast<int>(SendMessageW(window, WM_APP, 0, 0));
      ++done;
    });
  }
  Pause();
  MSG message;
  while (done < 4) {
    EXPECT_FALSE(PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE));
    std::this_thread::yield();
  }
  EXPECT_EQ(answers, 5) << "one is answered, the others fail";

  EXPECT_EQ(ErrorOf(SendMessageW(window, WM_APP, 0, 0)), ERROR_INVALID_WINDOW_HANDLE);
  EXPECT_EQ(ErrorOf(PostMessageW(window, WM_APP, 0, 0)), ERROR_INVALID_WINDOW_HANDLE);
}

TEST_F(MessageTest, AThreadTakesItsWindowsAlong) {
  Handler handler = [](HWND window, UINT message, WPARAM wParam, LPARAM lParam) -> LRESULT {
    return message == WM_APP ? 5 : DefWindowProcW(window, message, wParam, lParam);
  };
  std::promise<HWND> made;
  std::promise<void> sending;
  DWORD threadId = 0;
  std::thread owner([&] {
    threadId = GetCurrentThreadId();
    made.set_value(Create(&handler));
    sending.get_future().wait();
    Pause();
  });
  const HWND window = made.get_future().get();
  EXPECT_TRUE(PostThreadMessageW(threadId, WM_APP, 0, 0));
  sending.set_value();
  EXPECT_EQ(SendMessageW(window, WM_APP, 0, 0), 0) << "its thread ends without answering";
  owner.join();
  EXPECT_FALSE(IsWindow(window));
  const BOOL posted = PostThreadMessageW(threadId, WM_APP, 0, 0);
  EXPECT_TRUE(ErrorOf(posted) == ERROR_INVALID_THREAD_ID || (UnderWine() && !posted));
}

TEST_F(MessageTest, LoopsTakeWhatTheyAskForInOrder) {
  const HWND window = Create(nullptr), other = Create(nullptr);
  const HWND any = nullptr, none = reinterpret_cast<HWND>(static_cast<LONG_PTR>(-1));
  PostQuitMessage(3);
  EXPECT_TRUE(PostMessageW(window, WM_APP + 1, 11, 12));
  EXPECT_TRUE(PostMessageW(nullptr, WM_APP + 2, 0, 0));
  EXPECT_TRUE(PostMessageW(window, WM_APP + 3, 0, 0));
  for (UINT i = 4; i <= 6; ++i) EXPECT_TRUE(PostMessageW(other, WM_APP + i, 0, 0));

  const struct {
    HWND window;
    UINT first, last;  // above WM_APP
    UINT found;        // likewise
    HWND target;
  } cases[] = {{none, 0, 0, 2, nullptr},  {any, 5, 6, 5, other},     {other, 6, 6, 6, other},
               {window, 0, 0, 1, window}, {window, 2, 9, 3, window}, {any, 0, 0, 4, other}};
  for (const auto& c : cases) {
    const UINT first = c.first == 0 ? 0 : WM_APP + c.first;
    const UINT last = c.last == 0 ? 0 : WM_APP + c.last;
    MSG message{};
    EXPECT_TRUE(PeekMessageW(&message, c.window, first, last, PM_NOREMOVE));
    EXPECT_EQ(message.message, WM_APP + c.found);
    message = {};
    EXPECT_EQ(GetMessageW(&message, c.window, first, last), TRUE);
    EXPECT_EQ(message.message, WM_APP + c.found);
    EXPECT_EQ(message.hwnd, c.target);
    EXPECT_TRUE(c.found != 1 || (message.wParam == 11 && message.lParam == 12));
  }

  MSG message{};
  EXPECT_TRUE(PeekMessageW(&message, nullptr, WM_APP, WM_APP, PM_NOREMOVE)) << "passes every limit";
  EXPECT_EQ(GetMessageW(&message, nullptr, WM_APP, WM_APP), FALSE);
  EXPECT_EQ(message.message, UINT{WM_QUIT});
  EXPECT_EQ(message.wParam, 3u);
  EXPECT_EQ(message.hwnd, nullptr);
  EXPECT_FALSE(PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE));
  DestroyWindow(other);
  DestroyWindow(window);
  EXPECT_EQ(ErrorOf(GetMessageW(&message, other, 0, 0), -1), ERROR_INVALID_WINDOW_HANDLE);
}

TEST_F(MessageTest, DispatchGoesToTheWindowsProcedure) {
  std::string log;
  Handler handler = [&](HWND window, UINT message, WPARAM wParam, LPARAM lParam) -> LRESULT {
    Note(&log, "w", message);
    return message == WM_APP ? 9 : DefWindowProcW(window, message, wParam, lParam);
  };
  const HWND window = Create(&handler);
  MSG message{window, WM_APP, 0, 0, 0, {0, 0}};
  EXPECT_EQ(DispatchMessageW(&message), 9);
  EXPECT_FALSE(TranslateMessage(&message));
  log.clear();
  EXPECT_TRUE(PostMessageW(window, WM_APP, 0, 0));
  message.message = WM_CLOSE;
  EXPECT_EQ(DispatchMessageW(&message), 0);
  EXPECT_EQ(log, "w:destroy w:ncdestroy ");
  EXPECT_EQ(DispatchMessageW(&message), 0);
  MSG left;
  EXPECT_FALSE(PeekMessageW(&left, nullptr, 0, 0, PM_REMOVE)) << "what was posted to it is gone";
  message.hwnd = nullptr;
  EXPECT_EQ(DispatchMessageW(&message), 0);
}

TEST_F(MessageTest, ManySendersLoseNothing) {
  int sum = 0;  // touched by the owner's thread only
  WindowThread thread([&](HWND window, UINT message, WPARAM wParam, LPARAM lParam) -> LRESULT {
    if (message != WM_APP) return DefWindowProcW(window, message, wParam, lParam);
    return sum += static_cast<int>(wParam);
  });
  const auto send = [&](int t) {
    for (int i = 0; i < 200; ++i) {
      EXPECT_TRUE((i + t) % 2 == 0 ? SendMessageW(thread.Window(), WM_APP, 1, 0) > 0
                                   : PostMessageW(thread.Window(), WM_APP, 1, 0) != FALSE);
    }
  };
  {
    std::vector<std::jthread> senders;
    for (int t = 0; t < 4; ++t) senders.emplace_back(send, t);
  }
  while (SendMessageW(thread.Window(), WM_APP, 0, 0) != 800) Pause();  // the posted ones come later
}

// A window's whole life, and what was posted to the thread before.
bool WindowsWork() {
  Handler handler = [](HWND window, UINT message, WPARAM wParam, LPARAM lParam) -> LRESULT {
    return message == WM_APP ? 9 : DefWindowProcW(window, message, wParam, lParam);
  };
  MSG message = {};
  PeekMessageW(&message, nullptr, WM_APP, WM_APP, PM_NOREMOVE);  // makes the queue
  const bool posted = PostThreadMessageW(GetCurrentThreadId(), WM_APP + 1, 0, 0) != FALSE &&
                      PeekMessageW(&message, nullptr, WM_APP + 1, WM_APP + 1, PM_REMOVE) != FALSE;
  const HWND window = Create(&handler);
  return SendMessageW(window, WM_APP, 0, 0) == 9 && DestroyWindow(window) && posted;
}

// Objects that come before the first window of their thread or process, and so end behind it.
bool workedAtEnd = false;
struct LastOfThread {
  ~LastOfThread() { workedAtEnd = WindowsWork(); }
};
struct LastOfProcess {
  ~LastOfProcess() { std::_Exit(WindowsWork() ? 7 : 1); }
};

TEST_F(MessageTest, WorksToTheEndOfAThread) {
  bool before = false;
  HWND left = nullptr;
  std::thread([&] {
    thread_local LastOfThread last;
    EXPECT_NE(&last, nullptr);
    before = WindowsWork();
    static Handler none = DefWindowProcW;
    left = Create(&none);
  }).join();
  EXPECT_TRUE(before);
  EXPECT_TRUE(workedAtEnd);
  EXPECT_FALSE(IsWindow(left));
}

TEST_F(MessageTest, WorksToTheEndOfTheProcess) {
  EXPECT_EXIT(
      {
        static LastOfProcess last;
        EXPECT_NE(&last, nullptr);
        WindowsWork();
        std::exit(0);
      },
      testing::ExitedWithCode(7), "");
}

TEST_F(MessageTest, MessagesBearTheTimeOfTheTickCount) {
  MSG message = {};
  PeekMessageW(&message, nullptr, 0, 0, PM_NOREMOVE);  // makes the queue
  const DWORD before = GetTickCount();
  EXPECT_TRUE(PostThreadMessageW(GetCurrentThreadId(), WM_APP, 0, 0));
  PostQuitMessage(0);
  for (const UINT expected : {UINT{WM_APP}, UINT{WM_QUIT}}) {
    EXPECT_TRUE(PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE));
    EXPECT_EQ(message.message, expected);
    // Wine's server rounds the time for itself, up to the next millisecond.
    if (UnderWine()) Sleep(1);
    EXPECT_LE(message.time - before, GetTickCount() - before);
  }
}

}  // namespace
